package com.quenda.skiff.trellis.server;

import java.util.ArrayList;
import java.util.List;

/** A client that records its connection results in its dispatcher's log. */
class RecordingInterface extends QxwInterface {
    /** Texts given to printError, in order (the static printError of this class). */
    static final List<String> printedErrors = new ArrayList<>();

    private final RecordingDispatcher log;

    RecordingInterface(RecordingDispatcher dispatcher) {
        super(dispatcher);
        this.log = dispatcher;
    }

    @Override
    protected void setConnectionResults(boolean connectionEstablished, String mapName,
            boolean isReadOnly) {
        log.record("setConnectionResults", connectionEstablished, mapName, isReadOnly);
        super.setConnectionResults(connectionEstablished, mapName, isReadOnly);
    }

    /** Hides the client's printError: the native library calls this one. */
    public static void printError(String errorText) {
        synchronized (printedErrors) {
            printedErrors.add(errorText);
        }
    }
}
