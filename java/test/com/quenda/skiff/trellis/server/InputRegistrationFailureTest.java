package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import org.junit.jupiter.api.Test;

/**
 * The platform refuses to watch the client's connection at start-up: connect says so and closes
 * it, so that the first request fails instead of waiting for an answer that would never come,
 * and the session goes on with map events alone.
 */
class InputRegistrationFailureTest {
    @Test
    void aRefusedConnectionIsReportedAndClosedAndMapEventsStillCome() throws Exception {
        assertTrue(TestNative.emulator("fail QXwAddInput 1 1").contains("\"ok\":true"));
        TestSession session = new TestSession(null);
        session.start();
        assertEquals("QxwEventDispatcher::EnableJavaCallbacks: QXwAddInput() failed\n"
                + "QxwInterface::GetSubmapAndSymbols: recv() failed (sock:N error:104)\n",
                TestNative.captureStderr(() -> assertFalse(session.client.getSubmapAndSymbols(0)))
                        .replaceAll("sock:\\d+", "sock:N"));
        try (EmulatorControl control = new EmulatorControl()) {
            control.ok("status 3 1");
            control.ok("sync");
            assertEquals(List.of("symbolStatusChangeCB(1, 1, 3, true)"),
                    session.dispatcher.log("symbolStatusChangeCB"));
            session.end(control);
        }
    }
}
