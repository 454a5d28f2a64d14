package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import org.junit.jupiter.api.Test;

/**
 * The platform refuses the first handler registration, the end of session's: connect reports it
 * with the platform's text and goes on, and every other event still reaches Java.
 */
class RegistrationFailureTest {
    @Test
    void aRefusedRegistrationIsReportedAndTheOtherEventsStillWork() throws Exception {
        assertTrue(TestNative.emulator("fail QXwAddCallback 1 1").contains("\"ok\":true"));
        TestSession[] started = new TestSession[1];
        assertEquals("QXwAddCallback failed: the operation failed\n",
                TestNative.captureStderr(() -> started[0] = TestSession.started()));
        TestSession session = started[0];
        try (EmulatorControl control = new EmulatorControl()) {
            int before = session.dispatcher.log().size();
            control.ok("hide 100");
            control.ok("sync");
            List<String> log = session.dispatcher.log();
            assertEquals(List.of("beginMapSync()", "submapInCache(1)",
                    "symbolHiddenCB(100, 1, true)",
                    "symbolMovedCB(100, 1, 1, 10, 20, 0, false, true, true)",
                    "symbolMovedCB(101, 1, 1, 30, 20, 0, false, true, true)",
                    "symbolMovedCB(102, 1, 2, 101, 0, 101, false, false, true)",
                    "synchronizeLayoutAppearance(1)", "endMapSync()"),
                    log.subList(before, log.size()));
            // The end of session has no handler: the event loop ends without endSessionCB.
            session.end(control);
            assertEquals(List.of(), session.dispatcher.log("endSessionCB"));
        }
    }
}
