package com.quenda.skiff.trellis.bench;

import static com.quenda.skiff.trellis.bench.BenchSupport.append;
import static com.quenda.skiff.trellis.bench.BenchSupport.duration;

import com.quenda.skiff.trellis.bench.BenchSupport.Calls;
import com.quenda.skiff.trellis.bench.BenchSupport.RoundLimits;
import com.quenda.skiff.trellis.bench.BenchSupport.Rounds;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.IOException;
import java.nio.file.Path;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.Set;

/**
 * Location scoping and parent paths on the generated map named by QXW_MAP.
 *
 * <p>{@code scoping ORDER MAP_LABEL WALKS TIMES_FILE CALLS_FILE [MIN_ROUNDS [BUDGET_MS
 * [MAX_ROUNDS]]]}: bulk location scoping requests, each timed beside the same platform calls made
 * by a plain native loop on the same open map, in alternating rounds. WALKS is the number of
 * walks one request made, counted from a traced run (-1: not counted). One request is then
 * counted: the platform calls it made. Appends one row to each file (to the first alone when
 * CALLS_FILE is "-"), prefixed by ORDER and a tab.
 *
 * <p>{@code walks}: one location scoping request and nothing else, for a traced run.
 *
 * <p>{@code paths TIMES_FILE [MIN_ROUNDS [BUDGET_MS [MAX_ROUNDS]]]}: parent paths of symbols at
 * depths 1 to 8 below the root submap, each timed beside a row data request for the same
 * symbol, the request round trip with next to nothing behind it.
 */
public final class ScopingBench {
    private static final int DEEPEST = 8;

    private static native boolean openMap();

    private static native long[] scopeAlone();

    // One "symbol submap object type label" line, tab-separated, per depth from 1 on.
    private static native String descend(int depth);

    private static QxwInterface connect() {
        QxwInterface client = BenchSupport.connectOnOneCpu("ScopingBench");
        if (!openMap()) throw new IllegalStateException("the map lacks networks or IP Internet");
        return client;
    }

    private static long pairKeys(Map<Integer, Set<Integer>> locations) {
        long keys = 0;
        for (Map.Entry<Integer, Set<Integer>> e : locations.entrySet()) {
            for (int location : e.getValue()) {
                keys += (e.getKey() & 0xffffffffL) * 1000003L + (location & 0xffffffffL);
            }
        }
        return keys;
    }

    private static void scoping(String[] args) throws IOException {
        String key = args[1];
        String mapLabel = args[2];
        long walks = Long.parseLong(args[3]);
        Path timesFile = Path.of(args[4]);
        Path callsFile = Path.of(args[5]);
        RoundLimits limits = RoundLimits.of(args, 6, 31, 2000, 1001);
        QxwInterface client = connect();

        // Both sides report the same before either is timed.
        Map<Integer, Set<Integer>> reported = client.getLocationScopingInfo();
        long[] alone = scopeAlone();
        long listed = alone[0];
        long pairs = reported.values().stream().mapToLong(Set::size).sum();
        if (alone[1] == 0 || reported.size() != alone[1] || pairs != alone[2]
                || pairKeys(reported) != alone[3]) {
            throw new IllegalStateException(String.format(Locale.ROOT,
                    "%s: the library reports %d networks in %d pairs, the platform alone %d in %d"
                            + " (pair keys %s)", mapLabel, reported.size(), pairs, alone[1],
                    alone[2], pairKeys(reported) == alone[3] ? "agree" : "differ"));
        }

        Rounds rounds =
                new Rounds(client::getLocationScopingInfo, ScopingBench::scopeAlone, limits);
        Calls calls = Calls.of(client::getLocationScopingInfo);
        Calls aloneCalls = Calls.of(ScopingBench::scopeAlone);

        long p50 = rounds.subject(0.50);
        append(timesFile, key, String.format(Locale.ROOT,
                "| %s | %,d | %,d | %,d | %d | %s | %s | %.0f ns | %s | %s | %s | %s | %s |",
                mapLabel, listed, reported.size(), pairs, rounds.count, duration(p50),
                duration(rounds.subject(0.99)), (double) p50 / listed,
                duration(rounds.baseline(0.50)), duration(rounds.baseline(0.99)), rounds.share(),
                rounds.ratio(), duration(rounds.pauseMillis * 1e6 / rounds.count)));
        if (callsFile.toString().equals("-")) return;
        long total = calls.total();
        BenchSupport.series("scoping", "bulk location scoping", "network objects", listed,
                rounds, total);
        append(callsFile, key, String.format(Locale.ROOT,
                "| %s | %,d | %,d | %s | %,d | %,d | %,d | %,d | %.2f | %,d |",
                mapLabel, listed, alone[4], walks < 0 ? "–" : String.format(Locale.ROOT, "%,d",
                        walks), alone[5], calls.of("QXwGetSubmapInfo"),
                calls.of("QXwGetSymbolsByObject"), total, (double) total / listed,
                aloneCalls.total()));
    }

    private static void paths(String[] args) throws IOException {
        Path timesFile = Path.of(args[1]);
        RoundLimits limits = RoundLimits.of(args, 2, 201, 1000, 2001);
        QxwInterface client = connect();

        String[] line = BenchSupport.lines(descend(DEEPEST));
        if (line.length != DEEPEST) {
            throw new IllegalStateException("the map goes " + line.length + " submaps deep, not "
                    + DEEPEST);
        }
        for (int depth = 1; depth <= DEEPEST; depth++) {
            String[] f = line[depth - 1].split("\t", -1);
            int symbol = Integer.parseInt(f[0]);
            int submap = Integer.parseInt(f[1]);
            int object = Integer.parseInt(f[2]);
            String type = f[3];
            String label = f[4];

            // A path holds a symbol on each submap from the root down, the symbol last.
            List<Integer> path = client.getSymbolParentPath(symbol, submap);
            if (path.size() != depth + 1 || path.get(depth) != symbol) {
                throw new IllegalStateException(String.format(Locale.ROOT,
                        "depth %d: the path to %s (symbol %d) is %s", depth, label, symbol,
                        path));
            }
            Runnable parentPath = () -> client.getSymbolParentPath(symbol, submap);
            Runnable rowData = () -> client.getSymbolRowData(symbol, object, 0);
            Rounds rounds = new Rounds(parentPath, rowData, limits);
            Calls calls = Calls.of(parentPath);
            Calls rowCalls = Calls.of(rowData);
            append(timesFile, Integer.toString(depth), String.format(Locale.ROOT,
                    "| %d | %s (`%s`) | %d | %d | %s | %s | %s | %s | %s | %s | %,d | %,d | %,d"
                            + " | %,d |",
                    depth, label, type, path.size(), rounds.count, duration(rounds.subject(0.50)),
                    duration(rounds.subject(0.99)), duration(rounds.baseline(0.50)),
                    duration(rounds.baseline(0.99)), rounds.share(), rounds.ratio(),
                    calls.of("QXwGetSubmapInfo"), calls.of("QXwGetSymbolsByObject"),
                    calls.total(), rowCalls.total()));
            BenchSupport.series("paths", "parent path of one symbol", "submaps below the root",
                    depth, rounds, calls.total());
        }
    }

    public static void main(String[] args) throws Exception {
        System.loadLibrary("skiffscopingbench");
        switch (args[0]) {
            case "scoping" -> scoping(args);
            case "walks" -> connect().getLocationScopingInfo();
            case "paths" -> paths(args);
            default -> throw new IllegalArgumentException("unknown mode " + args[0]);
        }
        System.exit(0);
    }
}
