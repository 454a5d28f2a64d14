package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/**
 * connect called again, by other threads and with other dispatcher objects, while the first
 * start-up waits for its client and while the session runs: no call takes the session's Java
 * references away from the dispatcher thread, and the object of the last connect that
 * returned true is the one the library calls.
 */
class ConnectAgainTest {
    private static final long TIMEOUT = TestSession.TIMEOUT_SECONDS;

    @Test
    void laterConnectsRebindTheDispatcherAndNeverBreakTheRunningSession() throws Exception {
        RecordingDispatcher first = new RecordingDispatcher();
        RecordingDispatcher second = new RecordingDispatcher();
        RecordingInterface client = new RecordingInterface(first);
        client.open(false, false, false);

        Thread loop = new Thread(() -> {
            if (first.connect(false, false, false, false)) first.listenForEvents();
        }, "dispatcher");
        loop.setDaemon(true);
        loop.start();
        // The first start-up now waits for the client; a second connect meanwhile must not
        // start a session of its own, nor fail and still take over.
        assertTrue(client.awaitConnectionResults(TIMEOUT, TimeUnit.SECONDS).connectionEstablished());
        CompletableFuture<Boolean> racing = CompletableFuture.supplyAsync(
                () -> second.connect(false, false, false, false));
        assertTrue(client.getSubmapAndSymbols(0));
        assertTrue(racing.get(TIMEOUT, TimeUnit.SECONDS), "the later connect returns true");
        assertTrue(client.getSymbolRowData(5, 6, 7));
        assertEquals(List.of("getSymbolRowData(5, 6, 7)"), second.log("getSymbolRowData"));
        assertEquals(List.of(), first.log("getSymbolRowData"));

        // 50,000 connects from another thread, alternating between the two objects, while
        // this thread makes 3,000 submap requests.
        CompletableFuture<Void> storm = CompletableFuture.runAsync(() -> {
            for (int i = 0; i < 50_000; ++i) {
                (i % 2 == 0 ? second : first).connect(false, false, false, false);
            }
        });
        int answered = 0;
        for (int i = 0; i < 3_000; ++i) {
            if (client.getSubmapAndSymbols(0)) ++answered;
        }
        storm.get(TIMEOUT * 4, TimeUnit.SECONDS);
        assertEquals(3_000, answered);

        try (EmulatorControl control = new EmulatorControl()) {
            control.ok("end-session");
        }
        loop.join(TimeUnit.SECONDS.toMillis(TIMEOUT));
        assertTrue(!loop.isAlive(), "listenForEvents did not return");
    }
}
