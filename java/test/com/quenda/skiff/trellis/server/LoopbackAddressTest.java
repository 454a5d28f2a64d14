package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.Test;

/**
 * The platform resolves the local host to 127.0.1.1 here (a preloaded resolver): the client
 * still reaches the request server, which listens on 127.0.0.1 alone.
 */
class LoopbackAddressTest extends OneSessionTest {
    @Test
    void theClientReachesTheServerWhereverTheHostNameResolves() {
        assertTrue(client.getSymbolRowData(1, 2, 3));
    }
}
