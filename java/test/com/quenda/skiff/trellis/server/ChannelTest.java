package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.CyclicBarrier;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.MethodOrderer;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;

/** Requests from Java threads to the dispatcher thread and back, on the default map. */
@TestMethodOrder(MethodOrderer.OrderAnnotation.class)
class ChannelTest extends OneSessionTest {
    private static String lastRowDataCall() {
        List<String> calls = dispatcher.log("getSymbolRowData");
        return calls.get(calls.size() - 1);
    }

    @Test
    @Order(1)
    void rowDataTravelsWithItsArgumentsAndComesBackAsTheAnswer() {
        record Case(int symbolId, int objectId, int propertySetIndex, boolean answer) {}
        for (Case c : List.of(
                new Case(100, 10, 0, true),
                // Ids of 2^31 and more travel as negative numbers and arrive unchanged.
                new Case(Integer.MIN_VALUE, -1, 7, true),
                // The dispatcher gives no row: answered 0.
                new Case(5, 6, -1, false))) {
            assertEquals(c.answer(), client.getSymbolRowData(c.symbolId(), c.objectId(),
                    c.propertySetIndex()), c.toString());
            assertEquals("getSymbolRowData(" + c.symbolId() + ", " + c.objectId() + ", "
                    + c.propertySetIndex() + ")", lastRowDataCall());
        }
    }

    @Test
    @Order(2)
    void aThrowingCallbackIsReportedAndTheSessionGoesOn() throws Exception {
        dispatcher.failRowData = true;
        String stderr;
        try {
            stderr = TestNative.captureStderr(
                    () -> assertFalse(client.getSymbolRowData(1, 2, 3)));
        } finally {
            dispatcher.failRowData = false;
        }
        assertTrue(stderr.startsWith("Java method getSymbolRowData threw an exception\n"), stderr);
        assertTrue(stderr.contains("java.lang.IllegalStateException: row data failed"), stderr);
        assertTrue(client.getSymbolRowData(1, 2, 3));
        control.ok("sync");
    }

    @Test
    @Order(3)
    void anOversizedRequestIsRefusedAndNothingIsSent() throws Exception {
        String name = "n".repeat(600);
        record Case(Runnable request, String message) {}
        List<Case> cases = List.of(
                new Case(() -> client.getNodeSymbol(0, name, null),
                        "QxwInterface::GetNodeSymbol: request of 608 bytes is longer than 500"
                                + " bytes, not sent\n"),
                new Case(() -> client.getNodeParentPath(name, "", new String[0]),
                        "QxwInterface::GetNodeParentPath: request of 606 bytes is longer than 500"
                                + " bytes, not sent\n"),
                new Case(() -> client.getMatchingSymbols(0, 1, name),
                        "QxwInterface::GetMatchingSymbols: request of 609 bytes is longer than"
                                + " 500 bytes, not sent\n"));
        for (Case c : cases) {
            assertEquals(c.message(), TestNative.captureStderr(c.request()::run));
            // Nothing half-sent is left on the connection: the next answer is the right one.
            assertFalse(client.getSymbolRowData(8, 9, -1));
            assertTrue(client.getSymbolRowData(8, 9, 1));
        }
    }

