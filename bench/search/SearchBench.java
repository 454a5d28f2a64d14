package com.quenda.skiff.trellis.bench;

import com.quenda.skiff.trellis.server.FoundSymbol;
import com.quenda.skiff.trellis.server.FoundSymbol.Category;
import com.quenda.skiff.trellis.server.FoundSymbol.MatchType;
import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;
import java.util.concurrent.TimeUnit;

/**
 * Searches on the generated map named by QXW_MAP, each timed beside the collection service
 * alone evaluating the same clause on the same open map, in alternating rounds in this process.
 * The difference is what the library adds: the request, the symbols of each found object, the
 * scope walks of a restricted search and the upcalls that build the result. One search of each
 * kind is then counted: the platform calls it made.
 *
 * <p>Arguments: ORDER MAP_LABEL TIMES_FILE CALLS_FILE [MIN_ROUNDS [BUDGET_MS [MAX_ROUNDS]]].
 * Each search appends one Markdown row to each file, prefixed by a sort key (search, scope,
 * ORDER) and a tab, so that the rows of several maps can be merged in that order.
 */
public final class SearchBench {
    private record Search(String name, Category category, MatchType matchType, String query) {}

    // Hits that a user would look at: one node by name, the hosts of a few networks by
    // address, every hundredth host by name (these grow with the map).
    private static final Search[] SEARCHES = {
        new Search("exact selection name", Category.OBJECTNAME, MatchType.MATCH_EXACTLY,
                "host-500"),
        new Search("wildcard over addresses", Category.IPADDRESS, MatchType.MATCH_WILDCARD,
                "10.0.12.*"),
        new Search("regex over host names", Category.HOSTNAME, MatchType.MATCH_REGEXP,
                "^host-[0-9]*00[.]"),
    };

    // No root objects: every symbol; one top-level location: half the map.
    private static final String[][] SCOPES = {{}, {"Location 1"}};

    private static native int collect(int category, int matchType, String query);

    private static native int stayOnThisCpu();

    private static native void resetPlatformCalls();

    private static native String[] platformCalls();

    private static long time(Runnable r) {
        long start = System.nanoTime();
        r.run();
        return System.nanoTime() - start;
    }

    /** The nearest-rank percentile of n samples: the slowest one when n < 1/(1-p). */
    private static long percentile(long[] samples, int n, double p) {
        long[] sorted = Arrays.copyOf(samples, n);
        Arrays.sort(sorted);
        return sorted[Math.max(0, (int) Math.ceil(p * n) - 1)];
    }

    private static String duration(double nanos) {
        if (Math.abs(nanos) >= 1e6) return String.format(Locale.ROOT, "%.2f ms", nanos / 1e6);
        return String.format(Locale.ROOT, "%.1f µs", nanos / 1e3);
    }

    private static String scopeName(String[] roots) {
        return roots.length == 0 ? "unrestricted" : String.join(", ", roots);
    }

    private static void append(Path file, String key, String row) throws IOException {
        Files.writeString(file, key + "\t" + row + "\n", StandardOpenOption.CREATE,
                StandardOpenOption.APPEND);
    }

    public static void main(String[] args) throws Exception {
        int order = Integer.parseInt(args[0]);
        String mapLabel = args[1];
        Path timesFile = Path.of(args[2]);
        Path callsFile = Path.of(args[3]);
        int minRounds = args.length > 4 ? Integer.parseInt(args[4]) : 21;
        long budgetNanos = TimeUnit.MILLISECONDS.toNanos(args.length > 5
                ? Long.parseLong(args[5]) : 2000);
        int maxRounds = args.length > 6 ? Integer.parseInt(args[6]) : 1001;
        System.loadLibrary("skiffsearchbench");

        // This thread and the dispatcher thread, started below, share one CPU: the service
        // then runs on the same CPU whether the library or the baseline calls it, while the
        // virtual machine's CPUs may differ in speed. The JVM's own threads are left free.
        if (stayOnThisCpu() < 0) {
            System.err.println("SearchBench: the threads could not be kept on one CPU");
        }
        QxwEventDispatcher dispatcher = new QxwEventDispatcher();
        QxwInterface client = new QxwInterface(dispatcher);
        client.open(false, false, false);
        dispatcher.startDispatcherThread(false, false, false, false);
        // Opening the largest map takes a while.
        QxwInterface.ConnectionResults results = client.awaitConnectionResults(30,
                TimeUnit.MINUTES);
        if (results == null || !results.connectionEstablished()) {
            throw new IllegalStateException("no session: " + results);
        }
        client.getSubmapAndSymbols(0);  // makes the one connection

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

                for (int warmUp = 0; warmUp < 3; warmUp++) {
                    time(viaLibrary);
                    time(collectionAlone);
                }
                long[] library = new long[maxRounds];
                long[] collection = new long[maxRounds];
                int rounds = 0;
                long start = System.nanoTime();
                while (rounds < maxRounds
                        && (rounds < minRounds || System.nanoTime() - start < budgetNanos)) {
                    // Each goes first in every other round, so that neither gains from
                    // following the other.
                    if (rounds % 2 == 0) {
                        library[rounds] = time(viaLibrary);
                        collection[rounds] = time(collectionAlone);
                    } else {
                        collection[rounds] = time(collectionAlone);
                        library[rounds] = time(viaLibrary);
                    }
                    rounds++;
                }

                resetPlatformCalls();
                viaLibrary.run();
                String[] calls = platformCalls();

                // The library's share: the median of the rounds' differences, each search
                // less the service's evaluation beside it.
                long[] differences = new long[rounds];
                for (int r = 0; r < rounds; r++) differences[r] = library[r] - collection[r];
                long share = percentile(differences, rounds, 0.50);
                long shareLow = percentile(differences, rounds, 0.25);
                long shareHigh = percentile(differences, rounds, 0.75);
                long p50 = percentile(library, rounds, 0.50);
                long p99 = percentile(library, rounds, 0.99);
                long collectionP50 = percentile(collection, rounds, 0.50);
                long collectionP99 = percentile(collection, rounds, 0.99);
                String key = String.format(Locale.ROOT, "%d.%d.%d", s, c, order);
                String what = String.format(Locale.ROOT, "%s `%s`", search.name(), search.query());
                append(timesFile, key, String.format(Locale.ROOT,
                        "| %s | %s | %s | %,d | %,d | %d | %s | %s | %,.0f | %s | %s | %s | %.2f |",
                        what, scopeName(roots), mapLabel, objects, found.size(), rounds,
                        duration(p50), duration(p99), found.size() / (p50 / 1e9),
                        duration(collectionP50), duration(collectionP99),
                        duration(share) + " (" + duration(shareLow) + " … "
                                + duration(shareHigh) + ")",
                        (double) p50 / collectionP50));

                long total = 0;
                List<String> largest = new ArrayList<>();
                for (String call : calls) {
                    String[] nameCount = call.split(" ");
                    long count = Long.parseLong(nameCount[1]);
                    total += count;
                    if (largest.size() < 4) {
                        largest.add(String.format(Locale.ROOT, "%s %,d", nameCount[0], count));
                    }
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
