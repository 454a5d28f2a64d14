package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import java.util.Set;
import org.junit.jupiter.api.MethodOrderer;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;

/**
 * Acknowledge, manage, symbol visibility and deletion requests on object-states.json: router 10
 * has symbols 100, 101 and 102 on three submaps, host 11 symbol 110, host 12 symbol 120, and
 * object 13 none. Raw requests (TestNative.request) show the answers and send states other than
 * 0 and 1.
 */
@TestMethodOrder(MethodOrderer.OrderAnnotation.class)
class ObjectStateTest extends OneSessionTest {
    /** Sends a raw request with the ids stored for its callback; asserts it answers 1. */
    private static String answeredOne(String request, int... ids) throws Exception {
        dispatcher.setRequestIds(ids);
        return TestNative.captureStderr(() -> assertEquals(1, TestNative.request(request)));
    }

    @Test
    @Order(1)
    void acknowledgeAndManageStatesReachTheObjects() throws Exception {
        client.setAcknowledgeState(new int[] {10, 11}, true);
        client.setAcknowledgeState(new int[] {11}, false);
        MapDump map = MapDump.of(control);
        assertTrue(map.acknowledged(10));
        assertFalse(map.acknowledged(11));
        assertFalse(map.acknowledged(12));

        // Every state but 1 unmanages; the objects' symbols show it in their status.
        record Case(int state, boolean managed, long symbolStatus) {}
        for (Case c : List.of(new Case(0, false, 1), new Case(1, true, 0),
                new Case(2, false, 1), new Case(1, true, 0))) {
            assertEquals("", answeredOne("10 2 " + c.state(), 10, 11), c.toString());
            map = MapDump.of(control);
            assertEquals(c.managed(), map.managed(10), c.toString());
            assertEquals(c.managed(), map.managed(11), c.toString());
            assertTrue(map.managed(12), c.toString());
            for (long symbolId : new long[] {100, 101, 102, 110}) {
                assertEquals(c.symbolStatus(), map.status(symbolId), c + " symbol " + symbolId);
            }
        }
        client.setManageState(new int[] {12}, false);
        assertFalse(MapDump.of(control).managed(12));
    }

    @Test
    @Order(2)
    void symbolVisibilityFollowsTheState() throws Exception {
        record Case(int state, boolean hidden) {}
        for (Case c : List.of(new Case(1, true), new Case(2, false), new Case(1, true),
                new Case(0, false))) {
            assertEquals("", answeredOne("11 2 " + c.state(), 110, 120), c.toString());
            MapDump map = MapDump.of(control);
            assertEquals(c.hidden(), map.hidden(110), c.toString());
            assertEquals(c.hidden(), map.hidden(120), c.toString());
            assertFalse(map.hidden(100), c.toString());
        }
    }

    @Test
    @Order(3)
    void anEmptyRequestCallsThePlatformWithAnEmptyList() throws Exception {
        record Case(Runnable request, String function, long calls) {}
        int[] none = new int[0];
        for (Case c : List.of(
                new Case(() -> client.setAcknowledgeState(none, true), "QXwSetObjectAckState", 1),
                new Case(() -> client.setManageState(none, true), "_QXwManageObjects", 1),
                new Case(() -> client.setManageState(none, false), "_QXwUnmanageObjects", 1),
                new Case(() -> client.setSymbolVisibilityState(none, true),
                        "QXwSetSymbolsVisibility", 1),
                new Case(() -> client.setInterfaceAndNodeVisibilityState(none, true),
                        "QXwSetSymbolsVisibility", 1),
                new Case(() -> client.deleteAllSymbolsForObjects(none), "QXwDeleteSymbols", 0))) {
            String before = control.ok("dump");
            control.ok("reset-counters");
            assertEquals("", TestNative.captureStderr(c.request()::run));
            assertEquals(c.calls(), control.calls(c.function()), c.function());
            assertEquals(before, control.ok("dump"), c.function());
        }
    }

