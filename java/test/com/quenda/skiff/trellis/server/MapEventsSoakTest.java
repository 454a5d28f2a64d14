package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.Set;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicReference;
import java.util.stream.Collectors;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;

/**
 * Load and soak on the default map: sixteen client threads make every kind of request while the
 * emulator makes every kind of map event, for SKIFF_SOAK_SECONDS (3 by default). Afterwards every
 * request got its own answer, the mirror equals the platform's map on every loaded submap, and
 * the process holds as many descriptors, and about as much native heap, as halfway through. Two
 * of every three submaps are loaded; the clients ask again only for half of those, so the others
 * show what the events alone made of them.
 */
class MapEventsSoakTest extends OneSessionTest {
    private static final int CLIENTS = 16;
    private static final int COMMANDS_PER_ROUND = 100;
    private static final long SECONDS =
            Long.parseLong(System.getenv().getOrDefault("SKIFF_SOAK_SECONDS", "3"));

    private final AtomicBoolean stop = new AtomicBoolean();
    private final AtomicReference<String> failure = new AtomicReference<>();
    private final int[] rowsAsked = new int[CLIENTS];
    private List<String> names;  // the selection names of the map as loaded
    private List<Long> askedAgain;  // the loaded submaps the clients ask for again

    @Test
    void theMirrorFollowsEveryChangeWhileSixteenClientsAskForEverything() throws Exception {
        MapDump initial = MapDump.of(control);
        List<Long> loaded = new ArrayList<>();
        askedAgain = new ArrayList<>();
        for (long submapId : initial.submaps.keySet()) {
            if (submapId % 3 == 0) continue;
            assertTrue(client.getSubmapAndSymbols((int) submapId));
            loaded.add(submapId);
            if (loaded.size() % 2 == 0) askedAgain.add(submapId);
        }
        names = initial.objects.values().stream()
                .map(o -> (String) ((Map<?, ?>) o.get("fields")).get("Selection Name"))
                .filter(name -> name != null).toList();
        List<Thread> clients = clients(Integer.MAX_VALUE);
        Random random = new Random(42);
        int accepted = 0;
        int sent = 0;
        long descriptorsHalfway = -1;
        List<Long> created = new ArrayList<>();
        try {
            long start = System.nanoTime();
            for (int nextId = 1_000_000; sent < 20 * COMMANDS_PER_ROUND
                    || System.nanoTime() - start < SECONDS * 1_000_000_000L; ) {
                if (descriptorsHalfway < 0 && System.nanoTime() - start >= SECONDS * 500_000_000L) {
                    descriptorsHalfway = descriptors();
                }
                MapDump map = MapDump.of(control);
                List<Map<String, Object>> symbols = new ArrayList<>(map.symbols.values());
                List<Long> objects = new ArrayList<>(map.objects.keySet());
                Set<Object> parents = map.objects.values().stream()
                        .filter(o -> (Long) o.get("childSubmap") != 0).map(o -> o.get("id"))
                        .collect(Collectors.toSet());
                for (int round = 0; round < COMMANDS_PER_ROUND; ) {
                    String command = random.nextInt(10) == 0
                            ? entityCommand(created, random, nextId)
                            : command(symbols, objects, parents, loaded, random, nextId);
                    if (command == null) continue;
                    if (command.startsWith("create")) nextId++;
                    if (control.command(command).contains("\"ok\":true")) {
                        accepted++;
                        if (command.startsWith("create-object")) created.add(nextId - 1L);
                    }
                    round++;
                    sent++;
                }
            }
            control.ok("sync");
        } finally {
            stop.set(true);
            for (Thread thread : clients) thread.join();
        }
        assertNull(failure.get());
        // Refused: a command naming a symbol that an earlier one of its round deleted, or making
        // a loop of predecessors.
        assertTrue(accepted > sent * 3 / 4, accepted + " of " + sent + " accepted");
        assertEquals(descriptorsHalfway, descriptors(), "descriptors");
        // The map no longer changes: more requests leave as many platform records unreleased,
        // and about as much native heap in use (the allocator's count wanders by some MiB either
        // way on a busy machine: the records count is the exact leak check), as they found.
        long recordsBefore = control.records();
        long heapBefore = TestNative.nativeHeapInUse();
        for (Thread thread : clients(rowsAsked[0] + 200)) thread.join();
        long heapGrowth = TestNative.nativeHeapInUse() - heapBefore;
        assertEquals(recordsBefore, control.records(), "platform records not released");
        assertNull(failure.get());
        assertTrue(heapGrowth < 16 << 20, heapGrowth + " bytes more native heap");
        for (int t = 0; t < CLIENTS; t++) {
            String symbol = "getSymbolRowData(" + (Integer.MIN_VALUE + t) + ", ";
            assertEquals(IntStream.range(0, rowsAsked[t]).mapToObj(i -> symbol + i + ", " + i + ")")
                    .toList(), dispatcher.log(symbol), "client " + t + "'s rows, once, in order");
        }

        // The symbols are compared by id: the order of a submap's symbols in the mirror is the
        // order of its last report, then of the events that made symbols since (the submap
        // reports check that order).
        MapDump map = MapDump.of(control);
        int compared = 0;
        for (long submapId : loaded) {
            Submap submap = dispatcher.getSubmap((int) submapId);
            if (!map.submaps.containsKey(submapId)) {
                // Where deletions cascade, a deleted connection may take a submap with it.
                assertNull(submap, "submap " + submapId + ", deleted");
                continue;
            }
            assertNotNull(submap, "submap " + submapId);
            assertEquals(map.submaps.get(submapId).get("layoutOn"), submap.isAutoLayout(),
                    "automatic layout of submap " + submapId);
            List<List<Object>> expected = map.symbolsOn(submapId);
            assertEquals(expected, submap.getSymbols().stream().map(MapDump::describe)
                    .sorted(MapDump.BY_ID).toList(),
                    "submap " + submapId);
            compared += expected.size();
        }
        // The events left enough of the loaded submaps to compare.
        assertTrue(compared >= 100, compared + " symbols compared");
    }

