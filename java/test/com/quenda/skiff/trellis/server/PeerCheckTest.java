package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.net.InetAddress;
import java.net.Socket;
import org.junit.jupiter.api.Test;

/** The request server accepts nothing but the library's own client connection. */
class PeerCheckTest {
    @Test
    void aStrangerIsClosedAndTheRealClientIsServed() throws Exception {
        TestSession session = new TestSession();
        assertTrue(session.start(false, false, false).connectionEstablished());
        int port = TestNative.callbackPort();
        int[] strangerPort = new int[1];
        String stderr = TestNative.captureStderr(() -> {
            try (Socket stranger = new Socket(InetAddress.getLoopbackAddress(), port)) {
                strangerPort[0] = stranger.getLocalPort();
                stranger.setSoTimeout(30_000);
                assertEquals(-1, stranger.getInputStream().read(), "the server closes it");
            }
        });
        assertEquals("QxwEventDispatcher::EnableJavaCallbacks: refused a connection from"
                + " 127.0.0.1:" + strangerPort[0] + "\n", stderr);

        assertTrue(session.connectClient());
        assertTrue(session.client.getSymbolRowData(3, 4, 5));
        try (EmulatorControl control = new EmulatorControl()) {
            session.end(control);
        }
    }
}
