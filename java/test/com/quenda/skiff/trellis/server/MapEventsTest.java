package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTimeoutPreemptively;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.time.Duration;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.MethodOrderer;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;

/**
 * Map events on map-events.json, driven through the emulator's control socket, with the exact
 * callbacks each makes. Submaps 1, 2, 3 and 5 are loaded; 4 is not. Submap 2 holds node 200,
 * connection 201 and node 202 (placed after 200); submap 3 node 300 and node 301 (placement 7);
 * submap 4 node 400; submap 5 connection 500 between nodes 501 and 502.
 */
@TestMethodOrder(MethodOrderer.OrderAnnotation.class)
class MapEventsTest extends OneSessionTest {
    private static final List<String> BEGIN = List.of("beginMapSync()");
    private static final List<String> END = List.of("endMapSync()");

    @BeforeAll
    static void loadSubmaps() {
        for (int submapId : new int[] {2, 3, 5}) assertTrue(client.getSubmapAndSymbols(submapId));
    }

    static String moved(int symbolId, int submapId, int placement, int x, int y, int pred,
            boolean fromMoveEvent, boolean moreToFollow, boolean fromRefresh) {
        return String.format("symbolMovedCB(%d, %d, %d, %d, %d, %d, %b, %b, %b)", symbolId,
                submapId, placement, x, y, pred, fromMoveEvent, moreToFollow, fromRefresh);
    }

    /** A submap's refresh: the node positions given, then synchronizeLayoutAppearance. */
    static List<String> refresh(int submapId, String... positions) {
        List<String> entries = new ArrayList<>(List.of(positions));
        entries.add("synchronizeLayoutAppearance(" + submapId + ")");
        return entries;
    }

    @SafeVarargs
    static List<String> concat(List<String>... parts) {
        List<String> all = new ArrayList<>();
        for (List<String> part : parts) all.addAll(part);
        return all;
    }

    private static List<String> refreshOf2() {
        return refresh(2, moved(200, 2, 1, 5, 6, 0, false, true, true),
                moved(202, 2, 2, 200, 0, 200, false, false, true));
    }

    private static List<String> refreshOf3() {
        return refresh(3, moved(300, 3, 1, 1, 2, 0, false, true, true),
                moved(301, 3, 7, 70, 80, 0, false, false, true));
    }

    @Test
    @Order(1)
    void symbolEventsOfUnloadedSubmapsGiveTheBracketAlone() throws Exception {
        List<String> bracketOnly = concat(BEGIN, List.of("submapInCache(4)"), END);
        for (String command : List.of("hide 400", "unhide 400",
                "create-symbol {\"id\": 401, \"submap\": 4, \"object\": 17, \"variety\": 1,"
                        + " \"plane\": 2}",
                "delete-symbols 401")) {
            assertEquals(bracketOnly, callbacks(command), command);
        }
    }

    @Test
    @Order(2)
    void visibilityChangesComeInListOrderThenEachTouchedSubmapIsRefreshedOnce() throws Exception {
        record Case(String command, String callback, boolean hidden) {}
        for (Case c : List.of(new Case("hide", "symbolHiddenCB", true),
                new Case("unhide", "symbolUnhiddenCB", false))) {
            List<String> changes = List.of("submapInCache(3)", c.callback() + "(300, 3, true)",
                    "submapInCache(2)", c.callback() + "(200, 2, true)",
                    "submapInCache(2)", c.callback() + "(202, 2, true)");
            List<String> log = callbacks(c.command() + " 300 200 202");
            // The touched submaps come in the set's order, whichever that is.
            List<String> oneOrder = concat(BEGIN, changes, refreshOf3(), refreshOf2(), END);
            List<String> otherOrder = concat(BEGIN, changes, refreshOf2(), refreshOf3(), END);
            assertTrue(log.equals(oneOrder) || log.equals(otherOrder), c.command() + ": " + log);
            for (int symbolId : new int[] {300, 200, 202}) {
                assertEquals(c.hidden(), dispatcher.getSymbol(symbolId).isHidden());
            }
        }
    }

