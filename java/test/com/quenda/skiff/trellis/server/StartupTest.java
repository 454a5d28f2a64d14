package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.net.InetAddress;
import java.net.Socket;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/**
 * One session's life, with the platform's trace facility on, on a database without "TopM Network
 * ID" and "Location ID": start-up while a stranger knocks and another thread connects, connects
 * that rebind the dispatcher object while requests run, and the end of the event loop on a
 * platform failure, after which requests fail at once.
 */
class StartupTest {
    private static final long TIMEOUT = TestSession.TIMEOUT_SECONDS;
    private static final String JNI = "Java_com_quenda_skiff_trellis_server_";

    @Test
    void startsOnceRebindsOnEachConnectAndFailsFastOnceTheLoopEnds() throws Exception {
        // Only this run's records count; the trace opens with the first traced operation.
        Path trace = Path.of(System.getenv("QXW_TRACE"));
        Files.deleteIfExists(trace);
        RecordingDispatcher steps = new RecordingDispatcher();
        RecordingDispatcher first = new RecordingDispatcher();
        RecordingDispatcher second = new RecordingDispatcher();
        RecordingInterface client = new RecordingInterface(steps);
        Thread loop = new Thread(() -> {
            steps.record("connect returned", first.connect(false, false, false, false));
            first.listenForEvents();
            steps.record("listenForEvents returned");
        }, "dispatcher");
        loop.setDaemon(true);

        // Each missing field is named once, in the order they are resolved.
        assertEquals(List.of(JNI + "QxwInterface_open", JNI + "QxwEventDispatcher_connect",
                "Could not obtain field id for field: TopM Network ID",
                "Could not obtain field id for field: Location ID"),
                TestNative.captureStderr(() -> {
                    client.open(true, false, false);
                    loop.start();
                    assertEquals(new QxwInterface.ConnectionResults(true, "no network id", false),
                            client.awaitConnectionResults(TIMEOUT, TimeUnit.SECONDS));
                }).lines().toList());

        EmulatorControl control = new EmulatorControl();
        int[] strangerPort = new int[1];
        List<String> lines = new ArrayList<>(TestNative.captureStderr(() -> {
            // While it waits for its client the server closes any other connection.
            try (Socket stranger = new Socket(InetAddress.getLoopbackAddress(),
                    TestNative.callbackPort())) {
                strangerPort[0] = stranger.getLocalPort();
                stranger.setSoTimeout(30_000);
                assertEquals(-1, stranger.getInputStream().read(), "the server closes it");
            }
            // A connect meanwhile, with another object, waits for the start-up, starts no
            // session of its own and takes over.
            CompletableFuture<Boolean> racing = CompletableFuture.supplyAsync(
                    () -> second.connect(false, false, false, false));
            assertTrue(client.getSubmapAndSymbols(0));
            steps.record("first getSubmapAndSymbols answered");
            assertTrue(racing.get(TIMEOUT, TimeUnit.SECONDS), "the later connect returns true");
            control.ok("sync");
        }).lines().toList());
        // The later connect enters at any point after the stranger's refusal.
        assertTrue(lines.indexOf(JNI + "QxwEventDispatcher_connect") > 0, lines.toString());
        lines.remove(JNI + "QxwEventDispatcher_connect");
        assertEquals(List.of("QxwEventDispatcher::EnableJavaCallbacks: refused a connection from"
                + " 127.0.0.1:" + strangerPort[0], JNI + "QxwInterface_getSubmapAndSymbols",
                JNI + "QxwEventDispatcher_listenForEvents"), lines,
                "every method resolved, every other field found");
        assertEquals(List.of("setConnectionResults(true, no network id, false)",
                "connect returned(true)", "first getSubmapAndSymbols answered()"), steps.log());
        assertEquals(1, TestNative.rootSubmapId());
        client.open(false, false, false);

        // Requests are served by the dispatcher object of the latest connect.
        assertTrue(client.getSymbolRowData(100, 10, 0));
        assertEquals(List.of("getSymbolRowData(100, 10, 0)"), second.log("getSymbolRowData"));
        assertEquals(List.of(), first.log("getSymbolRowData"));

        // Every operation reported its entry and exit to the trace facility.
        String traced = Files.readString(trace);
        // What the connects below add to it is not kept.
        Files.delete(trace);
        for (String scope : List.of("QxwEventDispatcher::Connect",
                "QxwEventDispatcher::EnableJavaCallbacks", "QxwInterface::Connect",
                "QxwInterface::GetSymbolRowData", "QxwEventDispatcher::ServiceJavaRequestCB",
                "QxwEventDispatcher::GetSymbolRowData", JNI + "QxwInterface_getSymbolRowData")) {
            assertTrue(traced.contains(" enter " + scope + "\n"), scope);
            assertTrue(traced.contains(" exit " + scope + "\n"), scope);
        }

        // 50,000 connects from another thread, alternating between the two objects and ending
        // with the first, while this thread makes 3,000 submap requests.
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
        assertTrue(client.getSymbolRowData(5, 6, 7));
        assertEquals(List.of("getSymbolRowData(5, 6, 7)"), first.log("getSymbolRowData"));
        assertEquals(1, control.calls("QXwInit"), "one platform start for every connect");
        assertEquals(1, control.calls("QXwAddInput"));

        // The platform failing once in its event loop ends the loop.
        assertEquals("QxwEventDispatcher::Listen: QXwProcessEvent failed: the operation failed;"
                + " no more events or requests are served\n", TestNative.captureStderr(() -> {
                    control.ok("fail QXwProcessEvent 1 1");
                    loop.join(TimeUnit.SECONDS.toMillis(TIMEOUT));
                }));
        control.close();
        assertFalse(loop.isAlive(), "listenForEvents did not return");
        assertEquals("listenForEvents returned()", steps.log().get(steps.log().size() - 1));
        // Every request made afterwards fails at once instead of waiting for an answer that
        // will never come; close returns.
        String failures = CompletableFuture.supplyAsync(() -> {
            try {
                return TestNative.captureStderr(() -> {
                    assertFalse(client.getSymbolRowData(1, 2, 3));
                    assertFalse(client.getSubmapAndSymbols(0));
                    client.setAcknowledgeState(new int[] {1}, true);
                    client.close();
                });
            } catch (Exception e) {
                throw new RuntimeException(e);
            }
        }).get(TIMEOUT, TimeUnit.SECONDS);
        assertTrue(failures.matches("QxwInterface::GetSymbolRowData: recv\\(\\) failed \\(sock:\\d+"
                + " error:104\\)\n(QxwInterface::\\w+: (send|recv)\\(\\) failed \\(sock:\\d+"
                + " error:\\d+\\)\n)+"), failures);
    }
}