    @Test
    @Order(4)
    void sixteenThreadsAtOnceEachGetTheirOwnAnswers() throws Exception {
        final int threads = 16;
        final int requests = 200;
        int before = dispatcher.log("getSymbolRowData").size();
        CyclicBarrier start = new CyclicBarrier(threads);
        ExecutorService pool = Executors.newFixedThreadPool(threads);
        try {
            List<Future<List<String>>> results = new ArrayList<>();
            for (int t = 0; t < threads; t++) {
                final int thread = t;
                Callable<List<String>> work = () -> {
                    start.await();
                    List<String> wrong = new ArrayList<>();
                    for (int i = 0; i < requests; i++) {
                        // Odd requests get no row: their answer is 0.
                        int index = i % 2 == 0 ? i : -1;
                        if (client.getSymbolRowData(thread, i, index) != (index >= 0)) {
                            wrong.add(thread + "/" + i);
                        }
                    }
                    return wrong;
                };
                results.add(pool.submit(work));
            }
            for (Future<List<String>> result : results) {
                assertEquals(List.of(), result.get(60, TimeUnit.SECONDS));
            }
        } finally {
            pool.shutdownNow();
        }
        List<String> served = dispatcher.log("getSymbolRowData");
        List<String> expected = new ArrayList<>();
        for (int t = 0; t < threads; t++) {
            for (int i = 0; i < requests; i++) {
                expected.add("getSymbolRowData(" + t + ", " + i + ", " + (i % 2 == 0 ? i : -1)
                        + ")");
            }
        }
        List<String> received = new ArrayList<>(served.subList(before, served.size()));
        received.sort(null);
        expected.sort(null);
        assertEquals(expected, received, "every request served once, none mixed");
    }

    @Test
    @Order(5)
    void verboseModesWriteTheirLines() throws Exception {
        client.open(true, true, false);
        try {
            assertEquals("Java_com_quenda_skiff_trellis_server_QxwInterface_getSymbolRowData\n"
                    + "QxwEventDispatcher::GetSymbolRowData\n",
                    TestNative.captureStderr(() -> client.getSymbolRowData(1, 1, 1)));
            record Case(TestNative.Action request, String lines) {}
            // Ids that no object has: whatever serves these requests changes nothing.
            int[] ids = {900001, 900002};
            for (Case c : List.of(
                    new Case(() -> client.setManageState(ids, true),
                            "Java_com_quenda_skiff_trellis_server_QxwInterface_setManageState\n"
                                    + "In QxwInterface::SetManageState: numObjs=2\n"),
                    new Case(() -> client.setSymbolVisibilityState(new int[] {900003}, true),
                            "Java_com_quenda_skiff_trellis_server_QxwInterface"
                                    + "_setSymbolVisibilityStateInternal\n"
                                    + "In QxwInterface::SetSymbolVisibilityState: numSymbols=1"
                                    + " doSetHidden=1\n"),
                    new Case(() -> client.setInterfaceAndNodeVisibilityState(ids, false),
                            "Java_com_quenda_skiff_trellis_server_QxwInterface"
                                    + "_setInterfaceAndNodeVisibilityStateInternal\n"
                                    + "In QxwInterface::SetInterfaceAndNodeVisibilityState:"
                                    + " numInterfaceObjects=2 doSetHidden=0\n"),
                    // This one's name line has no line end.
                    new Case(() -> client.deleteAllSymbolsForObjects(ids),
                            "Java_com_quenda_skiff_trellis_server_QxwInterface"
                                    + "_deleteAllSymbolsForObjectsInternal"
                                    + "In QxwInterface::DeleteAllSymbolsForObjects: numObjects=2\n"),
                    new Case(() -> client.setAcknowledgeState(ids, true),
                            "Java_com_quenda_skiff_trellis_server_QxwInterface"
                                    + "_setAcknowledgeState\n"))) {
                String stderr = TestNative.captureStderr(c.request());
                assertTrue(stderr.startsWith(c.lines()), stderr);
            }
        } finally {
            client.open(false, false, false);
        }
        assertEquals("", TestNative.captureStderr(() -> client.getSymbolRowData(1, 1, 1)));
    }

    @Test
    @Order(6)
    void errorTextsReachJavaWholeOrCutTo1023Bytes() {
        String context = "context: ";
        String longText = "e".repeat(2000);
        TestNative.printDispatcherError(null, "plain text");
        TestNative.printDispatcherError(context, longText);
        TestNative.printClientError(null, longText);
        TestNative.printClientError(context, "short");
        List<String> dispatcherErrors = RecordingDispatcher.printedErrors;
        List<String> clientErrors = RecordingInterface.printedErrors;
        assertEquals(List.of("plain text", (context + longText).substring(0, 1023)),
                dispatcherErrors);
        assertEquals(List.of(longText, "context: short"), clientErrors);
    }

