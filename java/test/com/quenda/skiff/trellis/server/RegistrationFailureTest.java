package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import org.junit.jupiter.api.Test;

/**
 * On a database whose "TopM Node ID" holds text, the platform refuses the first handler
 * registration, the end of session's: connect reports it with the platform's text and goes on,
 * and every other event still reaches Java.
 */
@OneSessionTest.Connect(invokeJavaCallbacksForScopingUpdates = true)
class RegistrationFailureTest {
    @Test
    void aRefusedRegistrationIsReportedAndTheOtherEventsStillWork() throws Exception {
        assertTrue(TestNative.emulator("fail QXwAddCallback 1 1").contains("\"ok\":true"));
        TestSession[] started = new TestSession[1];
        // This database lacks fields that StartupTest sees named.
        assertEquals(List.of("QXwAddCallback failed: the operation failed"), TestNative
                .captureStderr(() -> started[0] = TestSession.started(
                        getClass().getAnnotation(OneSessionTest.Connect.class)))
                .lines().filter(line -> !line.startsWith("Could not obtain field id")).toList());
        RecordingDispatcher dispatcher = started[0].dispatcher;
        try (EmulatorControl control = new EmulatorControl()) {
            record Case(String command, List<String> callbacks) {}
            for (Case c : List.of(
                    new Case("autolayout 1 1", List.of("beginMapSync()",
                            "submapAutoLayoutChangeCB(1, 0, true)",
                            "synchronizeLayoutAppearance(1)", "endMapSync()")),
                    // A value is read only as the type it has: the text never reaches Java as a
                    // node id (its pointer bits would).
                    new Case("create-object [{\"id\": 40, \"fields\": {\"isInterface\": true,"
                            + " \"TopM Node ID\": \"node 10\"}}]", List.of()))) {
                int before = dispatcher.log().size();
                control.ok(c.command());
                control.ok("sync");
                List<String> log = dispatcher.log();
                assertEquals(c.callbacks(), log.subList(before, log.size()), c.command());
            }
            // The end of session has no handler: the event loop ends without endSessionCB.
            started[0].end(control);
            assertEquals(List.of(), dispatcher.log("endSessionCB"));
        }
    }
}
