package com.quenda.skiff.trellis.bench;

import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.IOException;
import java.lang.management.GarbageCollectorMXBean;
import java.lang.management.ManagementFactory;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.Set;
import java.util.concurrent.TimeUnit;

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

    private static native String[] descend(int depth);

    private static native int stayOnThisCpu();

    private static native void resetPlatformCalls();

    private static native String[] platformCalls();

    /** Rounds of two alternating measurements, each first in every other round. */
    private static final class Rounds {
        final long[] subject;
        final long[] baseline;
        int count;
        /** The collector's pauses during the timed rounds, in milliseconds. */
        final long pauseMillis;

        Rounds(Runnable subjectRun, Runnable baselineRun, int min, long budgetNanos, int max) {
            subject = new long[max];
            baseline = new long[max];
            for (int warmUp = 0; warmUp < 3; warmUp++) {
                time(subjectRun);
                time(baselineRun);
            }
            long paused = collectorPauseMillis();
            long start = System.nanoTime();
            while (count < max && (count < min || System.nanoTime() - start < budgetNanos)) {
                if (count % 2 == 0) {
                    subject[count] = time(subjectRun);
                    baseline[count] = time(baselineRun);
                } else {
                    baseline[count] = time(baselineRun);
                    subject[count] = time(subjectRun);
                }
                count++;
            }
            pauseMillis = collectorPauseMillis() - paused;
        }

        private static long collectorPauseMillis() {
            long total = 0;
            for (GarbageCollectorMXBean gc : ManagementFactory.getGarbageCollectorMXBeans()) {
                total += Math.max(0, gc.getCollectionTime());
            }
            return total;
        }

        long subject(double p) {
            return percentile(subject, count, p);
        }

        long baseline(double p) {
            return percentile(baseline, count, p);
        }

        /** The median of the rounds' differences, with their middle half in parentheses. */
        String share() {
            long[] differences = new long[count];
            for (int r = 0; r < count; r++) differences[r] = subject[r] - baseline[r];
            return duration(percentile(differences, count, 0.50)) + " ("
                    + duration(percentile(differences, count, 0.25)) + " … "
                    + duration(percentile(differences, count, 0.75)) + ")";
        }

        String ratio() {
            return String.format(Locale.ROOT, "%.2f", (double) subject(0.50) / baseline(0.50));
        }
    }

    /** Platform calls of one run, by function, most called first. */
    private record Calls(List<String> names, List<Long> counts) {
        static Calls of(Runnable run) {
            resetPlatformCalls();
            run.run();
            List<String> names = new ArrayList<>();
            List<Long> counts = new ArrayList<>();
            for (String call : platformCalls()) {
                String[] nameCount = call.split(" ");
                names.add(nameCount[0]);
                counts.add(Long.parseLong(nameCount[1]));
            }
            return new Calls(names, counts);
        }

        long of(String name) {
            int i = names.indexOf(name);
            return i < 0 ? 0 : counts.get(i);
        }

        long total() {
            return counts.stream().mapToLong(Long::longValue).sum();
        }
    }

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

    private static void append(Path file, String key, String row) throws IOException {
        Files.writeString(file, key + "\t" + row + "\n", StandardOpenOption.CREATE,
                StandardOpenOption.APPEND);
    }

    private static QxwInterface connect() {
        // This thread and the dispatcher thread, started below, share one CPU: the platform then
        // runs on the same CPU whether the library or the baseline calls it, while the virtual
        // machine's CPUs may differ in speed. The JVM's own threads are left free.
        if (stayOnThisCpu() < 0) {
            System.err.println("ScopingBench: the threads could not be kept on one CPU");
        }
        QxwEventDispatcher dispatcher = new QxwEventDispatcher();
        QxwInterface client = new QxwInterface(dispatcher);
        client.open(false, false, false);
        dispatcher.startDispatcherThread(false, false, false, false);
        QxwInterface.ConnectionResults results;
        try {
            results = client.awaitConnectionResults(10, TimeUnit.MINUTES);
        } catch (InterruptedException e) {
            throw new IllegalStateException(e);
        }
        if (results == null || !results.connectionEstablished()) {
            throw new IllegalStateException("no session: " + results);
        }
        client.getSubmapAndSymbols(0);  // makes the one connection
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
        int minRounds = args.length > 6 ? Integer.parseInt(args[6]) : 31;
        long budgetNanos = TimeUnit.MILLISECONDS.toNanos(args.length > 7
                ? Long.parseLong(args[7]) : 2000);
        int maxRounds = args.length > 8 ? Integer.parseInt(args[8]) : 1001;
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

        Rounds rounds = new Rounds(client::getLocationScopingInfo, ScopingBench::scopeAlone,
                minRounds, budgetNanos, maxRounds);
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
        append(callsFile, key, String.format(Locale.ROOT,
                "| %s | %,d | %,d | %s | %,d | %,d | %,d | %,d | %.2f | %,d |",
                mapLabel, listed, alone[4], walks < 0 ? "–" : String.format(Locale.ROOT, "%,d",
                        walks), alone[5], calls.of("QXwGetSubmapInfo"),
                calls.of("QXwGetSymbolsByObject"), total, (double) total / listed,
                aloneCalls.total()));
    }

    private static void paths(String[] args) throws IOException {
        Path timesFile = Path.of(args[1]);
        int minRounds = args.length > 2 ? Integer.parseInt(args[2]) : 201;
        long budgetNanos = TimeUnit.MILLISECONDS.toNanos(args.length > 3
                ? Long.parseLong(args[3]) : 1000);
        int maxRounds = args.length > 4 ? Integer.parseInt(args[4]) : 2001;
        QxwInterface client = connect();

        String[] line = descend(DEEPEST);
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
            Rounds rounds = new Rounds(parentPath, rowData, minRounds, budgetNanos, maxRounds);
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
