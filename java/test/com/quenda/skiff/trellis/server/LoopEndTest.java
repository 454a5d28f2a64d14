package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/**
 * The platform failing once in its event loop ends the loop: the dispatcher says so, and every
 * client request made afterwards fails at once instead of waiting for an answer that will never
 * come; close returns.
 */
class LoopEndTest {
    @Test
    void afterTheLoopEndsRequestsFailAtOnceAndCloseReturns() throws Exception {
        TestSession session = TestSession.started();
        String stderr;
        try (EmulatorControl control = new EmulatorControl()) {
            stderr = TestNative.captureStderr(() -> {
                control.ok("fail QXwProcessEvent 1 1");
                assertTrue(session.awaitEnded(), "listenForEvents did not return");
            });
        }
        assertEquals("QxwEventDispatcher::Listen: QXwProcessEvent failed: the operation failed;"
                + " no more events or requests are served\n", stderr);

        CompletableFuture<String> requests = CompletableFuture.supplyAsync(() -> {
            try {
                return TestNative.captureStderr(() -> {
                    assertFalse(session.client.getSymbolRowData(1, 2, 3));
                    assertFalse(session.client.getSubmapAndSymbols(0));
                    session.client.setAcknowledgeState(new int[] {1}, true);
                    session.client.close();
                });
            } catch (Exception e) {
                throw new RuntimeException(e);
            }
        });
        String failures = requests.get(TestSession.TIMEOUT_SECONDS, TimeUnit.SECONDS);
        assertTrue(failures.matches("QxwInterface::GetSymbolRowData: recv\\(\\) failed \\(sock:\\d+"
                + " error:104\\)\n(QxwInterface::\\w+: (send|recv)\\(\\) failed \\(sock:\\d+"
                + " error:\\d+\\)\n)+"), failures);
    }
}
