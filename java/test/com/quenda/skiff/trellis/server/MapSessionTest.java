package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Path;
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

    @Test
    @Order(1)
    void createdInterfacesReachJavaWithTheirNodesThoseWithoutANodeLeftOut() throws Exception {
        // Three interface objects in one event, the second without a node.
        assertEquals(List.of("scopingInterfacesCreatedCB([40, 42], [10, 11])"),
                callbacks("create-object ["
                        + "{\"id\": 40, \"fields\": {\"isInterface\": true, \"TopM Node ID\": 10}},"
                        + " {\"id\": 41, \"fields\": {\"isInterface\": true}},"
                        + " {\"id\": 42, \"fields\": {\"isInterface\": true, \"TopM Node ID\": 11}}]"));

        record Case(String object, List<String> callbacks, long lookUps) {}
        for (Case c : List.of(
                new Case("{\"id\": 30, \"fields\": {\"isInterface\": true, \"TopM Node ID\": 10}}",
                        List.of("scopingInterfacesCreatedCB([30], [10])"), 1),
                new Case("{\"id\": 31, \"fields\": {\"isInterface\": true}}", List.of(), 1),
                // Not an interface: the platform's filter keeps it from the handler.
                new Case("{\"id\": 32, \"fields\": {\"TopM Node ID\": 10}}", List.of(), 0))) {
            control.ok("reset-counters");
            assertEquals(c.callbacks(), callbacks("create-object " + c.object()),
                    c.object());
            assertEquals(c.lookUps(), control.calls("QXwDbGetFieldValuesByObjects"), c.object());
        }
    }

    @Test
    @Order(2)
    void deletedInterfacesReachJavaWithoutALookUp() throws Exception {
        control.ok("reset-counters");
        assertEquals(List.of("scopingInterfacesDeletedCB([30, 21])"),
                callbacks("delete-objects 30 32 21"));
        assertEquals(0, control.calls("QXwDbGetFieldValuesByObjects"));
    }

    @Test
    @Order(3)
    void verboseModeNamesTheInterfaceHandlers() throws Exception {
        client.open(false, true, false);
        try {
            assertEquals("QxwEventDispatcher::CreateInterfaceObjectsCB\n"
                    + "QxwEventDispatcher::DeleteInterfaceObjectsCB\n",
                    TestNative.captureStderr(() -> callbacks(
                            "create-object {\"id\": 33, \"fields\": {\"isInterface\": true}}",
                            "delete-objects 33")));
        } finally {
            client.open(false, false, false);
        }
    }

    @Test
    @Order(4)
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

        assertEquals(List.of("addSubmap(0, 1, Root, 0, false, )",
                "addNodeSymbol(100, 1, Campus, , Location:Campus, 2, 0, 1, 2, false, 1, 10, 20, 0,"
                        + " 0)",
                "qxwdbObjectFieldValuesInCache(1)",
                "setQxwdbObjectFieldValues(1, {Selection Name=Campus})",
                "addNodeSymbol(101, 1, Lab, , Location:Building, 2, 0, 2, 3, false, 1, 30, 20, 0,"
                        + " 0)",
                "qxwdbObjectFieldValuesInCache(2)",
                "setQxwdbObjectFieldValues(2, {Selection Name=Lab})",
                "addNodeSymbol(102, 1, Store, , Location:Building, 2, 0, 3, 4, false, 2, 0, 0, 101,"
                        + " 0)",
                "qxwdbObjectFieldValuesInCache(3)",
                "setQxwdbObjectFieldValues(3, {Selection Name=Store})",
                "mapOpenCB(map events, false, 1)"),
                callbacks("open-map " + Path.of(MAPS, "map-events.json")));
        assertEquals(1, TestNative.rootSubmapId());
        assertNull(dispatcher.getSubmap(7));
        assertEquals(3, dispatcher.getSubmap(1).getSymbols().size());
    }

    @Test
    @Order(5)
    void aClosedMapIsAcknowledgedAfterMapCloseCBAlsoWithoutMapInformation() throws Exception {
        control.ok("reset-counters");
        dispatcher.hooks.put("mapCloseCB", () -> recordCalls("QXwAckMapClose"));
        try {
            assertEquals(List.of("mapCloseCB(map events, 1)", "QXwAckMapClose calls(0)"),
                    callbacks("close-map"));
            assertEquals(1, control.calls("QXwAckMapClose"));
            assertEquals(0, TestNative.rootSubmapId());
            assertNull(dispatcher.getSubmap(1));
            // No map is open: the close event carries no map information.
            assertEquals(List.of(), callbacks("close-map"));
            assertEquals(2, control.calls("QXwAckMapClose"));
        } finally {
            dispatcher.hooks.clear();
        }
        client.open(false, true, false);
        try {
            assertEquals("MapCloseCB\n",
                    TestNative.captureStderr(() -> callbacks("close-map")));
        } finally {
            client.open(false, false, false);
        }
    }

    @Test
    @Order(6)
    void theEndOfTheSessionReachesJavaAfterThePlatformSessionClosed() throws Exception {
        // The scoping cache remembers Store's child submap until the session has ended.
        control.ok("open-map " + Path.of(MAPS, "map-events.json"));
        assertEquals(4, session.onDispatcherThread(() -> TestNative.childSubmapId("Store")));
        dispatcher.hooks.put("endSessionCB", () -> {
            recordCalls("QXwDone");
            dispatcher.record("child submap of Store", TestNative.childSubmapId("Store"));
        });
        int before = dispatcher.log().size();
        session.end(control);
        List<String> log = dispatcher.log();
        assertEquals(List.of("endSessionCB()", "QXwDone calls(1)", "child submap of Store(4)",
                "listenForEvents returned()"), log.subList(before, log.size()));
        assertEquals(0, TestNative.childSubmapId("Store"));
    }
}
