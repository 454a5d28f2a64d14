package com.quenda.skiff.trellis.server;

import static com.quenda.skiff.trellis.server.FoundSymbol.Category.HOSTNAME;
import static com.quenda.skiff.trellis.server.FoundSymbol.Category.IPADDRESS;
import static com.quenda.skiff.trellis.server.FoundSymbol.Category.OBJECTNAME;
import static com.quenda.skiff.trellis.server.FoundSymbol.MatchType.MATCH_EXACTLY;
import static com.quenda.skiff.trellis.server.FoundSymbol.MatchType.MATCH_REGEXP;
import static com.quenda.skiff.trellis.server.FoundSymbol.MatchType.MATCH_WILDCARD;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.IOException;
import java.util.ArrayList;
import java.util.Comparator;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;

/**
 * Searches on search.json. Site A (submap 3) shows network 10.1.0 (its submap 5 holds rtr1 and
 * an unnamed node), network 10.11.5 (also on Site B), Annex on the user plane only, the
 * meta-connection "trunk" into submap 7 and "elsewhere" of another application; Site B (submap
 * 4) shows rtr1, host-x and Depot; 10.11.5's own submap (12) holds two user-plane symbols of
 * twin; Loop A and Loop B show each other.
 */
class SearchTest extends OneSessionTest {
    /** The hits of a search, each as "symbol submap-name selection-name". */
    private static List<String> hits(FoundSymbol.Category category,
            FoundSymbol.MatchType matchType, String query, String... roots) {
        return client.getMatchingSymbols(category, matchType, query, roots).stream()
                .map(SearchTest::show).toList();
    }

    private static String show(FoundSymbol s) {
        return s.symbolId() + " " + s.submapName() + " " + s.objectSelectionName();
    }

    /**
     * Hits, each starting with its symbol id, in the platform's order: the objects as a query
     * serves them, each object's symbols as the platform lists them.
     */
    private static List<String> inPlatformOrder(List<String> hits) throws IOException {
        MapDump map = MapDump.of(control);
        List<Integer> objects = control.order("objects");
        Map<Integer, Integer> rank = new HashMap<>();
        for (String hit : hits) {
            int symbolId = Integer.parseInt(hit.substring(0, hit.indexOf(' ')));
            int objectId = ((Long) map.symbols.get((long) symbolId).get("object")).intValue();
            rank.put(symbolId, objects.indexOf(objectId) * 10_000
                    + control.order("object " + objectId).indexOf(symbolId));
        }
        return hits.stream().sorted(Comparator.comparing(
                hit -> rank.get(Integer.parseInt(hit.substring(0, hit.indexOf(' ')))))).toList();
    }

    @Test
    void findsEverySymbolOfEachMatchingObjectWithinTheScope() throws Exception {
        record Case(FoundSymbol.Category category, FoundSymbol.MatchType matchType, String query,
                List<String> roots, List<String> hits) {}
        List<Case> cases = List.of(
                // Each case's hits as the map file makes them; they are expected in the
                // platform's order. The wildcard's dot keeps its meaning: 10.1.* finds 10.11.5.0
                // and 10.11.5.7.
                new Case(IPADDRESS, MATCH_WILDCARD, "10.1.*", List.of(), List.of(
                        "300 Site A 10.1.0", "304 Site A 10.11.5", "400 Site B 10.11.5",
                        "401 Site B rtr1", "500 Net 10.1.0 rtr1", "402 Site B host-x",
                        "501 Net 10.1.0 ")),
                new Case(OBJECTNAME, MATCH_REGEXP, "tr", List.of(), List.of(
                        "302 Site A trunk", "401 Site B rtr1", "500 Net 10.1.0 rtr1",
                        "700 Trunk trunk-host")),
                new Case(HOSTNAME, MATCH_WILDCARD, "*.example", List.of(), List.of(
                        "401 Site B rtr1", "500 Net 10.1.0 rtr1", "402 Site B host-x")),
                // Within Site A: its own symbols (a user-plane one too), through network
                // 10.1.0 and through the meta-connection; not Site B, not Annex (shown only on
                // the user plane), not another application's submap, not the loop.
                new Case(OBJECTNAME, MATCH_REGEXP, ".", List.of("Site A"), List.of(
                        "300 Site A 10.1.0", "304 Site A 10.11.5", "301 Site A Annex",
                        "302 Site A trunk", "303 Site A elsewhere", "500 Net 10.1.0 rtr1",
                        "502 Net 10.1.0 link-1", "700 Trunk trunk-host",
                        "1201 Net 10.11.5 twin", "1202 Net 10.11.5 twin")),
                new Case(OBJECTNAME, MATCH_EXACTLY, "10.11.5", List.of("Site B"),
                        List.of("400 Site B 10.11.5")),
                new Case(OBJECTNAME, MATCH_EXACTLY, "rtr1", List.of("Site B", "Site A"),
                        List.of("401 Site B rtr1", "500 Net 10.1.0 rtr1")));
        for (Case c : cases) {
            assertEquals(inPlatformOrder(c.hits()), hits(c.category(), c.matchType(), c.query(),
                    c.roots().toArray(String[]::new)), c.query() + " within " + c.roots());
        }
        Map<Integer, FoundSymbol> rtr1 = Map.of(
                401, new FoundSymbol("rtr1", "Site B", "rtr1", 10, 401, 4, "Connector:Router", 0),
                500, new FoundSymbol("rtr1", "Net 10.1.0", "rtr1", 10, 500, 5, "Connector:Router",
                        0));
        assertEquals(control.order("object 10").stream().map(rtr1::get).toList(),
                client.getMatchingSymbols(OBJECTNAME, MATCH_EXACTLY, "rtr1"));
    }

    @Test
    void oneSearchOpensTheCollectionServiceOnceAndFetchesEachRecordOnce() throws Exception {
        control.ok("reset-counters");
        assertEquals(10, hits(OBJECTNAME, MATCH_REGEXP, ".", "Site A").size());
        String counters = control.ok("counters");
        for (String function : List.of("skCollectionOpen", "skCollectionEvaluate",
                "skCollectionDone")) {
            assertEquals(1, EmulatorControl.calls(counters, function), function);
        }
        // The 23 named objects, and the 12 submaps once each.
        assertEquals(23, EmulatorControl.calls(counters, "QXwGetSymbolsByObject"));
        assertEquals(12, EmulatorControl.calls(counters, "QXwGetSubmapInfo"));
    }

    @Test
    void aQueryThatCannotBeMadeOrEvaluatedFindsNothing() throws Exception {
        record Case(String failure, int category, String query, long evaluations,
                String stderr, List<String> hits) {}
        List<Case> cases = List.of(
                new Case("", 3, "rtr1", 0, "", List.of()),
                new Case("fail skCollectionOpen 1 1", 0, "rtr1", 0,
                        "Find::Find The call to skCollectionOpen() failed!", List.of()),
                // A hit whose submap cannot be fetched has no submap name.
                new Case("fail QXwGetSubmapInfo 6 1", 0, "host-x", 1, "",
                        List.of("402  host-x")));
        for (Case c : cases) {
            control.ok("reset-counters");
            if (!c.failure().isEmpty()) control.ok(c.failure());
            List<String> found = new ArrayList<>();
            String stderr = TestNative.captureStderr(() -> client.getMatchingSymbols(
                    c.category(), 0, c.query()).forEach(s -> found.add(show(s))));
            assertEquals(c.stderr(), stderr, c.failure());
            assertEquals(c.hits(), found, c.failure());
            assertEquals(c.evaluations(), control.calls("skCollectionEvaluate"), c.failure());
        }
    }
}
