package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
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
class VisibilityScaleTest {
    private static final int INTERFACES = 1000;

    @Test
    void asksThePlatformOncePerObjectSubmapAndNetworkNode() throws Exception {
        TestSession session = TestSession.started();
        try (EmulatorControl control = new EmulatorControl()) {
            MapDump map = MapDump.of(control);
            List<Long> interfaces = new ArrayList<>();
            for (long id : map.objects.keySet()) {
                if (interfaces.size() < INTERFACES && Boolean.TRUE.equals(map.field(id, "isInterface"))) {
                    interfaces.add(id);
                }
            }
            assertEquals(INTERFACES, interfaces.size(), "the generated map is too small");

            // What the request can look up: symbols of interfaces and nodes, child submaps of
            // nodes, segments and networks, node submaps' symbols, and interfaces per network
            // and node.
            Set<Long> nodes = new HashSet<>();
            Set<Long> submapOwners = new HashSet<>();
            Set<List<Long>> networkNodes = new HashSet<>();
            for (long id : interfaces) {
                long node = (Long) map.field(id, "TopM Node ID");
                long network = (Long) map.field(id, "TopM Network ID");
                nodes.add(node);
                submapOwners.addAll(List.of(node, network, (Long) map.field(id, "TopM Segment ID")));
                networkNodes.add(List.of(network, node));
            }

            control.ok("reset-counters");
            long start = System.nanoTime();
            session.client.setInterfaceAndNodeVisibilityState(
                    interfaces.stream().mapToInt(Long::intValue).toArray(), true);
            long micros = (System.nanoTime() - start) / 1000;
            String counters = control.ok("counters");

            assertEquals(3, control.calls("QXwDbGetFieldValuesByObjects"));
            assertEquals(1, control.calls("QXwSetSymbolsVisibility"));
            long symbolLists = control.calls("QXwGetSymbolsByObject");
            long objectInfos = control.calls("QXwGetObjectInfo");
            long nodeSubmapLists = control.calls("QXwListSymbols");
            long interfaceLists = control.calls("QXwDbListObjectsByFieldValues");
            assertTrue(symbolLists <= interfaces.size() + nodes.size(), counters);
            assertTrue(objectInfos <= submapOwners.size(), counters);
            assertTrue(nodeSubmapLists <= nodes.size(), counters);
            assertTrue(interfaceLists <= networkNodes.size(), counters);
            System.out.printf("hiding %d interfaces (%d nodes, %d network-node pairs, %d objects"
                    + " with child submaps): %d us; QXwGetSymbolsByObject %d,"
                    + " QXwGetObjectInfo %d, QXwListSymbols %d, QXwDbListObjectsByFieldValues %d%n",
                    interfaces.size(), nodes.size(), networkNodes.size(), submapOwners.size(),
                    micros, symbolLists, objectInfos, nodeSubmapLists, interfaceLists);

            // Every interface's symbol on its node's submap is hidden now.
            MapDump after = MapDump.of(control);
            Set<Long> requested = new HashSet<>(interfaces);
            for (Map<String, Object> symbol : after.symbols.values()) {
                long object = (Long) symbol.get("object");
                if (!requested.contains(object)) continue;
                long node = (Long) after.field(object, "TopM Node ID");
                if (symbol.get("submap").equals(after.objects.get(node).get("childSubmap"))) {
                    assertEquals(Boolean.TRUE, symbol.get("hidden"), symbol.toString());
                }
            }
            session.end(control);
        }
    }
}
