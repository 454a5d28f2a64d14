package com.quenda.skiff.trellis.bench;

import static com.quenda.skiff.trellis.bench.BenchSupport.append;
import static com.quenda.skiff.trellis.bench.BenchSupport.duration;

import com.quenda.skiff.trellis.bench.BenchSupport.Calls;
import com.quenda.skiff.trellis.bench.BenchSupport.RoundLimits;
import com.quenda.skiff.trellis.bench.BenchSupport.Rounds;
import com.quenda.skiff.trellis.server.FoundSymbol;
import com.quenda.skiff.trellis.server.FoundSymbol.Category;
import com.quenda.skiff.trellis.server.FoundSymbol.MatchType;
import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;

/**
 * Searches on the generated map named by QXW_MAP, each timed beside the collection service
 * alone evaluating the same clause on the same open map, in alternating rounds in this process.
 * The difference is what the library adds: the request, the symbols of each found object, the
 * scope walks of a restricted search and the upcalls that build the result. One search of each
 * kind is then counted: the platform calls it made.
 *
 * <p>Arguments: ORDER MAP_LABEL OBJECTS TIMES_FILE CALLS_FILE SPLIT_FILE [MIN_ROUNDS [BUDGET_MS
 * [MAX_ROUNDS]]]. Each search appends one Markdown row to each file, prefixed by a sort key
 * (search, scope, ORDER) and a tab, so that the rows of several maps can be merged in that
 * order; and one point to its series (see {@link BenchSupport#series}).
 */
public final class SearchBench {
    private record Search(String name, Category category, MatchType matchType, String query) {}

    // Hits that a user would look at: one node by name, the hosts of a few networks by
    // address, every hundredth host by name, and one host in nine by name (these grow with the
    // map).
    private static final Search[] SEARCHES = {
        new Search("exact selection name", Category.OBJECTNAME, MatchType.MATCH_EXACTLY,
                "host-50"),
        new Search("wildcard over addresses", Category.IPADDRESS, MatchType.MATCH_WILDCARD,
                "10.0.12.*"),
        new Search("regex over host names", Category.HOSTNAME, MatchType.MATCH_REGEXP,
                "^host-[0-9]*00[.]"),
        new Search("wildcard over selection names", Category.OBJECTNAME,
                MatchType.MATCH_WILDCARD, "host-1*"),
    };

    // No root objects: every symbol; one top-level location: half the map.
    private static final String[][] SCOPES = {{}, {"Location 1"}};

    // Searches timed once more each for the time Java takes.
    private static final int SPLIT_SEARCHES = 11;

    private static native int collect(int category, int matchType, String query);

    /**
     * The reference dispatcher, timing its own work for each hit: what Java adds to a search
     * beyond the library's upcall.
     */
    private static final class TimedDispatcher extends QxwEventDispatcher {
        long javaNanos;

        @Override
        protected void addFoundSymbolInfo(String symbolLabel, String submapName,
                String objectSelectionName, int objectId, int symbolId, int submapId,
                String symbolType, int symbolStatus) {
            long start = System.nanoTime();
            super.addFoundSymbolInfo(symbolLabel, submapName, objectSelectionName, objectId,
                    symbolId, submapId, symbolType, symbolStatus);
            javaNanos += System.nanoTime() - start;
        }
    }

    private static String scopeName(String[] roots) {
        return roots.length == 0 ? "unrestricted" : String.join(", ", roots);
    }

