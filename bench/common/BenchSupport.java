package com.quenda.skiff.trellis.bench;

import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.BufferedReader;
import java.io.IOException;
import java.io.OutputStream;
import java.io.UncheckedIOException;
import java.lang.management.GarbageCollectorMXBean;
import java.lang.management.ManagementFactory;
import java.net.UnixDomainSocketAddress;
import java.nio.channels.Channels;
import java.nio.channels.SocketChannel;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Locale;
import java.util.concurrent.TimeUnit;

/**
 * What the benchmarks that time a request beside a baseline in their own process share: a
 * session whose requests run on the caller's CPU, rounds of two alternating measurements, the
 * emulator's platform call counters, and the figures and table rows made of them.
 */
public final class BenchSupport {
    static {
        System.loadLibrary("skiffcommonbench");
    }

    private BenchSupport() {}

    // In benchsupport.cpp.
    private static native int stayOnThisCpu();

    private static native void resetPlatformCalls();

    private static native String platformCalls();

    /**
     * A session on the map named by QXW_MAP, its one connection made. This thread and the
     * dispatcher thread, started here, share one CPU: the platform then runs on the same CPU
     * whether the library or a baseline in this thread calls it, while the virtual machine's CPUs
     * may differ in speed. The JVM's own threads are left free. {@code bench} names the caller
     * when the threads cannot be kept on one CPU.
     */
    static QxwInterface connectOnOneCpu(String bench) {
        return connectOnOneCpu(bench, new QxwEventDispatcher());
    }

    /** The same, with the dispatcher given. */
    static QxwInterface connectOnOneCpu(String bench, QxwEventDispatcher dispatcher) {
        if (stayOnThisCpu() < 0) {
            System.err.println(bench + ": the threads could not be kept on one CPU");
        }
        return connect(dispatcher);
    }

    /** A dispatcher whose row data is a short constant: a row data request measures the channel. */
    static final class ConstantRows extends QxwEventDispatcher {
        @Override
        protected String getSymbolRowData(int symbolId, int objectId, int propertySetIndex) {
            return "row";
        }
    }

    /**
     * A session on the map named by QXW_MAP with the dispatcher given, its one connection made;
     * its threads run wherever the system puts them.
     */
    static QxwInterface connect(QxwEventDispatcher dispatcher) {
        QxwInterface client = new QxwInterface(dispatcher);
        client.open(false, false, false);
        dispatcher.startDispatcherThread(false, false, false, false);
        // Opening the largest map takes a while.
        QxwInterface.ConnectionResults results;
        try {
            results = client.awaitConnectionResults(30, TimeUnit.MINUTES);
        } catch (InterruptedException e) {
            throw new IllegalStateException(e);
        }
        if (results == null || !results.connectionEstablished()) {
            throw new IllegalStateException("no session: " + results);
        }
        client.getSubmapAndSymbols(0);  // makes the one connection
        return client;
    }

    /** How many rounds to run: at least min, then as many as fit in the budget, up to max. */
    record RoundLimits(int min, long budgetNanos, int max) {
        /**
         * The limits given by three arguments from {@code first} on (MIN_ROUNDS, BUDGET_MS,
         * MAX_ROUNDS), each one absent taking its default.
         */
        static RoundLimits of(String[] args, int first, int min, long budgetMillis, int max) {
            return new RoundLimits(
                    args.length > first ? Integer.parseInt(args[first]) : min,
                    TimeUnit.MILLISECONDS.toNanos(args.length > first + 1
                            ? Long.parseLong(args[first + 1]) : budgetMillis),
                    args.length > first + 2 ? Integer.parseInt(args[first + 2]) : max);
        }
    }

    /** Rounds of two alternating measurements, each first in every other round. */
    static final class Rounds {
        private final long[] subject;
        private final long[] baseline;
        final int count;
        /** The collector's pauses during the timed rounds, in milliseconds. */
        final long pauseMillis;