    /**
     * Starts the clients, each making requests until the soak stops or it has asked for
     * `rowsEach` row data in all.
     */
    private List<Thread> clients(int rowsEach) {
        stop.set(false);
        List<Thread> clients = new ArrayList<>();
        for (int t = 0; t < CLIENTS; t++) {
            final int id = t;
            String name = names.get(t % names.size());
            clients.add(new Thread(() -> {
                Random random = new Random(id);
                for (int i = 0; !stop.get() && rowsAsked[id] < rowsEach; i++) {
                    String wrong = request(id, i, name, random);
                    if (wrong != null) failure.compareAndSet(null, "client " + id + ": " + wrong);
                }
            }, "client " + t));
        }
        clients.forEach(Thread::start);
        return clients;
    }

    /**
     * Client `id`'s request number `i`, of each kind in turn, and what was wrong with its answer
     * (null: nothing). Each client asks for its own symbol's row data, and searches for its own
     * object's name: an answer meant for another client shows.
     */
    private String request(int id, int i, String name, Random random) {
        switch (i % 6) {
            case 0:
                // A submap the platform has deleted is not reported, and has left the mirror
                // before the answer: the events that came before a request are handled first.
                long submapId = askedAgain.get(random.nextInt(askedAgain.size()));
                return client.getSubmapAndSymbols((int) submapId)
                        || dispatcher.getSubmap((int) submapId) == null ? null
                        : "submap " + submapId + " was not reported";
            case 1:
                int row = rowsAsked[id]++;
                return client.getSymbolRowData(Integer.MIN_VALUE + id, row, row) ? null
                        : "no row data";
            case 2:
                return client.getMatchingSymbols(FoundSymbol.Category.OBJECTNAME,
                        FoundSymbol.MatchType.MATCH_EXACTLY, name).stream()
                        .filter(hit -> !hit.objectSelectionName().equals(name))
                        .map(hit -> "search for " + name + " found " + hit).findFirst()
                        .orElse(null);
            case 3:
                return client.getNodeParentPath("host-1.campus.example", "") != null ? null
                        : "no parent path";
            case 4:
                return client.getLocationScopingInfo() != null ? null : "no location scoping";
            default:
                int[] objects = {1 + random.nextInt(20)};
                if (random.nextBoolean()) {
                    client.setAcknowledgeState(objects, random.nextBoolean());
                } else {
                    client.setManageState(objects, random.nextBoolean());
                }
                return null;
        }
    }

    /** The number of descriptors the process holds. */
    private static long descriptors() throws Exception {
        try (var entries = Files.list(Path.of("/proc/self/fd"))) {
            return entries.count();
        }
    }

    /**
     * A command that makes or removes whole objects and submaps: a new object; a child submap of
     * an object made earlier; an object made earlier deleted with its symbols.
     */
    private static String entityCommand(List<Long> created, Random random, int nextId) {
        if (created.isEmpty() || random.nextInt(3) == 0) {
            return "create-object {\"id\": " + nextId + ", \"fields\": {\"Selection Name\": \"soak "
                    + nextId + "\"}}";
        }
        long objectId = created.get(random.nextInt(created.size()));
        if (random.nextBoolean()) {
            return "create-submap {\"id\": " + nextId + ", \"name\": \"soak " + nextId
                    + "\", \"parentObject\": " + objectId + "}";
        }
        created.remove(objectId);
        return "delete-objects " + objectId;
    }

    /**
     * A random command on a symbol of the map as dumped at the start of the round, or none; a
     * predecessor or an endpoint is another symbol of its submap. A symbol whose object is one of
     * the `parents` (those with a child submap) is not deleted: where deletions cascade, that
     * would take the object's whole part of the map with it.
     */
    private static String command(List<Map<String, Object>> symbols, List<Long> objects,
            Set<Object> parents, List<Long> loaded, Random random, int nextId) {
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
                : kind >= 85 && kind < 90 && !parents.contains(symbol.get("object"))
                        ? "delete-symbols " + id
                : kind >= 90 ? "autolayout " + submapId + " " + random.nextInt(2) : null;
    }
}
