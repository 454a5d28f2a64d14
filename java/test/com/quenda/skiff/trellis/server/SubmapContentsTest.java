package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Set;
import org.junit.jupiter.api.MethodOrderer;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;

/**
 * What a submap request reports, on submap-contents.json: the submap, then its node and
 * connection symbols in the platform's order, each node's object's field values when the
 * dispatcher lacks them; and the root submaps of a search.
 */
@TestMethodOrder(MethodOrderer.OrderAnnotation.class)
class SubmapContentsTest extends OneSessionTest {
    @Test
    @Order(1)
    void everySymbolIsReportedInPlatformOrderAndFieldValuesOnlyWhenMissing() throws Exception {
        // Hidden symbols, the user plane and the meta-connection are reported like the others;
        // placements 1, 2 and 7 give coordinates, a predecessor and nothing. The router (object
        // 30) has three symbols: each asks, only the first in the platform's order gets its
        // values built.
        Map<Integer, String> reports = Map.of(
                200, "addNodeSymbol(200, 2, host-a, , Computer:Workstation, 2, 3, 10, 4, false, 1,"
                        + " 5, 6, 0, 0)",
                201, "addNodeSymbol(201, 2, host-b, , Computer:Workstation, 2, 0, 11, 0, true, 2,"
                        + " 0, 0, 200, 0)",
                202, "addConnectionSymbol(202, 2, , Connection:IP, 2, 0, 20, 0, false, 200, 201)",
                203, "addNodeSymbol(203, 2, router, , Connector:Router, 2, 0, 30, 0, false, 7, 0,"
                        + " 0, 0, 0)",
                204, "addNodeSymbol(204, 2, my router, , Connector:Router, 4, 2, 30, 0, false, 1,"
                        + " 90, 95, 0, 0)",
                205, "addNodeSymbol(205, 2, router, , Connector:Router, 2, 0, 30, 0, true, 0, 0,"
                        + " 0, 0, 0)",
                206, "addConnectionSymbol(206, 2, a-router, Connection:Meta, 2, 1, 21, 5, true,"
                        + " 200, 203)");
        Map<Integer, Integer> nodeObjects = Map.of(200, 10, 201, 11, 203, 30, 204, 30, 205, 30);
        List<Integer> order = control.order("submap 2");
        List<String> first = new ArrayList<>(
                List.of("addSubmap(1, 2, Campus, 3, true, campus.gif)"));
        Set<Integer> built = new HashSet<>();
        for (int symbolId : order) {
            first.add(reports.get(symbolId));
            Integer objectId = nodeObjects.get(symbolId);
            if (objectId == null) continue;
            first.add("qxwdbObjectFieldValuesInCache(" + objectId + ")");
            if (built.add(objectId)) first.add("setQxwdbObjectFieldValues(" + objectId + ")");
        }
        record Case(int submapId, boolean answer, List<String> report, long builds) {}
        for (Case c : List.of(new Case(2, true, first, 3),
                // Reported again: every node still asks, and nothing is built.
                new Case(2, true, first.stream().filter(e -> !e.startsWith("set")).toList(), 0),
                new Case(3, true, List.of("addSubmap(40, 3, Empty, 0, false, )"), 0),
                new Case(999, false, List.of(), 0))) {
            control.ok("reset-counters");
            List<String> log = logOf(
                    () -> assertEquals(c.answer(), client.getSubmapAndSymbols(c.submapId())));
            // Field values are shown by object id only.
            assertEquals(c.report(), log.stream()
                    .map(e -> e.startsWith("set") ? e.substring(0, e.indexOf(',')) + ")" : e)
                    .toList(), "submap " + c.submapId());
            assertEquals(c.builds(), control.calls("QXwDbGetFieldValues"));
        }
        assertEquals(Map.of("Selection Name", "router", "isSNMPSupported", "TRUE"),
                dispatcher.getObjectFieldValues(30));
        assertEquals(order, dispatcher.getSubmap(2).getSymbols().stream()
                .map(MapSymbol::getSymbolId).toList());
    }

    @Test
    @Order(2)
    void rootSubmapsAreTheChildSubmapsOfTheNamedObjects() throws Exception {
        record Case(String[] names, int numRootObjects, int[] roots, String stderr) {}
        List<Case> cases = List.of(new Case(new String[0], 0, new int[] {1}, ""),
                new Case(new String[] {"Campus"}, -1, new int[] {1}, ""),
                // A name without a child submap, an unknown one and a null one add nothing.
                new Case(new String[] {"Campus", "host-b", "nowhere", null, "Empty Place"}, 5,
                        new int[] {2, 3}, ""),
                new Case(new String[] {"host-b"}, 1, new int[0], ""),
                // The names that came are used.
                new Case(new String[] {"Empty Place"}, 3, new int[] {3},
                        "QxwEventDispatcher::GetRootSubmapsHashtable failed, numRootObjects=3,"
                                + " arrayLength=1\n"));
        for (Case c : cases) {
            dispatcher.setRootObjectSelectionNames(c.names());
            int[][] roots = new int[1][];
            assertEquals(c.stderr(), TestNative.captureStderr(() -> roots[0] = session
                    .onDispatcherThread(() -> TestNative.rootSubmapIds(c.numRootObjects()))));
            assertArrayEquals(c.roots(), roots[0],
                    Arrays.toString(c.names()) + " " + c.numRootObjects());
        }
    }
}
