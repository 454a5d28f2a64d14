package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static java.nio.charset.StandardCharsets.UTF_8;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.charset.Charset;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.function.Supplier;
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
    @BeforeAll
    static void loadSubmaps() {
        for (int submapId : new int[] {2, 3, 5}) assertTrue(client.getSubmapAndSymbols(submapId));
    }

    /** The entries given, lists among them flattened. */
    private static List<String> seq(Object... pieces) {
        List<String> all = new ArrayList<>();
        for (Object piece : pieces) {
            if (piece instanceof List<?> list) list.forEach(entry -> all.add((String) entry));
            else all.add((String) piece);
        }
        return all;
    }

    private static List<String> bracket(Object... pieces) {
        return seq("beginMapSync()", seq(pieces), "endMapSync()");
    }

    /** The symbolMovedCB of a move event. */
    private static String moved(int symbolId, int submapId, int placement, int x, int y, int pred) {
        return String.format("symbolMovedCB(%d, %d, %d, %d, %d, %d, true, false, false)", symbolId,
                submapId, placement, x, y, pred);
    }

    /**
     * A submap's refresh: each node's position (symbol, placement, x, y, predecessor) in the
     * platform's order as it serves the submap now, the last one with nothing to follow, then
     * synchronizeLayoutAppearance.
     */
    private static List<String> refresh(int submapId, int... nodes) {
        Map<Integer, String> positions = new HashMap<>();
        for (int i = 0; i < nodes.length; i += 5) {
            positions.put(nodes[i], String.format(
                    "symbolMovedCB(%d, %d, %d, %d, %d, %d, false, %%b, true)", nodes[i], submapId,
                    nodes[i + 1], nodes[i + 2], nodes[i + 3], nodes[i + 4]));
        }
        List<String> entries = new ArrayList<>();
        try {
            List<Integer> order = positions.isEmpty() ? List.of()
                    : control.order("submap " + submapId).stream()
                            .filter(positions::containsKey).toList();
            for (int k = 0; k < order.size(); k++) {
                entries.add(String.format(positions.get(order.get(k)), k + 1 < order.size()));
            }
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        entries.add("synchronizeLayoutAppearance(" + submapId + ")");
        return entries;
    }

    /** The log is head, the two refreshes in either order (a set's), then tail. */
    private static void assertEitherOrder(List<String> log, List<String> head, List<String> a,
            List<String> b, List<String> tail) {
        assertTrue(log.equals(seq(head, a, b, tail)) || log.equals(seq(head, b, a, tail)),
                log.toString());
    }

    @Test
    @Order(1)
    void eachSymbolEventMakesItsExactCallbacks() throws Exception {
        // Visibility changes come in list order, then each touched submap is refreshed once.
        for (String command : List.of("hide", "unhide")) {
            String cb = command.equals("hide") ? "symbolHiddenCB" : "symbolUnhiddenCB";
            assertEitherOrder(callbacks(command + " 300 200 202"), seq("beginMapSync()",
                    "submapInCache(3)", cb + "(300, 3, true)", "submapInCache(2)",
                    cb + "(200, 2, true)", "submapInCache(2)", cb + "(202, 2, true)"),
                    refresh(3, 300, 1, 1, 2, 0, 301, 7, 70, 80, 0),
                    refresh(2, 200, 1, 5, 6, 0, 202, 2, 200, 0, 200),
                    List.of("endMapSync()"));
        }
        // Platform text crosses in the default character set, whatever its characters.
        String label = "printer \u2603\uD834\uDD1E";
        String shown = new String(label.getBytes(UTF_8), Charset.defaultCharset());
        String printer = "create-symbol {\"id\": 203, \"submap\": 2, \"object\": 17, \"label\":"
                + " \"" + label + "\", \"type\": \"Computer:Printer\", \"variety\": 1, \"plane\": 2,"
                + " \"placement\": 1, \"x\": 60, \"y\": 70}";
        String link = "create-symbol {\"id\": 204, \"submap\": 2, \"object\": 12, \"type\":"
                + " \"Connection:IP\", \"variety\": 2, \"plane\": 2, \"endpoint1\": 200,"
                + " \"endpoint2\": 203}";
        // A refresh's order is the platform's after the command: each case's callbacks are
        // made once the command has run.
        Supplier<List<String>> refreshOf2 =
                () -> refresh(2, 200, 1, 5, 6, 0, 202, 2, 200, 0, 200, 203, 1, 60, 70, 0);
        record Case(String command, Supplier<List<String>> callbacks) {}
        for (Case c : List.of(
                // Submap 4 is not loaded: the bracket alone.
                new Case("hide 400", () -> bracket("submapInCache(4)")),
                new Case("unhide 400", () -> bracket("submapInCache(4)")),
                // A move reports only a node placed by coordinates or after another.
                new Case("move 201 1 3 4", () -> bracket()),
                new Case("move 301 0", () -> bracket()),
                new Case("move 300 1 40 50", () -> bracket(moved(300, 3, 1, 40, 50, 0),
                                refresh(3, 300, 1, 40, 50, 0, 301, 0, 70, 80, 0))),
                // The first coordinate overlays the predecessor.
                new Case("move 300 2 301", () -> bracket(moved(300, 3, 2, 301, 0, 301),
                                refresh(3, 300, 2, 301, 0, 301, 301, 0, 70, 80, 0))),
                // No loaded-submap test for moves.
                new Case("move 400 1 8 9", () -> bracket(moved(400, 4, 1, 8, 9, 0),
                        refresh(4, 400, 1, 8, 9, 0))),
                new Case("move 301 7", () -> bracket()),
                // Created on submap 4, not loaded: the bracket alone.
                new Case(printer.replace("203, \"submap\": 2", "401, \"submap\": 4"),
                        () -> bracket("submapInCache(4)")),
                // Layout off is its callback alone; on refreshes the submap in a bracket, where
                // a connection has no position of its own to report.
                new Case("autolayout 3 0",
                        () -> List.of("submapAutoLayoutChangeCB(3, 2, false)")),
                new Case("autolayout 5 1", () -> bracket("submapAutoLayoutChangeCB(5, 0, true)",
                                refresh(5, 501, 1, 8, 9, 0, 502, 1, 40, 9, 0))),
                new Case(printer, () -> bracket("submapInCache(2)",
                        "addNodeSymbol(203, 2, " + shown + ", , Computer:Printer, 2, 0, 17, 0,"
                                + " false, 1, 60, 70, 0, 0)",
                        "qxwdbObjectFieldValuesInCache(17)",
                        "setQxwdbObjectFieldValues(17, {Selection Name=printer})",
                        "symbolCreatedCB(MapNodeSymbol(203 \"" + shown + "\" on submap 2), 2)",
                        refreshOf2.get())),
                new Case(link, () -> bracket("submapInCache(2)",
                        "addConnectionSymbol(204, 2, , Connection:IP, 2, 0, 12, 0, false, 200,"
                                + " 203)",
                        "symbolCreatedCB(MapConnectionSymbol(204 200-203 on submap 2), 2)",
                        refreshOf2.get())),
                // The router's connection to host-a goes with it, after it.
                new Case("delete-symbols 202", () -> bracket("submapInCache(2)",
                        "symbolDeletedCB(202, 2, true)", "submapInCache(2)",
                        "symbolDeletedCB(201, 2, false)",
                        refresh(2, 200, 1, 5, 6, 0, 203, 1, 60, 70, 0))),
                // Status changes reach Java for every symbol, normalize changes for nodes only.
                new Case("status 3 400 200 204", () -> List.of(
                        "symbolStatusChangeCB(400, 4, 3, true)",
                                "symbolStatusChangeCB(200, 2, 3, true)",
                                "symbolStatusChangeCB(204, 2, 3, false)")),
                new Case("normalize 200 1", () -> List.of("symbolNormalizeChangeCB(200, 2, true)")),
                new Case("normalize 204 1", () -> List.of()),
                new Case("normalize 400 0",
                        () -> List.of("symbolNormalizeChangeCB(400, 4, false)")))) {
            List<String> log = callbacks(c.command());
            assertEquals(c.callbacks().get(), log, c.command());
        }
        // What the mirror keeps of hidden flags, positions, statuses, layouts and symbols is
        // compared with the platform's map at scale by MapEventsSoakTest.
        assertNull(dispatcher.getSymbol(401));
        assertNull(dispatcher.getSymbol(201));
        assertTrue(((MapNodeSymbol) dispatcher.getSymbol(200)).isNormalized());
    }

    @Test
    @Order(2)
    void aDeletedSubmapReachesTheScopingCacheBeforeJava() throws Exception {
        // Remembered by the scoping cache: Store's child submap is 4.
        assertEquals(4, session.onDispatcherThread(() -> TestNative.childSubmapId("Store")));
        dispatcher.hooks.put("submapDeletedCB", () -> dispatcher.record("child submap of Store",
                TestNative.childSubmapId("Store")));
        // Its symbols go first, in an event of their own: 400 and 401, not loaded.
        assertEquals(seq(bracket("submapInCache(4)", "submapInCache(4)"), "submapDeletedCB(4, 3)",
                "child submap of Store(0)"), callbacks("delete-submaps 4"));
        dispatcher.hooks.clear();
        assertEquals(0, dispatcher.getSymbol(102).getChildSubmapId());
        assertEquals(List.of("submapCreatedCB(6, 3)"), callbacks(
                "create-submap {\"id\": 6, \"name\": \"Annex\", \"parentObject\": 3}"));
        assertEquals(6, dispatcher.getSymbol(102).getChildSubmapId());
        // A loaded submap's symbols leave the mirror before the submap; its refresh finds none.
        assertEquals(seq(bracket("submapInCache(5)", "symbolDeletedCB(500, 5, false)",
                "submapInCache(5)", "symbolDeletedCB(501, 5, true)", "submapInCache(5)",
                "symbolDeletedCB(502, 5, true)", refresh(5)), "submapDeletedCB(5, 0)"),
                callbacks("delete-submaps 5"));
        assertNull(dispatcher.getSubmap(5));
        assertNull(dispatcher.getSymbol(500));
    }

    @Test
    @Order(3)
    void objectEventsWithoutScopingUpdatesReachJavaOnlyThroughTheSymbolsTheyTake()
            throws Exception {
        // Interface objects make no call and no look-up.
        control.ok("reset-counters");
        assertEquals(List.of(), callbacks("create-object {\"id\": 30, \"fields\": {\"isInterface\":"
                + " true, \"TopM Node ID\": 10}}", "delete-objects 30 20"));
        assertEquals(0, control.calls("QXwDbGetFieldValuesByObjects"));
        // A deleted object takes its child submap 3, which the scoping cache remembered for
        // Lab's name until it learned that the submap went.
        assertEquals(3, session.onDispatcherThread(() -> TestNative.childSubmapId("Lab")));
        dispatcher.hooks.put("submapDeletedCB", () -> dispatcher.record("child submap of Lab",
                TestNative.childSubmapId("Lab")));
        // Lab's symbol on the root submap, then those on its child submap 3; Store, placed after
        // Lab, now follows nothing. Lab is no interface: no object callback.
        assertEitherOrder(callbacks("delete-objects 2"), List.of("beginMapSync()",
                "submapInCache(1)", "symbolDeletedCB(101, 1, true)", "submapInCache(3)",
                "symbolDeletedCB(300, 3, true)", "submapInCache(3)",
                "symbolDeletedCB(301, 3, true)"),
                refresh(1, 100, 1, 10, 20, 0, 102, 2, 0, 0, 0), refresh(3),
                List.of("endMapSync()", "submapDeletedCB(3, 2)", "child submap of Lab(0)"));
        dispatcher.hooks.clear();
        assertNull(dispatcher.getSubmap(3));
        assertEquals(control.order("submap 1"), dispatcher.getSubmap(1).getSymbols().stream()
                .map(MapSymbol::getSymbolId).toList());
    }
}
