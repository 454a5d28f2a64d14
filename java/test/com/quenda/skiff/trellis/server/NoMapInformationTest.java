package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.Test;

/** A platform start that fails with error 2 (QXW_INIT_ERROR=2) gives a usable session. */
class NoMapInformationTest {
    @Test
    void theSessionIsUsableWithAnEmptyReadOnlyMapAndRootSubmapZero() throws Exception {
        TestSession session = new TestSession(null);
        String stderr = TestNative.captureStderr(() -> {
            assertEquals(new QxwInterface.ConnectionResults(true, "", true), session.start());
            assertTrue(session.connectClient());
        });
        assertEquals("", stderr, "no field ids are looked up without a map");
        assertEquals(0, TestNative.rootSubmapId());
        assertTrue(session.client.getSymbolRowData(5, 6, 7));
        try (EmulatorControl control = new EmulatorControl()) {
            session.end(control);
        }
    }
}
