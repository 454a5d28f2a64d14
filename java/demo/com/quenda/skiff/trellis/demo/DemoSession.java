package com.quenda.skiff.trellis.demo;

import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.BufferedReader;
import java.io.IOException;
import java.io.OutputStream;
import java.net.UnixDomainSocketAddress;
import java.nio.channels.Channels;
import java.nio.channels.SocketChannel;
import java.nio.charset.StandardCharsets;
import java.util.concurrent.TimeUnit;

/**
 * The reference server running over the map platform: a dispatcher thread that holds the
 * platform session and serves requests, and the client through which the demo asks for submaps.
 */
final class DemoSession {
    private static final long TIMEOUT_SECONDS = 30;

    final DemoDispatcher dispatcher;
    final QxwInterface client;
    final QxwInterface.ConnectionResults results;
    private final Thread thread;

    private DemoSession(DemoDispatcher dispatcher, QxwInterface client,
            QxwInterface.ConnectionResults results, Thread thread) {
        this.dispatcher = dispatcher;
        this.client = client;
        this.results = results;
        this.thread = thread;
    }

    /**
     * Opens the client and starts the dispatcher thread; null when the platform session could
     * not be opened.
     */
    static DemoSession start(DemoDispatcher dispatcher) throws InterruptedException {
        QxwInterface client = new QxwInterface(dispatcher);
        client.open(false, false, false);
        Thread thread = dispatcher.startDispatcherThread(false, false, false, false);
        QxwInterface.ConnectionResults results =
                client.awaitConnectionResults(TIMEOUT_SECONDS, TimeUnit.SECONDS);
        if (results == null || !results.connectionEstablished()) return null;
        return new DemoSession(dispatcher, client, results, thread);
    }

    /** Waits until the platform session has ended and the event loop has returned. */
    void awaitEnd() throws InterruptedException {
        thread.join();
    }

    /**
     * While the event loop runs: closes the client and ends the platform session through the
     * emulator's control socket (QXW_CONTROL), then waits for the event loop to return. When the
     * session cannot be ended so, says that it ends with the process.
     */
    void endIfRunning() {
        if (!thread.isAlive()) return;
        client.close();
        if (!sendEndSession()) {
            System.err.println("skiff-demo: the platform session could not be ended through the"
                    + " control socket; it ends with the process");
            return;
        }
        try {
            thread.join(TimeUnit.SECONDS.toMillis(TIMEOUT_SECONDS));
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    private static boolean sendEndSession() {
        String control = System.getenv("QXW_CONTROL");
        if (control == null || control.isEmpty()) return false;
        try {
            String reply = command(control, "end-session");
            return reply != null && reply.contains("\"ok\":true");
        } catch (IOException e) {
            return false;
        }
    }

    /** Sends one control command and returns its one-line reply. */
    private static String command(String socketPath, String line) throws IOException {
        try (SocketChannel channel =
                SocketChannel.open(UnixDomainSocketAddress.of(socketPath))) {
            OutputStream out = Channels.newOutputStream(channel);
            out.write((line + "\n").getBytes(StandardCharsets.UTF_8));
            out.flush();
            BufferedReader in =
                    new BufferedReader(Channels.newReader(channel, StandardCharsets.UTF_8));
            return in.readLine();
        }
    }
}
