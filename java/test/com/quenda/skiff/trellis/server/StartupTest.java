package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/**
 * Start-up on the default map, with the platform's trace facility on: open, connect reporting the
 * connection results, the first submap request making the one connection, listenForEvents
 * serving; a second connect takes a new dispatcher object without a second platform start.
 */
class StartupTest {
    @Test
    void startsInOrderServesRequestsAndEndsWithTheSession() throws Exception {
        RecordingDispatcher first = new RecordingDispatcher();
        RecordingDispatcher second = new RecordingDispatcher();
        RecordingInterface client = new RecordingInterface(first);
        CompletableFuture<Boolean> connected = new CompletableFuture<>();
        Thread dispatcherThread = new Thread(() -> {
            boolean usable = first.connect(false, false, false, false);
            first.record("connect returned", usable);
            // Again, with another object: the methods are resolved against it.
            boolean again = second.connect(false, false, false, false);
            first.record("second connect returned", again);
            connected.complete(usable && again);
            second.listenForEvents();
            first.record("listenForEvents returned");
        }, "dispatcher");
        dispatcherThread.setDaemon(true);

        String stderr = TestNative.captureStderr(() -> {
            client.open(true, false, false);
            dispatcherThread.start();
            assertEquals(new QxwInterface.ConnectionResults(true, "campus", false),
                    client.awaitConnectionResults(30, TimeUnit.SECONDS));
            client.getSubmapAndSymbols(0);
            first.record("first getSubmapAndSymbols answered");
            assertTrue(connected.get(30, TimeUnit.SECONDS));
        });

        assertEquals(List.of(
                "setConnectionResults(true, campus, false)",
                "connect returned(true)",
                "second connect returned(true)",
                "first getSubmapAndSymbols answered()"), first.log());
        assertEquals(List.of(
                "Java_com_quenda_skiff_trellis_server_QxwInterface_open",
                "Java_com_quenda_skiff_trellis_server_QxwEventDispatcher_connect",
                "Java_com_quenda_skiff_trellis_server_QxwInterface_getSubmapAndSymbols",
                "Java_com_quenda_skiff_trellis_server_QxwEventDispatcher_connect",
                "Java_com_quenda_skiff_trellis_server_QxwEventDispatcher_listenForEvents"),
                stderr.lines().toList(), "every method resolved, every field found");
        assertEquals(1, TestNative.rootSubmapId());

        // Requests are served by the dispatcher object of the latest connect.
        assertTrue(client.getSymbolRowData(100, 10, 0));
        assertEquals(List.of("getSymbolRowData(100, 10, 0)"), second.log("getSymbolRowData"));
        assertEquals(List.of(), first.log("getSymbolRowData"));

        try (EmulatorControl control = new EmulatorControl()) {
            assertEquals(1, control.calls("QXwInit"), "one platform start for two connects");
            assertEquals(1, control.calls("QXwAddInput"));
            control.ok("end-session");
            dispatcherThread.join(TimeUnit.SECONDS.toMillis(30));
            assertFalse(dispatcherThread.isAlive(), "listenForEvents did not return");
            assertEquals("listenForEvents returned()", first.log().get(first.log().size() - 1));
        }

        // Every operation reported its entry and exit to the trace facility.
        String trace = Files.readString(Path.of(System.getenv("QXW_TRACE")));
        for (String scope : List.of("QxwEventDispatcher::Connect",
                "QxwEventDispatcher::EnableJavaCallbacks", "QxwInterface::Connect",
                "QxwInterface::GetSymbolRowData", "QxwEventDispatcher::ServiceJavaRequestCB",
                "QxwEventDispatcher::GetSymbolRowData",
                "Java_com_quenda_skiff_trellis_server_QxwInterface_getSymbolRowData")) {
            assertTrue(trace.contains(" enter " + scope + "\n"), scope);
            assertTrue(trace.contains(" exit " + scope + "\n"), scope);
        }
    }
}
