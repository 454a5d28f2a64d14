package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.Set;
import org.junit.jupiter.api.MethodOrderer;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;

/**
 * Networks grouped under their locations on locations.json: the "IP Internet" submap (2) shows
 * location A (2) and network N0 (10); A's submap 3 shows location B (3); B's submap 4 shows
 * networks N1 (11) and N2 (12) and segment S (13), whose submap 5 shows network N3 (14).
 */
@TestMethodOrder(MethodOrderer.OrderAnnotation.class)
@OneSessionTest.Connect(invokeJavaCallbacksForScopingUpdates = true,
        setLocationIDFieldInCallbacks = true, syncLocationIDFieldInSubLocations = true,
        syncLocationIDFieldInNetworks = true)
class LocationScopingTest extends OneSessionTest {
    private static long locationId(long objectId) throws Exception {
        Object value = MapDump.of(control).objects.get(objectId).get("fields");
        Object id = ((Map<?, ?>) value).get("Location ID");
        return id == null ? -1 : (Long) id;
    }

    /** Creates a network object and one symbol of it; the callbacks that the symbol made. */
    private static List<String> networkSymbol(int objectId, int submapId, int plane, String type)
            throws Exception {
        control.ok("create-object {\"id\": " + objectId + ", \"fields\": {\"isNetwork\": true}}");
        return callbacks("create-symbol {\"submap\": " + submapId + ", \"object\": " + objectId
                + ", \"type\": \"" + type + "\", \"variety\": 1, \"plane\": " + plane
                + ", \"apps\": [\"IP Map\"]}").stream()
                .filter(entry -> entry.startsWith("scoping")).toList();
    }

    @Test
    @Order(1)
    void eachNetworkComesWithTheLocationsAboveItFromOneWalkPerSubmap() throws Exception {
        // Tracking is off until the map has been adopted by this request.
        assertEquals(List.of(), networkSymbol(20, 4, 2, "Network:IP"));
        assertEquals(-1, locationId(20));

        control.ok("reset-counters");
        Map<Integer, Set<Integer>> expected = Map.of(11, Set.of(2, 3), 12, Set.of(2, 3),
                20, Set.of(2, 3));
        assertEquals(expected, client.getLocationScopingInfo());
        assertEquals(expected, dispatcher.getNetworkLocations());
        String counters = control.ok("counters");
        // Once each: the root submap (for "IP Internet" itself), submaps 4 and 3 on the way up
        // from B, 5 for N3; the six networks' symbols and those of B, A and S.
        assertEquals(4, EmulatorControl.calls(counters, "QXwGetSubmapInfo"));
        assertEquals(6 + 3, EmulatorControl.calls(counters, "QXwGetSymbolsByObject"));
    }

    @Test
    @Order(2)
    void afterwardsNewNetworkSymbolsAreReportedAndTheirLocationIDIsSet() throws Exception {
        record Case(int objectId, int submapId, int plane, String type, List<String> callbacks,
                long locationId) {}
        List<Case> cases = List.of(
                new Case(21, 4, 2, "Network:IP", List.of("scopingNetworkCreatedCB(21, "), 3),
                new Case(22, 2, 2, "Network:IP", List.of("scopingNetworkCreatedCB(22, [])"), 1),
                // On the user plane, with no other place: reported, but no Location ID.
                new Case(23, 3, 4, "Network:IP", List.of("scopingNetworkCreatedCB(23, [2])"),
                        -1),
                new Case(24, 4, 2, "Computer:Workstation", List.of(), -1),
                new Case(25, 5, 2, "Network:IP", List.of("scopingNetworkCreatedCB(25, [])"), 13));
        for (Case c : cases) {
            List<String> made = networkSymbol(c.objectId(), c.submapId(), c.plane(), c.type());
            assertEquals(c.callbacks().size(), made.size(), made.toString());
            for (int i = 0; i < made.size(); i++) {
                assertEquals(true, made.get(i).startsWith(c.callbacks().get(i)), made.get(i));
            }
            assertEquals(c.locationId(), locationId(c.objectId()), "object " + c.objectId());
        }
        assertEquals(Set.of(2, 3), dispatcher.getNetworkLocations().get(21));
        // The verbose line of the report has no line end of its own.
        assertEquals("SymbolsCreatedCB\n"
                + "ScopingCache::GetChildSubmapId determined that the submapId is 2\n"
                + "ScopingNetworkCreatedCB 26 0", verbose(() -> networkSymbol(26, 2, 2,
                        "Network:IP")));
        // A user-plane symbol of a network that has an application-plane place is not reported.
        assertEquals(List.of(), callbacks("create-symbol {\"submap\": 3, \"object\": 11,"
                + " \"type\": \"Network:IP\", \"variety\": 1, \"plane\": 4}").stream()
                .filter(entry -> entry.startsWith("scoping")).toList());
    }

    @Test
    @Order(3)
    void aMapOpenedForWritingIsSynchronizedAndAReadOnlyOneIsNotTracked() throws Exception {
        Path maps = Path.of(System.getenv("SKIFF_TEST_MAPS"));
        String stderr = TestNative.captureStderr(
                () -> control.ok("open-map " + maps.resolve("locations.json")));
        assertEquals("", stderr);
        for (long[] objectAndId : new long[][] {{1, 0}, {2, 1}, {3, 2}, {10, 1}, {11, 3},
                {12, 3}, {14, 13}}) {
            assertEquals(objectAndId[1], locationId(objectAndId[0]), "object " + objectAndId[0]);
        }

        Path readOnly = Files.createTempFile("locations-read-only", ".json");
        try {
            Files.writeString(readOnly, Files.readString(maps.resolve("locations.json"))
                    .replace("\"permissions\": 2", "\"permissions\": 1"));
            control.ok("open-map " + readOnly);
            client.getLocationScopingInfo();
            assertEquals(List.of(), networkSymbol(30, 4, 2, "Network:IP"));
            assertEquals(-1, locationId(30));
        } finally {
            Files.delete(readOnly);
        }
    }
}
