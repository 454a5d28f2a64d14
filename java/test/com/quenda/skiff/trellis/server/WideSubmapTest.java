package com.quenda.skiff.trellis.server;

import static java.util.stream.Collectors.joining;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;

/**
 * A submap of 10,000 node symbols (and 100 connections) reported in one request. The dispatcher
 * thread stays inside one native call meanwhile, so a local reference kept per symbol would make
 * -Xcheck:jni warn (and CTest fail on the warning). The map is written to QXW_MAP before the
 * session opens: root submap 1 alone; on submap 2 node symbols 100000 + i of objects 10000 + i,
 * each with a string, an enumeration, a boolean and an interface list, then the connections.
 */
class WideSubmapTest {
    private static final int NODES = 10_000;
    private static final int CONNECTIONS = 100;

    @Test
    void tenThousandSymbolsAreReportedWithoutKeepingReferences() throws Exception {
        String node = "{\"id\": %d, \"fields\": {\"Selection Name\": \"node-%d\", \"vendor\": %d,"
                + " \"isSNMPSupported\": %b, \"TopM Interface List\": ["
                + "\"1 le0 10.%d.%d.1 255.255.255.0 08:00:2b:00:00:01\","
                + " \"2 le1 10.%d.%d.2 255.255.255.0 08:00:2b:00:00:02\"]}}";
        String objects = IntStream.range(0, NODES + CONNECTIONS).mapToObj(i -> i >= NODES
                ? "{\"id\": " + (10_000 + i) + "}" : String.format(node, 10_000 + i, i, i % 6,
                        i % 2 == 0, i / 256, i % 256, i / 256, i % 256)).collect(joining(",\n"));
        String symbols = IntStream.range(0, NODES + CONNECTIONS).mapToObj(i -> i < NODES
                ? String.format("{\"id\": %d, \"submap\": 2, \"object\": %d, \"label\":"
                        + " \"node-%d\", \"type\": \"Computer:Workstation\", \"variety\": 1,"
                        + " \"plane\": 2, \"placement\": 1, \"x\": %d, \"y\": %d}",
                        100_000 + i, 10_000 + i, i, i % 100, i / 100)
                : String.format("{\"id\": %d, \"submap\": 2, \"object\": %d, \"type\":"
                        + " \"Connection:IP\", \"variety\": 2, \"plane\": 2, \"endpoint1\": %d,"
                        + " \"endpoint2\": %d}", 100_000 + i, 10_000 + i, 100_000 + i - NODES,
                        100_001 + i - NODES)).collect(joining(",\n"));
        Files.writeString(Path.of(System.getenv("QXW_MAP")), "{\"map\": {\"name\": \"wide\","
                + " \"permissions\": 2, \"rootSubmap\": 1}, \"submaps\": [{\"id\": 1, \"name\":"
                + " \"Root\"}, {\"id\": 2, \"name\": \"wide\"}],\n\"objects\": [" + objects
                + "],\n\"symbols\": [" + symbols + "]}\n");
        TestSession session = TestSession.started();
        assertTrue(session.client.getSubmapAndSymbols(2));
        // In the platform's order to the last, each with its own field values.
        record Count(String prefix, int entries) {}
        for (Count c : List.of(new Count("addNodeSymbol(", NODES),
                new Count("setQxwdbObjectFieldValues(", NODES),
                new Count("addConnectionSymbol(", CONNECTIONS))) {
            assertEquals(c.entries(), session.dispatcher.log(c.prefix()).size(), c.prefix());
        }
        List<MapSymbol> symbolList = session.dispatcher.getSubmap(2).getSymbols();
        assertEquals(100_000 + NODES - 1, symbolList.get(NODES - 1).getSymbolId());
        assertEquals("10.39.15.1\n10.39.15.2",
                session.dispatcher.getObjectFieldValues(19_999).getProperty("IP Address"));
        try (EmulatorControl control = new EmulatorControl()) {
            session.end(control);
        }
    }
}