    @Test
    @Order(3)
    void aMoveReportsOnlyANodePlacedByCoordinatesOrAfterAnother() throws Exception {
        record Case(String command, List<String> callbacks) {}
        for (Case c : List.of(
                new Case("move 201 1 3 4", concat(BEGIN, END)),
                new Case("move 301 0", concat(BEGIN, END)),
                new Case("move 300 1 40 50", concat(BEGIN,
                        List.of(moved(300, 3, 1, 40, 50, 0, true, false, false)),
                        refresh(3, moved(300, 3, 1, 40, 50, 0, false, true, true),
                                moved(301, 3, 0, 70, 80, 0, false, false, true)),
                        END)),
                // The first coordinate overlays the predecessor.
                new Case("move 300 2 301", concat(BEGIN,
                        List.of(moved(300, 3, 2, 301, 0, 301, true, false, false)),
                        refresh(3, moved(300, 3, 2, 301, 0, 301, false, true, true),
                                moved(301, 3, 0, 70, 80, 0, false, false, true)),
                        END)),
                // No loaded-submap test for moves.
                new Case("move 400 1 8 9", concat(BEGIN,
                        List.of(moved(400, 4, 1, 8, 9, 0, true, false, false)),
                        refresh(4, moved(400, 4, 1, 8, 9, 0, false, false, true)), END)),
                new Case("move 300 1 1 2", concat(BEGIN,
                        List.of(moved(300, 3, 1, 1, 2, 0, true, false, false)),
                        refresh(3, moved(300, 3, 1, 1, 2, 0, false, true, true),
                                moved(301, 3, 0, 70, 80, 0, false, false, true)),
                        END)),
                new Case("move 301 7", concat(BEGIN, END)))) {
            assertEquals(c.callbacks(), callbacks(c.command()), c.command());
        }
        // The mirror keeps a position as a submap report gives it: the last one of 301 had
        // placement 0.
        MapNodeSymbol host = (MapNodeSymbol) dispatcher.getSymbol(301);
        assertEquals(List.of(0, 0, 0, 0),
                List.of(host.getPlacement(), host.getX(), host.getY(), host.getPredSymbolId()));
        MapNodeSymbol hostC = (MapNodeSymbol) dispatcher.getSymbol(300);
        assertEquals(List.of(1, 1, 2, 0), List.of(hostC.getPlacement(), hostC.getX(),
                hostC.getY(), hostC.getPredSymbolId()));
    }

    @Test
    @Order(4)
    void autoLayoutOffIsItsCallbackAloneOnRefreshesTheSubmapInABracket() throws Exception {
        assertEquals(List.of("submapAutoLayoutChangeCB(3, 2, false)"), callbacks("autolayout 3 0"));
        assertFalse(dispatcher.getSubmap(3).isAutoLayout());
        assertEquals(concat(BEGIN, List.of("submapAutoLayoutChangeCB(3, 2, true)"),
                refreshOf3(), END), callbacks("autolayout 3 1"));
        assertTrue(dispatcher.getSubmap(3).isAutoLayout());
        // The connection between them has no position of its own to report.
        assertEquals(concat(BEGIN, List.of("submapAutoLayoutChangeCB(5, 0, true)"),
                             refresh(5, moved(501, 5, 1, 8, 9, 0, false, true, true),
                                     moved(502, 5, 1, 40, 9, 0, false, false, true)),
                             END),
                callbacks("autolayout 5 1"));
    }

    @Test
    @Order(5)
    void createdSymbolsOfEachVarietyJoinLoadedSubmapsOnly() throws Exception {
        String node = "create-symbol {\"id\": 203, \"submap\": 2, \"object\": 17, \"label\":"
                + " \"printer\", \"type\": \"Computer:Printer\", \"variety\": 1, \"plane\": 2,"
                + " \"placement\": 1, \"x\": 60, \"y\": 70}";
        String printerPosition = moved(203, 2, 1, 60, 70, 0, false, false, true);
        assertEquals(concat(BEGIN, List.of("submapInCache(2)",
                "addNodeSymbol(203, 2, printer, , Computer:Printer, 2, 0, 17, 0, false, 1, 60, 70,"
                        + " 0, 0)",
                "qxwdbObjectFieldValuesInCache(17)",
                "setQxwdbObjectFieldValues(17, {Selection Name=printer})",
                "symbolCreatedCB(MapNodeSymbol(203 \"printer\" on submap 2), 2)"),
                refresh(2, moved(200, 2, 1, 5, 6, 0, false, true, true),
                        moved(202, 2, 2, 200, 0, 200, false, true, true), printerPosition),
                END), callbacks(node));

        String connection = "create-symbol {\"id\": 204, \"submap\": 2, \"object\": 12,"
                + " \"type\": \"Connection:IP\", \"variety\": 2, \"plane\": 2, \"endpoint1\": 200,"
                + " \"endpoint2\": 203}";
        assertEquals(concat(BEGIN, List.of("submapInCache(2)",
                "addConnectionSymbol(204, 2, , Connection:IP, 2, 0, 12, 0, false, 200, 203)",
                "symbolCreatedCB(MapConnectionSymbol(204 200-203 on submap 2), 2)"),
                refresh(2, moved(200, 2, 1, 5, 6, 0, false, true, true),
                        moved(202, 2, 2, 200, 0, 200, false, true, true), printerPosition),
                END), callbacks(connection));
        assertEquals(List.of(200, 201, 202, 203, 204), symbolIds(2));

        assertEquals(concat(BEGIN, List.of("submapInCache(4)"), END),
                callbacks(node.replace("\"id\": 203, \"submap\": 2",
                        "\"id\": 402, \"submap\": 4")));
        assertNull(dispatcher.getSymbol(402));
    }

