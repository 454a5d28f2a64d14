package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.Set;
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
    private static final int ROUNDS = 40;
    private static final int COMMANDS_PER_ROUND = 200;

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
            Random random = new Random(7);
            while (!stop.get()) {
                long submapId = askedAgain.get(random.nextInt(askedAgain.size()));
                if (!client.getSubmapAndSymbols((int) submapId)) {
                    failure.compareAndSet(null, "submap " + submapId + " was not reported");
                }
                requests[0]++;
            }
        }, "requester");
        requester.start();
        Commands commands = new Commands(new Random(42), loaded);
        try {
            for (int round = 0; round < ROUNDS; round++) {
                control.okAll(commands.next(MapDump.of(control), COMMANDS_PER_ROUND));
            }
            control.ok("sync");
        } finally {
            stop.set(true);
            requester.join();
        }
        assertNull(failure.get());
        assertTrue(requests[0] > 0);

        MapDump map = MapDump.of(control);
        for (long submapId : loaded) {
            Submap submap = dispatcher.getSubmap((int) submapId);
            assertNotNull(submap, "submap " + submapId);
            assertEquals(map.submaps.get(submapId).get("layoutOn"), submap.isAutoLayout(),
                    "automatic layout of submap " + submapId);
            List<String> expected = map.symbols.values().stream()
                    .filter(symbol -> (Long) symbol.get("submap") == submapId)
                    .map(MapEventsSoakTest::describe).toList();
            List<String> mirrored = submap.getSymbols().stream()
                    .map(MapEventsSoakTest::describe).toList();
            assertEquals(expected, mirrored, "submap " + submapId);
        }
    }

    /** Id, hidden flag, status and position as a submap report gives them. */
    private static String describe(Map<String, Object> symbol) {
        long placement = symbol.containsKey("placement") ? (Long) symbol.get("placement") : -1;
        return describe((Long) symbol.get("id"), (Boolean) symbol.get("hidden"),
                (Long) symbol.get("status"), placement, (Long) symbol.getOrDefault("x", 0L),
                (Long) symbol.getOrDefault("y", 0L), (Long) symbol.getOrDefault("pred", 0L));
    }

    private static String describe(MapSymbol symbol) {
        if (!(symbol instanceof MapNodeSymbol node)) {
            return describe(symbol.getSymbolId(), symbol.isHidden(), symbol.getStatus(), -1, 0, 0,
                    0);
        }
        return describe(node.getSymbolId(), node.isHidden(), node.getStatus(), node.getPlacement(),
                node.getX(), node.getY(), node.getPredSymbolId());
    }

    private static String describe(long id, boolean hidden, long status, long placement, long x,
            long y, long pred) {
        String position = placement == MapNodeSymbol.PLACED_AT_COORDINATES ? " at " + x + "," + y
                : placement == MapNodeSymbol.PLACED_AFTER_PREDECESSOR ? " after " + pred
                : placement < 0 ? "" : " placement " + placement;
        return id + (hidden ? " hidden" : " visible") + " status " + status + position;
    }

    /**
     * Random commands that the emulator accepts on the map as dumped: none names a symbol that an
     * earlier command of the same batch deleted, or one that it created.
     */
    private static final class Commands {
        private final Random random;
        private final List<Long> loaded;
        private long nextSymbolId = 1_000_000;

        Commands(Random random, List<Long> loaded) {
            this.random = random;
            this.loaded = loaded;
        }

        List<String> next(MapDump map, int count) {
            List<Map<String, Object>> symbols = new ArrayList<>(map.symbols.values());
            List<Long> objects = new ArrayList<>(map.objects.keySet());
            Set<Long> gone = new HashSet<>();
            Set<Long> movedAfter = new HashSet<>();
            List<String> batch = new ArrayList<>();
            while (batch.size() < count) {
                Map<String, Object> symbol = symbols.get(random.nextInt(symbols.size()));
                long id = (Long) symbol.get("id");
                long submapId = (Long) symbol.get("submap");
                if (gone.contains(id)) continue;
                // Another symbol of the same submap, for a predecessor or an endpoint.
                Map<String, Object> other = symbols.get(random.nextInt(symbols.size()));
                long otherId = (Long) other.get("id");
                boolean hasOther = (Long) other.get("submap") == submapId && otherId != id
                        && !gone.contains(otherId);
                int kind = random.nextInt(100);
                if (kind < 15) {
                    batch.add("hide " + id);
                } else if (kind < 30) {
                    batch.add("unhide " + id);
                } else if (kind < 42) {
                    batch.add("status " + random.nextInt(5) + " " + id);
                } else if (kind < 55) {
                    batch.add("move " + id + " 1 " + random.nextInt(500) + " "
                            + random.nextInt(500));
                } else if (kind < 65 && hasOther && canLead(other, movedAfter)) {
                    batch.add("move " + id + " 2 " + otherId);
                    movedAfter.add(id);
                } else if (kind < 70) {
                    batch.add("normalize " + id + " " + random.nextInt(2));
                } else if (kind < 80 && loaded.contains(submapId)) {
                    long object = objects.get(random.nextInt(objects.size()));
                    batch.add("create-symbol {\"id\": " + nextSymbolId++ + ", \"submap\": "
                            + submapId + ", \"object\": " + object + ", \"label\": \"new\","
                            + " \"variety\": 1, \"plane\": 2, \"placement\": 1, \"x\": "
                            + random.nextInt(500) + ", \"y\": " + random.nextInt(500) + "}");
                } else if (kind < 85 && hasOther) {
                    batch.add("create-symbol {\"id\": " + nextSymbolId++ + ", \"submap\": "
                            + submapId + ", \"object\": " + symbol.get("object")
                            + ", \"variety\": 2, \"plane\": 2, \"endpoint1\": " + id
                            + ", \"endpoint2\": " + otherId + "}");
                } else if (kind >= 85 && kind < 94) {
                    batch.add("delete-symbols " + id);
                    // Its connections go with it.
                    gone.add(id);
                    for (Map<String, Object> connection : symbols) {
                        if (id == (Long) connection.getOrDefault("endpoint1", 0L)
                                || id == (Long) connection.getOrDefault("endpoint2", 0L)) {
                            gone.add((Long) connection.get("id"));
                        }
                    }
                } else if (kind >= 94) {
                    batch.add("autolayout " + submapId + " " + random.nextInt(2));
                }
            }
            return batch;
        }

        /**
         * Whether a symbol may lead another: an icon that followed no symbol in the dump and was
         * not placed after one in this batch, so that no move can close a loop.
         */
        private static boolean canLead(Map<String, Object> symbol, Set<Long> movedAfter) {
            return (Long) symbol.get("variety") == 1 && (Long) symbol.getOrDefault("pred", 0L) == 0
                    && !movedAfter.contains((Long) symbol.get("id"));
        }
    }
}
