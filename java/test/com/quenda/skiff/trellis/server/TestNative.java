package com.quenda.skiff.trellis.server;

import com.quenda.skiff.trellis.NativeLibrary;
import java.nio.charset.StandardCharsets;
import java.util.Properties;

/**
 * Test-only natives: capture of the process's standard error (the native library writes to
 * descriptor 2 directly, which System.setErr does not see), a look at the library's published
 * state, its error reports, and a descriptor limit for failure paths.
 */
final class TestNative {
    static {
        NativeLibrary.load();
        System.loadLibrary("skiffqxwtest");
    }

    private TestNative() {}

    interface Action {
        void run() throws Exception;
    }

    /** Runs the action and returns what the process wrote on standard error meanwhile. */
    static String captureStderr(Action action) throws Exception {
        System.err.flush();
        beginStderrCapture();
        byte[] captured;
        try {
            action.run();
        } finally {
            System.err.flush();
            captured = endStderrCapture();
        }
        return new String(captured, StandardCharsets.UTF_8);
    }

    private static native void beginStderrCapture();

    /** Ends the capture; what was captured also goes on to the real standard error. */
    private static native byte[] endStderrCapture();

    /** The request server's port, 0 before it is bound. */
    static native int callbackPort();

    /** The root submap id the client side substitutes for submap 0. */
    static native int rootSubmapId();

    /** The client's (else the dispatcher's) error report, with a context when it is not null. */
    static native void printError(boolean client, String context, String errorText);

    /**
     * Sends the request text as it is on the client's connection and returns the answer's number
     * (-1 when there is no connection or no answer). No other request may be in flight.
     */
    static native int request(String text);

    /**
     * The dispatcher's field values of the object (its Properties). On the dispatcher thread
     * only (TestSession.onDispatcherThread).
     */
    static native Properties objectFieldValues(int objectId);

    /**
     * The root submaps of a search for that many root objects, in increasing order. On the
     * dispatcher thread only.
     */
    static native int[] rootSubmapIds(int numRootObjects);

    /**
     * Applies one emulator control command in-process and returns its reply: at once before the
     * session opens or on the dispatcher thread (inside a callback), else through the event loop.
     */
    static native String emulator(String command);

    /** The scoping cache's child submap of the object with that selection name (0: none). */
    static native int childSubmapId(String selectionName);

    /** Lowers the process's descriptor limit so that no new descriptor can be made. */
    static native boolean limitDescriptors();

    static native void restoreDescriptors();

    /** The bytes of the native heap in use (the C library allocator's count). */
    static native long nativeHeapInUse();
}
