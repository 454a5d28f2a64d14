package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.Test;

/**
 * A database without "TopM Network ID" and "Location ID" (QXW_MAP=no-network-id.json) still
 * starts, naming each missing field once, in the order they are resolved.
 */
class MissingFieldTest {
    @Test
    void startsAndNamesTheMissingField() throws Exception {
        TestSession session = new TestSession();
        String stderr = TestNative.captureStderr(() -> {
            assertEquals(new QxwInterface.ConnectionResults(true, "no network id", false),
                    session.start(false, false, false));
            assertTrue(session.connectClient());
        });
        assertEquals("Could not obtain field id for field: TopM Network ID\n"
                + "Could not obtain field id for field: Location ID\n", stderr);
        assertTrue(session.client.getSymbolRowData(1, 2, 3));
        try (EmulatorControl control = new EmulatorControl()) {
            session.end(control);
        }
    }
}
