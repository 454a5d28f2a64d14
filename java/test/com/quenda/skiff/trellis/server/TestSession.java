package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeUnit;

/**
 * One platform session as the server runs it: a recording client and dispatcher, and a
 * dispatcher thread that connects and then listens for events.
 */
final class TestSession {
    /**
     * The longest wait for the session to start or end, as the build sets it (longer where the
     * libraries run slowly, as under the sanitizers), else 30 s.
     */
    static final long TIMEOUT_SECONDS =
            Long.parseLong(System.getenv().getOrDefault("SKIFF_TEST_WAIT", "30"));

    final RecordingDispatcher dispatcher = new RecordingDispatcher();
    final RecordingInterface client = new RecordingInterface(dispatcher);
    private final CompletableFuture<Boolean> connected = new CompletableFuture<>();
    private final Thread thread = new Thread(this::run, "dispatcher");
    private final OneSessionTest.Connect flags;

    /** A session that connects with the flags given (all false for null). */
    TestSession(OneSessionTest.Connect flags) {
        this.flags = flags;
    }

    private void run() {
        boolean usable = flags == null ? dispatcher.connect(false, false, false, false)
                : dispatcher.connect(flags.invokeJavaCallbacksForScopingUpdates(),
                        flags.setLocationIDFieldInCallbacks(),
                        flags.syncLocationIDFieldInSubLocations(),
                        flags.syncLocationIDFieldInNetworks());
        dispatcher.record("connect returned", usable);
        connected.complete(usable);
        if (!usable) return;
        dispatcher.listenForEvents();
        dispatcher.record("listenForEvents returned");
    }

    /** Opens the client, starts the dispatcher thread and returns the connection results. */
    QxwInterface.ConnectionResults start() throws InterruptedException {
        client.open(false, false, false);
        thread.setDaemon(true);
        thread.start();
        QxwInterface.ConnectionResults results =
                client.awaitConnectionResults(TIMEOUT_SECONDS, TimeUnit.SECONDS);
        assertNotNull(results, "no connection results");
        return results;
    }

    /** Makes the client's one connection with its first submap request; connect's result. */
    boolean connectClient() throws Exception {
        client.getSubmapAndSymbols(0);
        dispatcher.record("first getSubmapAndSymbols answered");
        return connected.get(TIMEOUT_SECONDS, TimeUnit.SECONDS);
    }

    /**
     * Runs the work on the dispatcher thread, where the library's dispatcher operations run,
     * inside a row data request; returns its result or throws what it threw.
     */
    <T> T onDispatcherThread(Callable<T> work) throws Exception {
        List<T> result = new ArrayList<>(1);
        Exception[] failure = new Exception[1];
        dispatcher.hooks.put("getSymbolRowData", () -> {
            try {
                result.add(work.call());
            } catch (Exception e) {
                failure[0] = e;
            }
        });
        try {
            assertTrue(client.getSymbolRowData(0, 0, 0), "the row data request was not served");
        } finally {
            dispatcher.hooks.remove("getSymbolRowData");
        }
        if (failure[0] != null) throw failure[0];
        return result.get(0);
    }

    /**
     * Starts a session on a map, the dispatcher connecting with the flags given (all false for
     * null), and connects its client.
     */
    static TestSession started(OneSessionTest.Connect flags) throws Exception {
        TestSession session = new TestSession(flags);
        assertTrue(session.start().connectionEstablished());
        assertTrue(session.connectClient());
        return session;
    }

    /** True once listenForEvents has returned. */
    boolean ended() {
        return thread.getState() == Thread.State.TERMINATED;
    }

    /** Ends the platform session and checks that listenForEvents returned. */
    void end(EmulatorControl control) throws Exception {
        control.ok("end-session");
        awaitEnd();
        // The request server has closed its end: a request fails at once.
        TestNative.captureStderr(() -> assertFalse(client.getSymbolRowData(1, 1, 1)));
    }

    /** Waits for listenForEvents to return once the session has ended, and checks it did. */
    void awaitEnd() throws InterruptedException {
        thread.join(TimeUnit.SECONDS.toMillis(TIMEOUT_SECONDS));
        assertFalse(thread.isAlive(), "listenForEvents did not return");
        assertEquals("listenForEvents returned()", dispatcher.log().get(dispatcher.log().size() - 1));
    }
}