    private static List<Integer> symbolIds(int submapId) {
        return dispatcher.getSubmap(submapId).getSymbols().stream().map(MapSymbol::getSymbolId)
                .toList();
    }

    @Test
    @Order(6)
    void statusChangesReachJavaForEverySymbolNormalizeChangesForNodes() throws Exception {
        assertEquals(List.of("symbolStatusChangeCB(400, 4, 3, true)",
                "symbolStatusChangeCB(200, 2, 3, true)", "symbolStatusChangeCB(201, 2, 3, false)"),
                callbacks("status 3 400 200 201"));
        assertEquals(3, dispatcher.getSymbol(200).getStatus());
        assertEquals(3, dispatcher.getSymbol(201).getStatus());

        assertEquals(List.of("symbolNormalizeChangeCB(200, 2, true)"),
                callbacks("normalize 200 1"));
        assertTrue(((MapNodeSymbol) dispatcher.getSymbol(200)).isNormalized());
        assertEquals(List.of(), callbacks("normalize 201 1"));
        assertEquals(List.of("symbolNormalizeChangeCB(400, 4, false)"),
                callbacks("normalize 400 0"));
    }

    @Test
    @Order(7)
    void deletedSymbolsLeaveTheMirrorAndTheirSubmapsAreRefreshed() throws Exception {
        // The router's connection to host-a goes with it, after it.
        assertEquals(concat(BEGIN, List.of("submapInCache(2)", "symbolDeletedCB(202, 2, true)",
                "submapInCache(2)", "symbolDeletedCB(201, 2, false)"),
                refresh(2, moved(200, 2, 1, 5, 6, 0, false, true, true),
                        moved(203, 2, 1, 60, 70, 0, false, false, true)),
                END), callbacks("delete-symbols 202"));
        assertEquals(List.of(200, 203, 204), symbolIds(2));
        assertNull(dispatcher.getSymbol(201));
    }

    @Test
    @Order(8)
    void aDeletedSubmapReachesTheScopingCacheBeforeJava() throws Exception {
        // Remembered by the scoping cache: Store's child submap is 4.
        assertEquals(4, session.onDispatcherThread(() -> TestNative.childSubmapId("Store")));
        dispatcher.hooks.put("submapDeletedCB", () -> dispatcher.record("child submap of Store",
                TestNative.childSubmapId("Store")));
        try {
            // Its symbols go first, in an event of their own: 400 and 402, not loaded.
            assertEquals(concat(BEGIN, List.of("submapInCache(4)", "submapInCache(4)"), END,
                    List.of("submapDeletedCB(4, 3)", "child submap of Store(0)")),
                    callbacks("delete-submaps 4"));
        } finally {
            dispatcher.hooks.clear();
        }
        assertEquals(0, dispatcher.getSymbol(102).getChildSubmapId());

        assertEquals(List.of("submapCreatedCB(6, 3)"),
                callbacks("create-submap {\"id\": 6, \"name\": \"Annex\", \"parentObject\": 3}"));
        assertEquals(6, dispatcher.getSymbol(102).getChildSubmapId());

        // A loaded submap's symbols leave the mirror before the submap; its refresh finds none.
        assertEquals(concat(BEGIN, List.of("submapInCache(5)", "symbolDeletedCB(500, 5, false)",
                "submapInCache(5)", "symbolDeletedCB(501, 5, true)", "submapInCache(5)",
                "symbolDeletedCB(502, 5, true)"), refresh(5), END,
                List.of("submapDeletedCB(5, 0)")), callbacks("delete-submaps 5"));
        assertNull(dispatcher.getSubmap(5));
        assertNull(dispatcher.getSymbol(500));
    }

