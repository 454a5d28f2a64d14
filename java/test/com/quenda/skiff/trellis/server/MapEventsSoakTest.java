package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicReference;
import org.junit.jupiter.api.Test;

/**
 * Thousands of mixed map events on the default map while a client thread keeps asking for
 * submaps: afterwards the mirror equals the platform's map on every loaded submap. Two of every
 * three submaps are loaded; the client asks again only for half of those, so the others show
 * what the events alone made of them.
 */
class MapEventsSoakTest extends OneSessionTest {
    private static final int ROUNDS = 80;
    private static final int COMMANDS_PER_ROUND = 100;

    @Test
    void theMirrorFollowsThousandsOfChangesWhileSubmapsAreAskedFor() throws Exception {
        List<Long> loaded = new ArrayList<>();
        List<Long> askedAgain = new ArrayList<>();
        for (long submapId : MapDump.of(control).submaps.keySet()) {
            if (submapId % 3 == 0) continue;
            assertTrue(client.getSubmapAndSymbols((int) submapId));
            loaded.add(submapId);
            if (loaded.size() % 2 == 0) askedAgain.add(submapId);
        }
        AtomicBoolean stop = new AtomicBoolean();
        AtomicReference<String> failure = new AtomicReference<>();
        int[] requests = new int[1];
        Thread requester = new Thread(() -> {
            for (Random random = new Random(7); !stop.get(); requests[0]++) {
                long submapId = askedAgain.get(random.nextInt(askedAgain.size()));
                if (!client.getSubmapAndSymbols((int) submapId)) {
                    failure.compareAndSet(null, "submap " + submapId + " was not reported");
                }
            }
        }, "requester");
        requester.start();
        Random random = new Random(42);
        int accepted = 0;
        try {
            for (int round = 0, nextId = 1_000_000; round < ROUNDS; round++) {
                MapDump map = MapDump.of(control);
                List<Map<String, Object>> symbols = new ArrayList<>(map.symbols.values());
                List<Long> objects = new ArrayList<>(map.objects.keySet());
                for (int sent = 0; sent < COMMANDS_PER_ROUND; ) {
                    String command = command(symbols, objects, loaded, random, nextId);
                    if (command == null) continue;
                    if (command.startsWith("create")) nextId++;
                    if (control.command(command).contains("\"ok\":true")) accepted++;
                    sent++;
                }
            }
            control.ok("sync");
        } finally {
            stop.set(true);
            requester.join();
        }
        assertNull(failure.get());
        assertTrue(requests[0] > 0);
        // Refused: a command naming a symbol that an earlier one of its round deleted, or making
        // a loop of predecessors.
        assertTrue(accepted > ROUNDS * COMMANDS_PER_ROUND * 3 / 4, accepted + " accepted");

        MapDump map = MapDump.of(control);
        int compared = 0;
        for (long submapId : loaded) {
            Submap submap = dispatcher.getSubmap((int) submapId);
            assertNotNull(submap, "submap " + submapId);
            assertEquals(map.submaps.get(submapId).get("layoutOn"), submap.isAutoLayout(),
                    "automatic layout of submap " + submapId);
            List<List<Object>> expected = map.symbols.values().stream()
                    .filter(symbol -> (Long) symbol.get("submap") == submapId)
                    .map(MapEventsSoakTest::describe).toList();
            assertEquals(expected, submap.getSymbols().stream()
                    .map(MapEventsSoakTest::describe).toList(), "submap " + submapId);
            compared += expected.size();
        }
        // The events left enough of the loaded submaps to compare.
        assertTrue(compared >= 100, compared + " symbols compared");
    }

    /**
     * Id, hidden flag, status and position (placement, x, y, predecessor) as the mirror keeps
     * them: coordinates only for placement 1, a predecessor only for placement 2.
     */
    private static List<Object> describe(Map<String, Object> s) {
        long placement = (Long) s.getOrDefault("placement", -1L);
        boolean at = placement == MapNodeSymbol.PLACED_AT_COORDINATES;
        return List.of(s.get("id"), s.get("hidden"), s.get("status"), placement,
                at ? s.getOrDefault("x", 0L) : 0L, at ? s.getOrDefault("y", 0L) : 0L,
                placement == MapNodeSymbol.PLACED_AFTER_PREDECESSOR ? s.get("pred") : 0L);
    }

    private static List<Object> describe(MapSymbol s) {
        MapNodeSymbol n = s instanceof MapNodeSymbol node ? node : null;
        return List.of((long) s.getSymbolId(), s.isHidden(), (long) s.getStatus(),
                n == null ? -1L : (long) n.getPlacement(), n == null ? 0L : (long) n.getX(),
                n == null ? 0L : (long) n.getY(), n == null ? 0L : (long) n.getPredSymbolId());
    }

    /**
     * A random command on a symbol of the map as dumped at the start of the round, or none; a
     * predecessor or an endpoint is another symbol of its submap.
     */
    private static String command(List<Map<String, Object>> symbols, List<Long> objects,
            List<Long> loaded, Random random, int nextId) {
        Map<String, Object> symbol = symbols.get(random.nextInt(symbols.size()));
        Map<String, Object> other = symbols.get(random.nextInt(symbols.size()));
        Object id = symbol.get("id");
        Object otherId = other.get("id");
        Object submapId = symbol.get("submap");
        boolean hasOther = other.get("submap").equals(submapId) && !otherId.equals(id);
        int kind = random.nextInt(100);
        return kind < 15 ? "hide " + id
                : kind < 30 ? "unhide " + id
                : kind < 42 ? "status " + random.nextInt(5) + " " + id
                : kind < 55 ? "move " + id + " 1 " + random.nextInt(500) + " " + random.nextInt(500)
                : kind < 65 && hasOther && (Long) other.get("variety") == 1
                        ? "move " + id + " 2 " + otherId
                : kind < 70 ? "normalize " + id + " " + random.nextInt(2)
                : kind < 80 && loaded.contains(submapId) ? "create-symbol {\"id\": " + nextId
                        + ", \"submap\": " + submapId + ", \"object\": "
                        + objects.get(random.nextInt(objects.size())) + ", \"label\": \"new\","
                        + " \"variety\": 1, \"plane\": 2, \"placement\": 1, \"x\": "
                        + random.nextInt(500) + ", \"y\": " + random.nextInt(500) + "}"
                : kind < 85 && hasOther ? "create-symbol {\"id\": " + nextId + ", \"submap\": "
                        + submapId + ", \"object\": " + symbol.get("object") + ", \"variety\": 2,"
                        + " \"plane\": 2, \"endpoint1\": " + id + ", \"endpoint2\": " + otherId
                        + "}"
                : kind >= 85 && kind < 94 ? "delete-symbols " + id
                : kind >= 94 ? "autolayout " + submapId + " " + random.nextInt(2) : null;
    }
}
