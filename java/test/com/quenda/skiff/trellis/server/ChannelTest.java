package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.quenda.skiff.trellis.TrellisProtocol;
import java.util.List;
import java.util.Set;
import org.junit.jupiter.api.MethodOrderer;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;

/**
 * Requests from Java threads to the dispatcher thread and back, and the object states they set,
 * on object-states.json: router 10 has symbols 100, 101 and 102 on three submaps, host 11 symbol
 * 110, host 12 symbol 120, and object 13 none. Raw requests (TestNative.request) show the answers
 * and send states other than 0 and 1. The platform resolves the local host to 127.0.1.1 here (a
 * preloaded resolver), where nothing listens: every request served shows that the client reaches
 * the server on 127.0.0.1 all the same.
 */
@TestMethodOrder(MethodOrderer.OrderAnnotation.class)
class ChannelTest extends OneSessionTest {
    /** Sends a raw request with the ids stored for its callback; asserts it answers 1. */
    private static String answeredOne(String request, int... ids) throws Exception {
        dispatcher.setRequestIds(ids);
        return TestNative.captureStderr(() -> assertEquals(1, TestNative.request(request)));
    }

    @Test
    @Order(1)
    void acknowledgeManageAndVisibilityStatesReachTheObjectsAndSymbols() throws Exception {
        client.setAcknowledgeState(new int[] {10, 11}, true);
        client.setAcknowledgeState(new int[] {11}, false);
        MapDump map = MapDump.of(control);
        assertTrue(map.acknowledged(10));
        assertFalse(map.acknowledged(11));
        assertFalse(map.acknowledged(12));

        // Every state but 1 unmanages; the objects' symbols show it in their status.
        record Manage(int state, boolean managed, long symbolStatus) {}
        for (Manage c : List.of(new Manage(0, false, 1), new Manage(1, true, 0),
                new Manage(2, false, 1), new Manage(1, true, 0))) {
            assertEquals("", answeredOne("10 2 " + c.state(), 10, 11), c.toString());
            map = MapDump.of(control);
            assertEquals(List.of(c.managed(), c.managed(), true),
                    List.of(map.managed(10), map.managed(11), map.managed(12)), c.toString());
            for (long symbolId : new long[] {100, 101, 102, 110}) {
                assertEquals(c.symbolStatus(), map.status(symbolId), c + " symbol " + symbolId);
            }
        }
        client.setManageState(new int[] {12}, false);
        assertFalse(MapDump.of(control).managed(12));

        // Every state but 1 shows the symbols.
        for (int state : new int[] {1, 2, 1, 0}) {
            assertEquals("", answeredOne("11 2 " + state, 110, 120), "state " + state);
            map = MapDump.of(control);
            assertEquals(List.of(state == 1, state == 1, false),
                    List.of(map.hidden(110), map.hidden(120), map.hidden(100)), "state " + state);
        }
    }

    @Test
    @Order(2)
    void anIdArrayThatDoesNotMatchItsCountIsReportedAndChangesNothing() throws Exception {
        record Op(String code, String state, String operation, String sizes) {}
        List<Op> ops = List.of(
                new Op("9", " 1", "SetAcknowledgeState", "numObjs=%d, objSize"),
                new Op("10", " 0", "SetManageState", "numObjs=%d, objSize"),
                new Op("11", " 1", "SetSymbolVisibilityState", "numSymbols=%d, arraySize"),
                new Op("12", " 1", "SetInterfaceAndNodeVisibilityState",
                        "numInterfaceObjects=%d, arraySize"),
                new Op("13", "", "DeleteAllSymbolsForObjects", "numObjects=%d, arraySize"));
        // No array at all, from a callback that throws, is FaultMatrixTest's.
        String before = control.ok("dump");
        for (Op op : ops) {
            for (int count : new int[] {3, -1, -2, Integer.MIN_VALUE}) {
                assertEquals(String.format("QxwEventDispatcher::" + op.operation() + " failed, "
                        + op.sizes() + "=2\n", count), answeredOne(op.code() + " " + count
                        + op.state(), 10, 11), op.code() + " count " + count);
            }
        }
        assertEquals(before, control.ok("dump"));
        assertTrue(client.getSubmapAndSymbols(0), "the session still serves");
    }

    @Test
    @Order(3)
    void anEmptyRequestStillCallsThePlatformAndAFailureIsReportedWithItsText() throws Exception {
        record Case(Runnable empty, long emptyCalls, String request, int[] ids, String function) {}
        int[] none = new int[0];
        int[] router = {10};
        for (Case c : List.of(
                new Case(() -> client.setAcknowledgeState(none, true), 1, "9 1 1", router,
                        "QXwSetObjectAckState"),
                new Case(() -> client.setManageState(none, true), 1, "10 1 1", router,
                        "_QXwManageObjects"),
                new Case(() -> client.setManageState(none, false), 1, "10 1 0", router,
                        "_QXwUnmanageObjects"),
                new Case(() -> client.setSymbolVisibilityState(none, true), 1, "11 1 1",
                        new int[] {110}, "QXwSetSymbolsVisibility"),
                new Case(() -> client.setInterfaceAndNodeVisibilityState(none, true), 1, "12 0 1",
                        none, "QXwSetSymbolsVisibility"),
                // Deletion makes no call for no objects, and its failure is not reported.
                new Case(() -> client.deleteAllSymbolsForObjects(none), 0, "13 1", router,
                        "QXwDeleteSymbols"))) {
            String before = control.ok("dump");
            control.ok("reset-counters");
            assertEquals("", TestNative.captureStderr(c.empty()::run), c.function());
            assertEquals(c.emptyCalls(), control.calls(c.function()), c.function());
            control.ok("fail " + c.function() + " 12 1");
            assertEquals(c.function().equals("QXwDeleteSymbols") ? ""
                    : c.function() + " failed: the map is open read-only\n",
                    answeredOne(c.request(), c.ids()), c.request());
            assertEquals(before, control.ok("dump"), c.request());
        }
    }

