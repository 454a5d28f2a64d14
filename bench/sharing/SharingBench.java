package com.quenda.skiff.trellis.bench;

import com.quenda.skiff.trellis.server.QxwInterface;
import java.lang.management.ManagementFactory;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Locale;
import java.util.concurrent.CountDownLatch;

/**
 * Java threads sharing the one request connection: 1, 4 and 16 threads each making row data
 * requests for the same time, as fast as they are answered. For each count: the requests each
 * thread got (the least and the most, against the mean), the latency of one request (p50 and
 * p99 over every request of every thread), the total rate against one thread's, and the
 * process's CPU time per request.
 *
 * <p>The counts take turns, in rounds, so that a slower or faster spell of the machine falls on
 * each alike; each count's figures are from its round of median rate.
 *
 * <p>Arguments: [SECONDS_PER_RUN [ROUNDS]].
 */
public final class SharingBench {
    private static final int[] THREADS = {1, 4, 16};


    /** What one count of threads did in the time given. */
    private record Run(int threads, long[] counts, long[] latencies, long nanos, long cpuNanos) {
        long total() {
            return Arrays.stream(counts).sum();
        }

        double mean() {
            return (double) total() / threads;
        }

        double perSecond() {
            return total() / (nanos / 1e9);
        }
    }

    private static long processCpuNanos() {
        return ((com.sun.management.OperatingSystemMXBean)
                ManagementFactory.getOperatingSystemMXBean()).getProcessCpuTime();
    }

    /** `threads` threads requesting for `nanos`, started together. */
    private static Run run(QxwInterface client, int threads, long nanos) throws Exception {
        long[] counts = new long[threads];
        List<long[]> latencies = new ArrayList<>();
        CountDownLatch ready = new CountDownLatch(threads);
        CountDownLatch go = new CountDownLatch(1);
        long[] deadline = new long[1];
        List<Thread> workers = new ArrayList<>();
        for (int t = 0; t < threads; t++) {
            int me = t;
            long[] mine = new long[4_000_000 / threads];
            latencies.add(mine);
            Thread worker = new Thread(() -> {
                ready.countDown();
                try {
                    go.await();
                } catch (InterruptedException e) {
                    return;
                }
                int n = 0;
                for (long now = System.nanoTime(); now < deadline[0] && n < mine.length; ) {
                    if (!client.getSymbolRowData(1, 2, 3)) {
                        throw new IllegalStateException("answered 0");
                    }
                    long end = System.nanoTime();
                    mine[n++] = end - now;
                    now = end;
                }
                counts[me] = n;
            }, "requester " + t);
            workers.add(worker);
            worker.start();
        }
        ready.await();
        long cpu = processCpuNanos();
        long start = System.nanoTime();
        deadline[0] = start + nanos;
        go.countDown();
        for (Thread worker : workers) worker.join();
        long elapsed = System.nanoTime() - start;
        cpu = processCpuNanos() - cpu;
        long[] all = new long[(int) Arrays.stream(counts).sum()];
        int at = 0;
        for (int t = 0; t < threads; t++) {
            System.arraycopy(latencies.get(t), 0, all, at, (int) counts[t]);
            at += (int) counts[t];
        }
        return new Run(threads, counts, all, elapsed, cpu);
    }

    public static void main(String[] args) throws Exception {
        double seconds = args.length > 0 ? Double.parseDouble(args[0]) : 2;
        int rounds = args.length > 1 ? Integer.parseInt(args[1]) : 3;
        long nanos = (long) (seconds * 1e9);
        QxwInterface client = BenchSupport.connect(new BenchSupport.ConstantRows());
        run(client, 4, nanos / 4);  // warm-up

        Run[][] runs = new Run[THREADS.length][rounds];
        for (int round = 0; round < rounds; round++) {
            for (int c = 0; c < THREADS.length; c++) runs[c][round] = run(client, THREADS[c], nanos);
        }
        Run[] median = new Run[THREADS.length];
        for (int c = 0; c < THREADS.length; c++) {
            Run[] sorted = runs[c].clone();
            Arrays.sort(sorted, (a, b) -> Double.compare(a.perSecond(), b.perSecond()));
            median[c] = sorted[rounds / 2];
        }
        StringBuilder rows = new StringBuilder();
        double single = median[0].perSecond();
        for (int c = 0; c < THREADS.length; c++) {
            Run r = median[c];
            int threads = THREADS[c];
            long[] counts = r.counts().clone();
            Arrays.sort(counts);
            int n = r.latencies().length;
            rows.append(String.format(Locale.ROOT,
                    "| %d | %,d | %,.0f | %,d (%+.0f%%) | %,d (%+.0f%%) | %s | %s | %,.0f | %.2f"
                            + " | %s |%n",
                    threads, r.total(), r.mean(), counts[0], 100 * (counts[0] / r.mean() - 1),
                    counts[threads - 1], 100 * (counts[threads - 1] / r.mean() - 1),
                    BenchSupport.duration(BenchSupport.percentile(r.latencies(), n, 0.50)),
                    BenchSupport.duration(BenchSupport.percentile(r.latencies(), n, 0.99)),
                    r.perSecond(), r.perSecond() / single,
                    BenchSupport.duration((double) r.cpuNanos() / r.total())));
        }
        System.out.printf(Locale.ROOT, "%n## Sharing the connection%n%n"
                + "Java threads making row data requests (request 2, answered by a Java"
                + " getSymbolRowData that returns a constant) as fast as they are answered, all"
                + " started together and stopped after %.1f s; the counts take turns, %d rounds,"
                + " and each row is the count's round of median rate. *least* and *most* are the"
                + " requests of the thread that got the fewest and of the one that got the most,"
                + " against the mean; latency is over every request of every thread; *rate* is"
                + " against one thread's; *CPU* is the process's CPU time per request (all its"
                + " threads). Default garbage collector.%n%n"
                + "| threads | requests | mean per thread | least | most | latency p50"
                + " | latency p99 | requests/s | rate | CPU per request |%n"
                + "|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|%n%s%n"
                + "Goal at 16 threads: every thread within ±20%% of the mean, p99 at most 1 ms,"
                + " rate at least 0.9.%n", seconds, rounds, rows);
        System.exit(0);
    }
}
