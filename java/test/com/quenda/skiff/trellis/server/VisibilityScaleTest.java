package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Set;
import org.junit.jupiter.api.Test;

/**
 * A visibility request over 1,000 interfaces of a generated map (QXW_MAP): the platform is asked
 * for the interfaces' TopM fields in three calls, gets one visibility call, and is asked at most
 * once per object, submap and network-node pair for what the request looks up.
 */
class VisibilityScaleTest extends OneSessionTest {
    private static final int INTERFACES = 1000;

    @Test
    void asksThePlatformOncePerObjectSubmapAndNetworkNode() throws Exception {
        MapDump map = MapDump.of(control);
        List<Long> interfaces = map.objects.keySet().stream()
                .filter(id -> Boolean.TRUE.equals(map.field(id, "isInterface")))
                .limit(INTERFACES).toList();
        assertEquals(INTERFACES, interfaces.size(), "the generated map is too small");
        // What the request can look up: symbols of interfaces and nodes, child submaps of nodes,
        // segments and networks, node submaps' symbols, and interfaces per network and node.
        Set<Object> nodes = new HashSet<>();
        Set<Object> submapOwners = new HashSet<>();
        Set<List<Object>> networkNodes = new HashSet<>();
        for (long id : interfaces) {
            Object node = map.field(id, "TopM Node ID");
            Object network = map.field(id, "TopM Network ID");
            nodes.add(node);
            submapOwners.addAll(List.of(node, network, map.field(id, "TopM Segment ID")));
            networkNodes.add(List.of(network, node));
        }

        control.ok("reset-counters");
        client.setInterfaceAndNodeVisibilityState(
                interfaces.stream().mapToInt(Long::intValue).toArray(), true);
        String counters = control.ok("counters");
        assertEquals(3, EmulatorControl.calls(counters, "QXwDbGetFieldValuesByObjects"));
        assertEquals(1, EmulatorControl.calls(counters, "QXwSetSymbolsVisibility"));
        record Bound(String function, int most) {}
        for (Bound b : List.of(new Bound("QXwGetSymbolsByObject", interfaces.size() + nodes.size()),
                new Bound("QXwGetObjectInfo", submapOwners.size()),
                new Bound("QXwListSymbols", nodes.size()),
                new Bound("QXwDbListObjectsByFieldValues", networkNodes.size()))) {
            assertTrue(EmulatorControl.calls(counters, b.function()) <= b.most(), counters);
        }

        // Every interface's symbol on its node's submap is hidden now.
        MapDump after = MapDump.of(control);
        for (Map<String, Object> symbol : after.symbols.values()) {
            Object object = symbol.get("object");
            if (!interfaces.contains(object)) continue;
            Object node = after.field((Long) object, "TopM Node ID");
            if (symbol.get("submap").equals(after.objects.get(node).get("childSubmap"))) {
                assertEquals(Boolean.TRUE, symbol.get("hidden"), symbol.toString());
            }
        }
    }
}
