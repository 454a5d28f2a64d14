package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/**
 * The platform start fails twice (error 1) before it opens read-only.json: connect reports that
 * and returns false, and each later connect tries again, until one succeeds.
 */
class InitFailureTest {
    @Test
    void aFailedStartIsReportedAndALaterConnectTriesAgain() throws Exception {
        assertTrue(TestNative.emulator("fail QXwInit 1 2").contains("\"ok\":true"));
        TestSession session = new TestSession(null);
        // Without an opened client object the results cannot be reported.
        assertEquals("QxwInterface::SetConnectionResults: no Java client object is open\n",
                TestNative.captureStderr(() -> assertFalse(
                        session.dispatcher.connect(false, false, false, false))));

        session.client.open(false, false, false);
        assertEquals("", TestNative.captureStderr(() -> assertFalse(
                session.dispatcher.connect(false, false, false, false))));
        assertEquals(new QxwInterface.ConnectionResults(false, "", true),
                session.client.awaitConnectionResults(0, TimeUnit.SECONDS));
        assertEquals(List.of("setConnectionResults(false, , true)"), session.dispatcher.log());

        assertEquals(new QxwInterface.ConnectionResults(true, "archive", true), session.start());
        assertTrue(session.connectClient());
        assertEquals(7, TestNative.rootSubmapId());
        try (EmulatorControl control = new EmulatorControl()) {
            session.end(control);
        }
    }
}
