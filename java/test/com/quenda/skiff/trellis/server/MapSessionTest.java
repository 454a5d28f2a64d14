package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.MethodOrderer;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;

/**
 * Interface objects created and deleted, maps opened and closed and the end of the session, on
 * map-events.json with scoping updates on. Interfaces 20 and 22 belong to nodes 10 and 11;
 * interface 21 has no "TopM Node ID".
 */
@TestMethodOrder(MethodOrderer.OrderAnnotation.class)
@OneSessionTest.Connect(invokeJavaCallbacksForScopingUpdates = true)
class MapSessionTest extends OneSessionTest {
    private static final String MAPS = System.getenv("SKIFF_TEST_MAPS");

    /** Records the calls of a platform function made so far, from inside a callback. */
    private static void recordCalls(String function) {
        dispatcher.record(function + " calls",
                EmulatorControl.calls(TestNative.emulator("counters"), function));
    }

    /** An interface object, of that node unless it is 0. */
    private static String iface(int id, int node) {
        return "{\"id\": " + id + ", \"fields\": {\"isInterface\": true"
                + (node == 0 ? "" : ", \"TopM Node ID\": " + node) + "}}";
    }

    @Test
    @Order(1)
    void interfacesReachJavaWithTheirNodesThoseWithoutANodeLeftOut() throws Exception {
        record Case(String command, List<String> callbacks, long lookUps) {}
        for (Case c : List.of(
                // The second interface has no node.
                new Case("create-object [" + iface(40, 10) + ", " + iface(41, 0) + ", "
                        + iface(42, 11) + "]",
                        List.of("scopingInterfacesCreatedCB([40, 42], [10, 11])"), 1),
                new Case("create-object " + iface(31, 0), List.of(), 1),
                // Not an interface: the platform's filter keeps it from the handler.
                new Case("create-object {\"id\": 32, \"fields\": {\"TopM Node ID\": 10}}",
                        List.of(), 0),
                new Case("delete-objects 40 32 21",
                        List.of("scopingInterfacesDeletedCB([40, 21])"), 0))) {
            control.ok("reset-counters");
            assertEquals(c.callbacks(), callbacks(c.command()), c.command());
            assertEquals(c.lookUps(), control.calls("QXwDbGetFieldValuesByObjects"), c.command());
        }
    }

    @Test
    @Order(2)
    void anOpenedMapReportsItsRootSubmapBeforeMapOpenCB() throws Exception {
        assertTrue(client.getSubmapAndSymbols(2));
        // Read-only: permissions 1.
        assertEquals(List.of("addSubmap(0, 7, Root, 0, false, )", "mapOpenCB(archive, true, 7)"),
                callbacks("open-map " + Path.of(MAPS, "read-only.json")));
        assertEquals(7, TestNative.rootSubmapId());
        // The mirror holds the new map's root submap alone.
        assertNotNull(dispatcher.getSubmap(7));
        assertNull(dispatcher.getSubmap(1));
        assertNull(dispatcher.getSubmap(2));
        // Opened again, the map reports its root submap and the field values of its three
        // nodes as the session's first request did.
        List<String> log = dispatcher.log();
        List<String> first = new ArrayList<>(log.subList(log.indexOf("connect returned(true)") + 1,
                log.indexOf("first getSubmapAndSymbols answered()")));
        assertEquals(10, first.size(), first.toString());
        first.add("mapOpenCB(map events, false, 1)");
        assertEquals(first, callbacks("open-map " + Path.of(MAPS, "map-events.json")));
        assertEquals(1, TestNative.rootSubmapId());
        assertNull(dispatcher.getSubmap(7));
        assertEquals(3, dispatcher.getSubmap(1).getSymbols().size());
    }

    @Test
    @Order(3)
    void aClosedMapIsAcknowledgedAfterMapCloseCBAlsoWithoutMapInformation() throws Exception {
        control.ok("reset-counters");
        dispatcher.hooks.put("mapCloseCB", () -> recordCalls("QXwAckMapClose"));
        assertEquals(List.of("mapCloseCB(map events, 1)", "QXwAckMapClose calls(0)"),
                callbacks("close-map"));
        dispatcher.hooks.clear();
        assertEquals(1, control.calls("QXwAckMapClose"));
        assertEquals(0, TestNative.rootSubmapId());
        assertNull(dispatcher.getSubmap(1));
        // No map is open: the close event carries no map information.
        assertEquals(List.of(), callbacks("close-map"));
        assertEquals(2, control.calls("QXwAckMapClose"));
    }

    @Test
    @Order(4)
    void theEndOfTheSessionReachesJavaAfterThePlatformSessionClosed() throws Exception {
        // The scoping cache remembers Store's child submap until the session has ended.
        control.ok("open-map " + Path.of(MAPS, "map-events.json"));
        assertEquals(4, session.onDispatcherThread(() -> TestNative.childSubmapId("Store")));
        dispatcher.hooks.put("endSessionCB", () -> {
            recordCalls("QXwDone");
            dispatcher.record("child submap of Store", TestNative.childSubmapId("Store"));
        });
        assertEquals(List.of("endSessionCB()", "QXwDone calls(1)", "child submap of Store(4)",
                "listenForEvents returned()"), logOf(() -> session.end(control)));
        assertEquals(0, TestNative.childSubmapId("Store"));
    }
}