    @Test
    @Order(5)
    void aRefusedRequestSendsNothingAndTheChannelGoesOn() throws Exception {
        String tab = ": a text argument holds a vertical tab, request not sent\n";
        record Case(TestNative.Action request, String message) {}
        for (Case c : List.of(
                // Every request's length is checked in one place; its own length is its format's.
                new Case(() -> client.getNodeParentPath("n".repeat(600), "", new String[0]),
                        "QxwInterface::GetNodeParentPath: request of 606 bytes is longer than 500"
                                + " bytes, not sent\n"),
                new Case(() -> client.getNodeSymbol(0, "a\u000Bb", null),
                        "QxwInterface::GetNodeSymbol" + tab),
                new Case(() -> client.getNodeParentPath("host", "Site\u000BA", new String[0]),
                        "QxwInterface::GetNodeParentPath" + tab),
                new Case(() -> client.getMatchingSymbols(0, 0, "10.1\u000B"),
                        "QxwInterface::GetMatchingSymbols" + tab),
                new Case(() -> client.getMatchingSymbols(0, 0, "router\u0000x"),
                        "QxwInterface::GetMatchingSymbols: the query text holds a NUL, request"
                                + " not sent\n"),
                // Sent as it is, past the client's checks: the server drops it whole.
                new Case(() -> assertEquals(0, TestNative.request("A".repeat(500) + "2 77 77 77")),
                        "QxwEventDispatcher::ServiceJavaRequestCB: request longer than 500 bytes"
                                + " dropped (sock:N)\n"),
                // From inside a callback a request would wait for itself.
                new Case(() -> assertFalse(session.onDispatcherThread(
                        () -> client.getSymbolRowData(1, 2, 3))),
                        "QxwInterface::GetSymbolRowData: called on the dispatcher thread (from a"
                                + " callback), request not sent\n"),
                new Case(() -> assertEquals("QxwInterface.setAcknowledgeState: called on the"
                        + " dispatcher thread (from a callback), where no request can be served",
                        assertThrows(IllegalStateException.class, () -> session.onDispatcherThread(
                                () -> {
                                    client.setAcknowledgeState(new int[] {1}, true);
                                    return null;
                                })).getMessage()), ""))) {
            List<String> log = logOf(() -> assertEquals(c.message(),
                    TestNative.captureStderr(c.request()).replaceAll("sock:\\d+", "sock:N")));
            assertEquals(List.of(), log.stream()
                    .filter(e -> !e.equals("getSymbolRowData(0, 0, 0)")).toList(),
                    "nothing of it was served: " + c.message());
            // Nothing is left half-sent on the connection: the next answers are the right ones.
            assertFalse(client.getSymbolRowData(8, 9, -1), c.message());
            assertTrue(client.getSymbolRowData(8, 9, 1), c.message());
        }
    }

    @Test
    @Order(8)
    void errorTextsReachJavaWholeOrCutTo1023Bytes() {
        String longText = "e".repeat(2000);
        TestNative.printError(false, null, "plain text");
        TestNative.printError(false, "context: ", longText);
        TestNative.printError(true, null, longText);
        TestNative.printError(true, "context: ", "short");
        assertEquals(List.of("plain text", ("context: " + longText).substring(0, 1023)),
                RecordingDispatcher.printedErrors);
        assertEquals(List.of(longText, "context: short"), RecordingInterface.printedErrors);
    }

    @Test
    @Order(9)
    void aServiceNameGivesItsPortInHostOrder() throws Exception {
        record Case(String name, int port, String stderr) {}
        for (Case c : List.of(new Case("ssh", 22, ""),
                // A null name is not looked up.
                new Case(null, 0, ""),
                new Case("no-such-service", 0,
                        "getServiceByName: getservbyname() failed (error:N)\n"))) {
            int[] port = new int[1];
            String stderr = TestNative.captureStderr(
                    () -> port[0] = TrellisProtocol.getServiceByName(c.name()));
            assertEquals(c.port(), port[0], c.name());
            assertEquals(c.stderr(), stderr.replaceAll("error:\\d+", "error:N"), c.name());
        }
    }

    @Test
    @Order(10)
    void deletionRemovesEverySymbolOfEachObjectItKnows() throws Exception {
        control.ok("reset-counters");
        client.deleteAllSymbolsForObjects(new int[] {10});
        assertEquals(1, control.calls("QXwDeleteSymbols"));
        assertEquals(Set.of(200L, 201L, 110L, 120L), MapDump.of(control).symbols.keySet());

        // The unknown object (no list) is passed over; the one whose list is
        // empty still gets its deletion call.
        control.ok("reset-counters");
        assertEquals("", TestNative.captureStderr(
                () -> client.deleteAllSymbolsForObjects(new int[] {999, 13, 11})));
        assertEquals(3, control.calls("QXwGetSymbolsByObject"));
        assertEquals(2, control.calls("QXwDeleteSymbols"));
        assertEquals(Set.of(200L, 201L, 120L), MapDump.of(control).symbols.keySet());
    }
    @Test
    @Order(20)
    void closeEndsTheConnectionOnBothSides() throws Exception {
        control.ok("reset-counters");
        String stderr = verbose(() -> {
            client.close();
            control.ok("sync");
        });
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
