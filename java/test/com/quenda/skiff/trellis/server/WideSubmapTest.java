package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.io.Writer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;

/**
 * A submap of 10,000 node symbols (and 100 connections) reported in one request. The dispatcher
 * thread stays inside one native call meanwhile, so a local reference kept per symbol would make
 * -Xcheck:jni warn (and CTest fail on the warning). The map is written to QXW_MAP before the
 * session opens.
 */
class WideSubmapTest {
    private static final int NODES = 10_000;
    private static final int CONNECTIONS = 100;
    private static TestSession session;
    private static EmulatorControl control;

    @BeforeAll
    static void startSession() throws Exception {
        writeMap(Path.of(System.getenv("QXW_MAP")));
        session = TestSession.started();
        control = new EmulatorControl();
    }

    @AfterAll
    static void endSession() throws Exception {
        session.end(control);
        control.close();
    }

    /**
     * Root submap 1; submap 2 with node symbols 100000 + i of objects 10000 + i, each with a
     * string, an enumeration, a boolean and an interface list, then the connections.
     */
    private static void writeMap(Path path) throws IOException {
        try (Writer out = Files.newBufferedWriter(path)) {
            out.write("{\"map\": {\"name\": \"wide\", \"permissions\": 2, \"rootSubmap\": 1},\n"
                    + "\"submaps\": [{\"id\": 1, \"name\": \"Root\"},"
                    + " {\"id\": 2, \"name\": \"wide\"}],\n"
                    + "\"objects\": [\n");
            for (int i = 0; i < NODES + CONNECTIONS; i++) {
                out.write(i < NODES
                        ? String.format("{\"id\": %d, \"fields\": {"
                                + "\"Selection Name\": \"node-%d\", \"vendor\": %d,"
                                + " \"isSNMPSupported\": %b, \"TopM Interface List\": ["
                                + "\"1 le0 10.%d.%d.1 255.255.255.0 08:00:2b:00:00:01\","
                                + " \"2 le1 10.%d.%d.2 255.255.255.0 08:00:2b:00:00:02\"]}},\n",
                                10_000 + i, i, i % 6, i % 2 == 0, i / 256, i % 256, i / 256,
                                i % 256)
                        : String.format("{\"id\": %d},\n", 10_000 + i));
            }
            out.write("{\"id\": 1}],\n\"symbols\": [\n");
            for (int i = 0; i < NODES; i++) {
                out.write(String.format("{\"id\": %d, \"submap\": 2, \"object\": %d, \"label\":"
                        + " \"node-%d\", \"type\": \"Computer:Workstation\", \"variety\": 1,"
                        + " \"plane\": 2, \"placement\": 1, \"x\": %d, \"y\": %d},\n",
                        100_000 + i, 10_000 + i, i, i % 100, i / 100));
            }
            for (int i = 0; i < CONNECTIONS; i++) {
                out.write(String.format("{\"id\": %d, \"submap\": 2, \"object\": %d, \"type\":"
                        + " \"Connection:IP\", \"variety\": 2, \"plane\": 2, \"endpoint1\": %d,"
                        + " \"endpoint2\": %d},\n", 200_000 + i, 10_000 + NODES + i, 100_000 + i,
                        100_001 + i));
            }
            out.write("{\"id\": 1, \"submap\": 1, \"object\": 1, \"type\": \"Network:Wide\","
                    + " \"variety\": 1, \"plane\": 2}]}\n");
        }
    }

    private static long count(List<String> log, String prefix) {
        return log.stream().filter(entry -> entry.startsWith(prefix)).count();
    }

    @Test
    void tenThousandSymbolsAreReportedWithoutKeepingReferences() throws Exception {
        int before = session.dispatcher.log().size();
        assertTrue(session.client.getSubmapAndSymbols(2));
        List<String> log = session.dispatcher.log();
        log = log.subList(before, log.size());
        assertEquals(NODES, count(log, "addNodeSymbol("));
        assertEquals(NODES, count(log, "setQxwdbObjectFieldValues("));
        assertEquals(CONNECTIONS, count(log, "addConnectionSymbol("));
        // In the platform's order to the last, each with its own field values.
        List<MapSymbol> symbols = session.dispatcher.getSubmap(2).getSymbols();
        assertEquals(100_000 + NODES - 1, symbols.get(NODES - 1).getSymbolId());
        assertEquals("10.39.15.1\n10.39.15.2",
                session.dispatcher.getObjectFieldValues(19_999).getProperty("IP Address"));
    }
}