        Rounds(Runnable subjectRun, Runnable baselineRun, RoundLimits limits) {
            subject = new long[limits.max()];
            baseline = new long[limits.max()];
            for (int warmUp = 0; warmUp < 3; warmUp++) {
                time(subjectRun);
                time(baselineRun);
            }
            long paused = collectorPauseMillis();
            int n = 0;
            long start = System.nanoTime();
            while (n < limits.max()
                    && (n < limits.min() || System.nanoTime() - start < limits.budgetNanos())) {
                // Each goes first in every other round, so that neither gains from following
                // the other.
                if (n % 2 == 0) {
                    subject[n] = time(subjectRun);
                    baseline[n] = time(baselineRun);
                } else {
                    baseline[n] = time(baselineRun);
                    subject[n] = time(subjectRun);
                }
                n++;
            }
            count = n;
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

        /** The subject's p50 over the baseline's. */
        String ratio() {
            return String.format(Locale.ROOT, "%.2f", (double) subject(0.50) / baseline(0.50));
        }
    }

    /** The emulator's control socket (the path in QXW_CONTROL). */
    static final class Control {
        private final BufferedReader replies;
        private final OutputStream commands;

        Control() throws IOException {
            SocketChannel channel =
                    SocketChannel.open(UnixDomainSocketAddress.of(System.getenv("QXW_CONTROL")));
            replies = new BufferedReader(Channels.newReader(channel, StandardCharsets.UTF_8));
            commands = Channels.newOutputStream(channel);
        }

        /**
         * Sends the commands at once, then reads a reply for each; any that is not a success
         * throws. With "sync" last, returns once the events of the others have been handled.
         */
        void run(String... lines) {
            try {
                commands.write((String.join("\n", lines) + "\n").getBytes(StandardCharsets.UTF_8));
                commands.flush();
                for (String line : lines) {
                    String reply = replies.readLine();
                    if (reply == null || !reply.contains("\"ok\":true")) {
                        throw new IllegalStateException(line + " -> " + reply);
                    }
                }
            } catch (IOException e) {
                throw new UncheckedIOException(e);
            }
        }
    }

    /** Platform calls of one run, by function, most called first. */
    record Calls(List<String> names, List<Long> counts) {
        static Calls of(Runnable run) {
            resetPlatformCalls();
            run.run();
            List<String> names = new ArrayList<>();
            List<Long> counts = new ArrayList<>();
            for (String call : lines(platformCalls())) {
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

    /** The lines of a native method's text, none for the empty text. */
    static String[] lines(String text) {
        return text.isEmpty() ? new String[0] : text.split("\n");
    }

    static long time(Runnable r) {
        long start = System.nanoTime();
        r.run();
        return System.nanoTime() - start;
    }

    /** The nearest-rank percentile of n samples: the slowest one when n < 1/(1-p). */
    static long percentile(long[] samples, int n, double p) {
        long[] sorted = Arrays.copyOf(samples, n);
        Arrays.sort(sorted);
        return sorted[Math.max(0, (int) Math.ceil(p * n) - 1)];
    }

    static String duration(double nanos) {
        if (Math.abs(nanos) >= 1e6) return String.format(Locale.ROOT, "%.2f ms", nanos / 1e6);
        return String.format(Locale.ROOT, "%.1f µs", nanos / 1e3);
    }

    /**
     * Adds one point to the series of an operation, for the plots of how costs grow: the
     * operation's size (objects, interfaces, symbols, depth), its p50 and p99 and its platform
     * calls, beside the floor's p50. Goes to SKIFF_BENCH_SERIES/OPERATION.tsv, whose first line
     * (written by the first point) names the operation and its size; nothing when the variable
     * is unset. {@code operation} is a file name.
     */
    static void series(String operation, String title, String sizeName, long size, Rounds rounds,
            long platformCalls) throws IOException {
        String dir = System.getenv("SKIFF_BENCH_SERIES");
        if (dir == null || dir.isEmpty()) return;
        Path file = Path.of(dir, operation + ".tsv");
        Files.createDirectories(file.getParent());
        String head = Files.exists(file) ? "" : "# " + title + "\t" + sizeName + "\n";
        Files.writeString(file, head + String.format(Locale.ROOT, "%d\t%d\t%d\t%d\t%d%n", size,
                rounds.subject(0.50), rounds.subject(0.99), rounds.baseline(0.50), platformCalls),
                StandardOpenOption.CREATE, StandardOpenOption.APPEND);
    }

    /** Appends a table row to a file, prefixed by its sort key and a tab. */
    static void append(Path file, String key, String row) throws IOException {
        Files.writeString(file, key + "\t" + row + "\n", StandardOpenOption.CREATE,
                StandardOpenOption.APPEND);
    }
}
