package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.util.List;
import org.junit.jupiter.api.Test;

/**
 * A database whose "TopM Node ID" holds text: a value is read only as the type it has, so the
 * text never reaches Java as a node id (its pointer bits would).
 */
@OneSessionTest.Connect(invokeJavaCallbacksForScopingUpdates = true)
class FieldTypeTest extends OneSessionTest {
    @Test
    void aNodeIdOfTheWrongTypeCountsAsNoNode() throws Exception {
        assertEquals(List.of(), callbacks("create-object [{\"id\": 40, \"fields\":"
                + " {\"isInterface\": true, \"TopM Node ID\": \"node 10\"}}]"));
    }
}
