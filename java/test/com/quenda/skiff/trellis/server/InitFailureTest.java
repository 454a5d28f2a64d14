package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.List;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/**
 * QXW_MAP names a file that does not exist at first, so the platform start fails (error 1):
 * connect reports that and returns false, and each later connect tries again, until one
 * succeeds once the file exists.
 */
class InitFailureTest {
    @Test
    void aFailedStartIsReportedAndALaterConnectTriesAgain() throws Exception {
        Path map = Path.of(System.getenv("QXW_MAP"));
        Files.deleteIfExists(map);
        TestSession session = new TestSession();

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

        Files.copy(Path.of(System.getenv("SKIFF_TEST_MAPS"), "read-only.json"), map,
                StandardCopyOption.REPLACE_EXISTING);
        assertEquals(new QxwInterface.ConnectionResults(true, "archive", true),
                session.start(false, false, false));
        assertTrue(session.connectClient());
        assertEquals(7, TestNative.rootSubmapId());
        try (EmulatorControl control = new EmulatorControl()) {
            session.end(control);
        }
    }
}
