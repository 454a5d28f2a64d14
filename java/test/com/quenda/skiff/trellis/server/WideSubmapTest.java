package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import org.junit.jupiter.api.Test;

/**
 * A submap of 10,000 node symbols reported in one request, on a map made by
 * {@code qxw-mapgen --wide 10000}, on the submap "wide-segment". The dispatcher
 * thread stays inside one native call meanwhile, so a local reference kept per symbol would make
 * -Xcheck:jni warn (and CTest fail on the warning).
 */
class WideSubmapTest extends OneSessionTest {
    private static final int NODES = 10_000;

    @Test
    void tenThousandSymbolsAreReportedWithoutKeepingReferences() throws Exception {
        MapDump map = MapDump.of(control);
        int wide = map.submaps.values().stream().filter(s -> "wide-segment".equals(s.get("name")))
                .map(s -> ((Long) s.get("id")).intValue()).findFirst().orElseThrow();
        // Every node, each with its own field values, in the platform's order.
        List<String> log = logOf(() -> assertTrue(client.getSubmapAndSymbols(wide)));
        assertEquals(List.of((long) NODES, (long) NODES), List.of(
                log.stream().filter(e -> e.startsWith("addNodeSymbol(")).count(),
                log.stream().filter(e -> e.startsWith("setQxwdbObjectFieldValues(")).count()));
        assertEquals(control.order("submap " + wide), dispatcher.getSubmap(wide).getSymbols()
                .stream().map(MapSymbol::getSymbolId).toList());
    }
}
