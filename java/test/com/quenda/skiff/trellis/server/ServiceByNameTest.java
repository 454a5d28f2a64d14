package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.quenda.skiff.trellis.TrellisProtocol;
import org.junit.jupiter.api.Test;

/** Service look-up in the system's services database. */
class ServiceByNameTest {
    @Test
    void aListedServiceGivesItsPortInHostOrder() throws Exception {
        String stderr = TestNative.captureStderr(() -> {
            assertEquals(22, TrellisProtocol.getServiceByName("ssh"));
            assertEquals(0, TrellisProtocol.getServiceByName(null));
        });
        assertEquals("", stderr, "a null name is not looked up");
    }

    @Test
    void anUnknownServiceGivesZeroAndAMessage() throws Exception {
        String stderr = TestNative.captureStderr(
                () -> assertEquals(0, TrellisProtocol.getServiceByName("no-such-service")));
        assertTrue(stderr.matches("getServiceByName: getservbyname\\(\\) failed \\(error:\\d+\\)\n"),
                stderr);
    }
}