    public static void main(String[] args) throws Exception {
        int order = Integer.parseInt(args[0]);
        String mapLabel = args[1];
        long mapObjects = Long.parseLong(args[2]);
        Path timesFile = Path.of(args[3]);
        Path callsFile = Path.of(args[4]);
        Path splitFile = Path.of(args[5]);
        RoundLimits limits = RoundLimits.of(args, 6, 21, 2000, 1001);
        System.loadLibrary("skiffsearchbench");
        // The service runs on the same CPU whether the library or the baseline calls it.
        TimedDispatcher dispatcher = new TimedDispatcher();
        QxwInterface client = BenchSupport.connectOnOneCpu("SearchBench", dispatcher);

        for (int s = 0; s < SEARCHES.length; s++) {
            Search search = SEARCHES[s];
            int category = search.category().ordinal();
            int matchType = search.matchType().ordinal();
            int unrestrictedHits = -1;
            for (int c = 0; c < SCOPES.length; c++) {
                String[] roots = SCOPES[c];
                Runnable viaLibrary = () -> client.getMatchingSymbols(search.category(),
                        search.matchType(), search.query(), roots);
                Runnable collectionAlone = () -> collect(category, matchType, search.query());

                // Both sides find what they should before either is timed.
                List<FoundSymbol> found = client.getMatchingSymbols(search.category(),
                        search.matchType(), search.query(), roots);
                int objects = collect(category, matchType, search.query());
                Set<Integer> foundObjects = new HashSet<>();
                for (FoundSymbol f : found) foundObjects.add(f.objectId());
                if (objects <= 0 || found.isEmpty()
                        || (roots.length == 0 && foundObjects.size() != objects)
                        || (roots.length > 0 && found.size() > unrestrictedHits)) {
                    throw new IllegalStateException(String.format(Locale.ROOT,
                            "%s in %s: %d symbols of %d objects, the service found %d",
                            search.name(), scopeName(roots), found.size(), foundObjects.size(),
                            objects));
                }
                if (roots.length == 0) unrestrictedHits = found.size();

                Rounds rounds = new Rounds(viaLibrary, collectionAlone, limits);
                Calls calls = Calls.of(viaLibrary);
                long[] java = new long[SPLIT_SEARCHES];
                for (int i = 0; i < java.length; i++) {
                    dispatcher.javaNanos = 0;
                    viaLibrary.run();
                    java[i] = dispatcher.javaNanos;
                }

                long p50 = rounds.subject(0.50);
                String key = String.format(Locale.ROOT, "%d.%d.%d", s, c, order);
                String what = String.format(Locale.ROOT, "%s `%s`", search.name(), search.query());
                long javaP50 = BenchSupport.percentile(java, java.length, 0.50);
                append(splitFile, key, String.format(Locale.ROOT,
                        "| %s | %s | %s | %,d | %s | %s | %s | %s |", what, scopeName(roots),
                        mapLabel, found.size(), duration(p50), duration(rounds.baseline(0.50)),
                        duration(p50 - rounds.baseline(0.50) - javaP50), duration(javaP50)));
                BenchSupport.series(String.format(Locale.ROOT, "search-%d-%d", s, c),
                        String.format(Locale.ROOT, "search: %s, %s", what.replace("`", "\""),
                                scopeName(roots)), "objects in the map", mapObjects, rounds,
                        calls.total());
                append(timesFile, key, String.format(Locale.ROOT,
                        "| %s | %s | %s | %,d | %,d | %d | %s | %s | %,.0f | %s | %s | %s | %s |",
                        what, scopeName(roots), mapLabel, objects, found.size(), rounds.count,
                        duration(p50), duration(rounds.subject(0.99)),
                        found.size() / (p50 / 1e9), duration(rounds.baseline(0.50)),
                        duration(rounds.baseline(0.99)), rounds.share(), rounds.ratio()));

                long total = calls.total();
                List<String> largest = new ArrayList<>();
                for (int i = 0; i < Math.min(4, calls.names().size()); i++) {
                    largest.add(String.format(Locale.ROOT, "%s %,d", calls.names().get(i),
                            calls.counts().get(i)));
                }
                append(callsFile, key, String.format(Locale.ROOT,
                        "| %s | %s | %s | %,d | %,d | %.1f | %s |", what, scopeName(roots),
                        mapLabel, found.size(), total, (double) total / found.size(),
                        String.join(", ", largest)));
            }
        }
        System.exit(0);
    }
}