    @Test
    @Order(8)
    void aMessageLongerThanFiveHundredBytesIsDroppedWholeAndAnsweredZero() throws Exception {
        int before = dispatcher.log().size();
        int[] answer = new int[1];
        String stderr = TestNative.captureStderr(
                () -> answer[0] = TestNative.request("A".repeat(500) + "2 77 77 77"));
        assertEquals(0, answer[0]);
        assertTrue(stderr.matches("QxwEventDispatcher::ServiceJavaRequestCB: request longer"
                + " than 500 bytes dropped \\(sock:\\d+\\)\n"), stderr);
        assertEquals(List.of(), dispatcher.log().subList(before, dispatcher.log().size()),
                "nothing of it was served");
        assertTrue(client.getSymbolRowData(8, 9, 1), "the next request is served");
    }

    @Test
    @Order(9)
    void aRequestFromInsideACallbackIsRefusedNotDeadlocked() throws Exception {
        String stderr = TestNative.captureStderr(() -> assertFalse(
                session.onDispatcherThread(() -> client.getSymbolRowData(1, 2, 3))));
        assertEquals("QxwInterface::GetSymbolRowData: called on the dispatcher thread (from a"
                + " callback), request not sent\n", stderr);
        IllegalStateException refused = org.junit.jupiter.api.Assertions.assertThrows(
                IllegalStateException.class, () -> session.onDispatcherThread(() -> {
                    client.setAcknowledgeState(new int[] {1}, true);
                    return null;
                }));
        assertEquals("QxwInterface.setAcknowledgeState: called on the dispatcher thread (from a"
                + " callback), where no request can be served", refused.getMessage());
        assertTrue(client.getSymbolRowData(8, 9, 1), "the channel still serves");
    }

    @Test
    @Order(10)
    void aTextThatWouldBreakTheRequestIsRefused() throws Exception {
        record Case(Runnable request, String message) {}
        List<Case> cases = List.of(
                new Case(() -> client.getNodeSymbol(0, "a\u000Bb", null),
                        "QxwInterface::GetNodeSymbol: a text argument holds a vertical tab,"
                                + " request not sent\n"),
                new Case(() -> client.getNodeParentPath("host", "Site\u000BA", new String[0]),
                        "QxwInterface::GetNodeParentPath: a text argument holds a vertical tab,"
                                + " request not sent\n"),
                new Case(() -> client.getMatchingSymbols(0, 0, "10.1\u000B"),
                        "QxwInterface::GetMatchingSymbols: a text argument holds a vertical tab,"
                                + " request not sent\n"),
                new Case(() -> client.getMatchingSymbols(0, 0, "router\u0000x"),
                        "QxwInterface::GetMatchingSymbols: the query text holds a NUL, request"
                                + " not sent\n"));
        for (Case c : cases) {
            control.ok("reset-counters");
            assertEquals(c.message(), TestNative.captureStderr(c.request()::run));
            assertTrue(client.getSymbolRowData(8, 9, 1));
        }
    }

    @Test
    @Order(20)
    void closeEndsTheConnectionOnBothSides() throws Exception {
        control.ok("reset-counters");
        client.open(false, true, false);
        String stderr;
        try {
            stderr = TestNative.captureStderr(() -> {
                client.close();
                control.ok("sync");
            });
        } finally {
            client.open(false, false, false);
        }
        assertTrue(stderr.matches(
                "QxwEventDispatcher::ServiceJavaRequestCB: connection closed \\(sock:\\d+\\)\n"),
                stderr);
        assertEquals("QxwInterface::GetSymbolRowData: not connected, request not sent\n",
                TestNative.captureStderr(() -> assertFalse(client.getSymbolRowData(1, 2, 3))));
        assertEquals(1, control.calls("QXwRemoveInput"), "the server stopped watching it");
        // The server accepts one connection per session.
        assertEquals("QxwInterface::Connect: connect() failed (error: 111)\n",
                TestNative.captureStderr(() -> assertFalse(client.getSubmapAndSymbols(0))));
    }
}