    @Test
    @Order(4)
    void anIdArrayThatDoesNotMatchItsCountIsReportedAndChangesNothing() throws Exception {
        record Op(String code, String state, String callback, String failure) {}
        List<Op> ops = List.of(
                new Op("9", " 1", "getAckObjectList", "QxwEventDispatcher::SetAcknowledgeState"
                        + " failed, numObjs=%d, objSize=%d\n"),
                new Op("10", " 0", "getManageObjectList", "QxwEventDispatcher::SetManageState"
                        + " failed, numObjs=%d, objSize=%d\n"),
                new Op("11", " 1", "getVisibilityStateSymbolIds",
                        "QxwEventDispatcher::SetSymbolVisibilityState failed,"
                        + " numSymbols=%d, arraySize=%d\n"),
                new Op("12", " 1", "getInterfaceAndNodeVisibilityStateObjectIds",
                        "QxwEventDispatcher::SetInterfaceAndNodeVisibilityState"
                        + " failed, numInterfaceObjects=%d, arraySize=%d\n"),
                new Op("13", "", "getDeleteSymbolsObjectIds",
                        "QxwEventDispatcher::DeleteAllSymbolsForObjects failed,"
                        + " numObjects=%d, arraySize=%d\n"));
        enum Answer { TWO_IDS, NO_ARRAY, THROWS }
        String before = control.ok("dump");
        for (Op op : ops) {
            for (int count : new int[] {3, -1, -2, Integer.MIN_VALUE}) {
                for (Answer answer : Answer.values()) {
                    String what = op.code() + " count " + count + " " + answer;
                    dispatcher.returnNoIds = answer == Answer.NO_ARRAY;
                    dispatcher.throwForIds = answer == Answer.THROWS;
                    String stderr;
                    try {
                        stderr = answeredOne(op.code() + " " + count + op.state(), 10, 11);
                    } finally {
                        dispatcher.returnNoIds = false;
                        dispatcher.throwForIds = false;
                    }
                    String failure = String.format(op.failure(), count,
                            answer == Answer.TWO_IDS ? 2 : -1);
                    if (answer == Answer.THROWS) {
                        assertTrue(stderr.startsWith("Java method " + op.callback()
                                + " threw an exception\n"), what + ": " + stderr);
                        assertTrue(stderr.contains("java.lang.IllegalStateException: no ids"
                                + " today"), what + ": " + stderr);
                        assertTrue(stderr.endsWith(failure), what + ": " + stderr);
                    } else {
                        assertEquals(failure, stderr, what);
                    }
                }
            }
        }
        assertEquals(before, control.ok("dump"));
        assertTrue(client.getSubmapAndSymbols(0), "the session still serves");
    }

    @Test
    @Order(5)
    void aPlatformFailureIsReportedWithThePlatformsTextAndAnswered() throws Exception {
        record Case(String request, int[] ids, String function, String message) {}
        List<Case> cases = List.of(
                new Case("9 1 1", new int[] {10}, "QXwSetObjectAckState",
                        "QXwSetObjectAckState failed: the map is open read-only\n"),
                new Case("10 1 1", new int[] {10}, "_QXwManageObjects",
                        "_QXwManageObjects failed: the map is open read-only\n"),
                new Case("10 1 0", new int[] {10}, "_QXwUnmanageObjects",
                        "_QXwUnmanageObjects failed: the map is open read-only\n"),
                new Case("11 1 1", new int[] {110}, "QXwSetSymbolsVisibility",
                        "QXwSetSymbolsVisibility failed: the map is open read-only\n"),
                new Case("12 0 1", new int[0], "QXwSetSymbolsVisibility",
                        "QXwSetSymbolsVisibility failed: the map is open read-only\n"),
                // A failed deletion is not reported.
                new Case("13 1", new int[] {10}, "QXwDeleteSymbols", ""));
        String before = control.ok("dump");
        for (Case c : cases) {
            control.ok("fail " + c.function() + " 12 1");
            assertEquals(c.message(), answeredOne(c.request(), c.ids()), c.request());
        }
        assertEquals(before, control.ok("dump"));
    }

    @Test
    @Order(6)
    void verboseModeWritesTheCopyThenTheJavaElementForEachId() throws Exception {
        client.open(false, true, false);
        String stderr;
        try {
            stderr = TestNative.captureStderr(
                    () -> client.setAcknowledgeState(new int[] {11, 12}, true));
        } finally {
            client.open(false, false, false);
        }
        String op = "QxwEventDispatcher::SetAcknowledgeState";
        assertEquals("In " + op + ": numObjs=2\n"
                + op + ", objectList 0 is 11\n" + op + ", objectsArray 0 is 11\n"
                + op + ", objectList 1 is 12\n" + op + ", objectsArray 1 is 12\n", stderr);
    }

    @Test
    @Order(7)
    void deletionRemovesEverySymbolOfEachObjectItKnows() throws Exception {
        control.ok("reset-counters");
        client.deleteAllSymbolsForObjects(new int[] {10});
        assertEquals(1, control.calls("QXwDeleteSymbols"));
        assertEquals(Set.of(200L, 201L, 110L, 120L), MapDump.of(control).symbols.keySet());

        // The unknown object (no list) is passed over; the one whose list is
        // empty still gets its deletion call.
        control.ok("reset-counters");
        String stderr = TestNative.captureStderr(
                () -> client.deleteAllSymbolsForObjects(new int[] {999, 13, 11}));
        assertEquals("", stderr);
        assertEquals(3, control.calls("QXwGetSymbolsByObject"));
        assertEquals(2, control.calls("QXwDeleteSymbols"));
        assertEquals(Set.of(200L, 201L, 120L), MapDump.of(control).symbols.keySet());
    }
}
