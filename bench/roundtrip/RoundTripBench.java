package com.quenda.skiff.trellis.bench;

import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.net.InetAddress;
import java.net.ServerSocket;
import java.net.Socket;
import java.nio.charset.StandardCharsets;
import java.util.Locale;

/**
 * Round-trip time of a row data request from a Java thread, against a bare loopback TCP
 * ping-pong of the same message sizes between two threads of this JVM. Both are measured in
 * alternating rounds in one run; prints both medians and their ratio as a Markdown section.
 *
 * <p>Arguments: [rounds [round trips per round]].
 */
public final class RoundTripBench {
    // What request 2 for (1, 2, 3) and its answer are on the connection, NUL included.
    private static final byte[] REQUEST = "2 1 2 3\0".getBytes(StandardCharsets.US_ASCII);
    private static final byte[] ANSWER = "1\0".getBytes(StandardCharsets.US_ASCII);


    /** The baseline: one loopback connection answered by a thread of its own. */
    private static final class PingPong implements AutoCloseable {
        private final ServerSocket listener;
        private final Socket client;
        private final InputStream in;
        private final OutputStream out;
        private final byte[] buffer = new byte[500];

        PingPong() throws IOException {
            listener = new ServerSocket(0, 1, InetAddress.getLoopbackAddress());
            Thread server = new Thread(this::serve, "ping-pong server");
            server.setDaemon(true);
            server.start();
            client = new Socket(InetAddress.getLoopbackAddress(), listener.getLocalPort());
            client.setTcpNoDelay(true);
            in = client.getInputStream();
            out = client.getOutputStream();
        }

        private void serve() {
            try (Socket peer = listener.accept()) {
                peer.setTcpNoDelay(true);
                InputStream peerIn = peer.getInputStream();
                OutputStream peerOut = peer.getOutputStream();
                byte[] received = new byte[500];
                while (readMessage(peerIn, received)) peerOut.write(ANSWER);
            } catch (IOException e) {
                // The benchmark has ended.
            }
        }

        void roundTrip() throws IOException {
            out.write(REQUEST);
            if (!readMessage(in, buffer)) throw new IOException("connection closed");
        }

        @Override
        public void close() throws IOException {
            client.close();
            listener.close();
        }
    }

    /** Reads up to a NUL, as the channel does; false at the end of the stream. */
    private static boolean readMessage(InputStream in, byte[] buffer) throws IOException {
        int held = 0;
        for (;;) {
            int n = in.read(buffer, held, buffer.length - held);
            if (n < 0) return false;
            for (int i = held; i < held + n; i++) {
                if (buffer[i] == 0) return true;
            }
            held += n;
        }
    }

    private interface RoundTrip {
        void run() throws Exception;
    }

    private static void measure(RoundTrip roundTrip, long[] samples, int from, int count)
            throws Exception {
        for (int i = from; i < from + count; i++) {
            long start = System.nanoTime();
            roundTrip.run();
            samples[i] = System.nanoTime() - start;
        }
    }

    // In floors.cpp: round trips of the same messages between two native threads, each one's
    // time in the samples; kind 0: blocking reads on loopback TCP, 1: a condition variable,
    // 2: both threads spinning.
    private static native void floor(int kind, long[] samples);

    public static void main(String[] args) throws Exception {
        int rounds = args.length > 0 ? Integer.parseInt(args[0]) : 20;
        int perRound = args.length > 1 ? Integer.parseInt(args[1]) : 2000;
        System.loadLibrary("skiffroundtripbench");

        QxwInterface client = BenchSupport.connect(new BenchSupport.ConstantRows());

        RoundTrip request = () -> {
            if (!client.getSymbolRowData(1, 2, 3)) throw new IllegalStateException("answered 0");
        };
        // Each measure, then its samples: the request, the JVM ping-pong, the native floors.
        String[] names = {"row data request", "loopback TCP ping-pong, two Java threads",
            "loopback TCP, two native threads", "condition variable, two native threads",
            "spinning, two native threads"};
        long[][] samples = new long[names.length][rounds * perRound];
        long[] round = new long[perRound];
        try (PingPong pingPong = new PingPong()) {
            RoundTrip[] measures = {request, pingPong::roundTrip};
            for (int warmUp = 0; warmUp < 2; warmUp++) {
                for (RoundTrip m : measures) measure(m, new long[perRound], 0, perRound);
                for (int kind = 0; kind < 3; kind++) floor(kind, round);
            }
            for (int r = 0; r < rounds; r++) {
                for (int m = 0; m < measures.length; m++) {
                    measure(measures[m], samples[m], r * perRound, perRound);
                }
                for (int kind = 0; kind < 3; kind++) {
                    floor(kind, round);
                    System.arraycopy(round, 0, samples[2 + kind], r * perRound, perRound);
                }
            }
        }

        int n = rounds * perRound;
        long requestP50 = BenchSupport.percentile(samples[0], n, 0.50);
        long requestP99 = BenchSupport.percentile(samples[0], n, 0.99);
        StringBuilder rows = new StringBuilder();
        for (int m = 0; m < names.length; m++) {
            long p50 = BenchSupport.percentile(samples[m], n, 0.50);
            long p99 = BenchSupport.percentile(samples[m], n, 0.99);
            rows.append(String.format(Locale.ROOT, "| %s | %s | %s | %s |%n", names[m],
                    BenchSupport.duration(p50), BenchSupport.duration(p99),
                    m == 0 ? "" : String.format(Locale.ROOT, "%.2f / %.2f",
                            (double) requestP50 / p50, (double) requestP99 / p99)));
        }
        System.out.printf(Locale.ROOT, "## Request round trip%n%n"
                + "Row data request (request 2, %d bytes; answer %d bytes) from a Java thread,"
                + " served on the dispatcher thread by a Java getSymbolRowData that returns a"
                + " constant, beside the floors: a loopback TCP ping-pong of the same sizes"
                + " between two threads of the same JVM, and the same exchange between two native"
                + " threads by blocking reads on loopback TCP (the channel's means), by a"
                + " condition variable (no socket) and with both threads spinning (no sleep)."
                + " %,d round trips each, in %d rounds, each measure in turn. Default garbage"
                + " collector.%n%n"
                + "| measure | p50 | p99 | request over this, p50 / p99 |%n"
                + "|---|---:|---:|---:|%n%s%n"
                + "Goal: the request within 1.5 times the JVM ping-pong at p50.%n",
                REQUEST.length, ANSWER.length, n, rounds, rows);
        System.exit(0);
    }
}