    @Test
    @Order(9)
    void aCallbackThatThrowsInsideABracketStillGetsEndMapSync() throws Exception {
        dispatcher.hooks.put("symbolHiddenCB", () -> {
            throw new IllegalStateException("hidden failed");
        });
        List<List<String>> log = new ArrayList<>();
        String stderr;
        try {
            stderr = TestNative.captureStderr(() -> log.add(callbacks("hide 300")));
        } finally {
            dispatcher.hooks.clear();
        }
        assertEquals(concat(BEGIN, List.of("submapInCache(3)", "symbolHiddenCB(300, 3, true)"),
                refreshOf3(), END), log.get(0));
        assertTrue(stderr.startsWith("Java method symbolHiddenCB threw an exception\n"
                + "Exception in thread \"dispatcher\" java.lang.IllegalStateException:"
                + " hidden failed\n"),
                stderr);
        // The mirror is open to readers again.
        assertTimeoutPreemptively(Duration.ofSeconds(10), () -> dispatcher.getSubmap(3));
        callbacks("unhide 300");
    }

    @Test
    @Order(10)
    void verboseModeNamesEachHandler() throws Exception {
        record Case(String command, String line) {}
        client.open(false, true, false);
        try {
            for (Case c : List.of(
                    new Case("create-symbol {\"id\": 600, \"submap\": 6, \"object\": 17,"
                            + " \"variety\": 1, \"plane\": 2}", "SymbolsCreatedCB"),
                    new Case("hide 600", "SymbolsHiddenCB"),
                    new Case("unhide 600", "SymbolsUnhiddenCB"),
                    new Case("status 0 600", "SymbolsStatusChangeCB"),
                    new Case("move 600 1 1 1", "SymbolMovedCB"),
                    new Case("normalize 600 1", "SymbolNormalizeChangeCB"),
                    new Case("delete-symbols 600", "SymbolsDeletedCB"),
                    new Case("create-submap {\"id\": 7}", "SubmapsCreatedCB"),
                    new Case("delete-submaps 7", "SubmapsDeletedCB"),
                    new Case("autolayout 6 0", "SubmapAutoLayoutChangeCB"))) {
                String stderr = TestNative.captureStderr(() -> callbacks(c.command()));
                assertEquals(c.line() + "\n", stderr, c.command());
            }
        } finally {
            client.open(false, false, false);
        }
    }

    @Test
    @Order(11)
    void withoutScopingUpdatesInterfaceObjectsMakeNoCallAndNoLookUp() throws Exception {
        control.ok("reset-counters");
        assertEquals(List.of(), callbacks("create-object {\"id\": 30, \"fields\": {\"isInterface\":"
                + " true, \"TopM Node ID\": 10}}", "delete-objects 30 20"));
        assertEquals(0, control.calls("QXwDbGetFieldValuesByObjects"));
    }

    @Test
    @Order(12)
    void aDeletedObjectTakesItsChildSubmapAndTheScopingCacheForgetsItsName() throws Exception {
        // Remembered by the scoping cache, which forgets it when it learns that submap 3 went.
        assertEquals(3, session.onDispatcherThread(() -> TestNative.childSubmapId("Lab")));
        dispatcher.hooks.put("submapDeletedCB", () -> dispatcher.record("child submap of Lab",
                TestNative.childSubmapId("Lab")));
        List<String> log;
        try {
            log = callbacks("delete-objects 2");
        } finally {
            dispatcher.hooks.clear();
        }
        // Lab's symbol on the root submap, then those on its child submap 3; Store, placed after
        // Lab, now follows nothing. Lab is no interface: no object callback.
        List<String> deleted = List.of("submapInCache(1)", "symbolDeletedCB(101, 1, true)",
                "submapInCache(3)", "symbolDeletedCB(300, 3, true)", "submapInCache(3)",
                "symbolDeletedCB(301, 3, true)");
        List<String> refreshOf1 = refresh(1, moved(100, 1, 1, 10, 20, 0, false, true, true),
                moved(102, 1, 2, 0, 0, 0, false, false, true));
        List<String> after = List.of("submapDeletedCB(3, 2)", "child submap of Lab(0)");
        List<String> oneOrder = concat(BEGIN, deleted, refreshOf1, refresh(3), END, after);
        List<String> otherOrder = concat(BEGIN, deleted, refresh(3), refreshOf1, END, after);
        assertTrue(log.equals(oneOrder) || log.equals(otherOrder), log.toString());
        assertNull(dispatcher.getSubmap(3));
        assertEquals(List.of(100, 102), symbolIds(1));
    }
}
