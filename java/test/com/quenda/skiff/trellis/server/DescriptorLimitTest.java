package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/**
 * Socket failures at start-up, made by running out of descriptors (EMFILE, 24): without a
 * listening socket the session still starts but serves no request, and the client cannot connect
 * (ECONNREFUSED, 111). Runs without a control socket, which would need a descriptor at start.
 */
class DescriptorLimitTest {
    private static String withoutDescriptors(TestNative.Action action) throws Exception {
        return TestNative.captureStderr(() -> {
            assertTrue(TestNative.limitDescriptors());
            try {
                action.run();
            } finally {
                TestNative.restoreDescriptors();
            }
        });
    }

    @Test
    void socketFailuresAreReportedAndNothingIsSent() throws Exception {
        RecordingDispatcher dispatcher = new RecordingDispatcher();
        RecordingInterface client = new RecordingInterface(dispatcher);
        client.open(false, false, false);

        assertEquals("QxwEventDispatcher::EnableJavaCallbacks: socket() failed (error:24)\n",
                withoutDescriptors(() -> assertTrue(dispatcher.connect(false, false, false,
                        false), "the session starts all the same")));
        assertNull(client.awaitConnectionResults(0, TimeUnit.SECONDS),
                "no server, no connection results");

        assertEquals("QxwInterface::Connect: socket() failed (error:24)\n",
                withoutDescriptors(() -> assertFalse(client.getSubmapAndSymbols(0))));
        assertEquals("QxwInterface::Connect: connect() failed (error: 111)\n",
                TestNative.captureStderr(() -> assertFalse(client.getSubmapAndSymbols(0))));
        assertEquals("QxwInterface::GetSymbolRowData: not connected, request not sent\n",
                TestNative.captureStderr(() -> assertFalse(client.getSymbolRowData(1, 2, 3))));
    }
}
