package com.quenda.skiff.trellis.server;

import static com.quenda.skiff.trellis.server.FaultMatrixTest.Op.*;
import static com.quenda.skiff.trellis.server.FoundSymbol.Category.OBJECTNAME;
import static com.quenda.skiff.trellis.server.FoundSymbol.MatchType.MATCH_WILDCARD;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTimeoutPreemptively;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import java.util.ArrayList;
import java.util.EnumMap;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.TreeSet;
import java.util.concurrent.Callable;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.MethodOrderer;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

/**
 * Faults on the default map, each case from the same start (the map opened afresh, submaps 1, 5,
 * 7 and 8 loaded, location tracking and scoping updates on): a platform function fails during a
 * request or an event that calls it, or a callback throws once, before or after its work. No
 * case crashes or hangs, each writes exactly the documented message, every beginMapSync gets its
 * endMapSync, and once the fault is over, asking again answers as without it and reports the
 * loaded submaps as the platform has them, with every platform record released.
 */
@TestMethodOrder(MethodOrderer.OrderAnnotation.class)
@OneSessionTest.Connect(invokeJavaCallbacksForScopingUpdates = true,
        setLocationIDFieldInCallbacks = true, syncLocationIDFieldInSubLocations = true,
        syncLocationIDFieldInNetworks = true)
class FaultMatrixTest extends OneSessionTest {
    private static final Duration TIMEOUT = Duration.ofSeconds(TestSession.TIMEOUT_SECONDS);
    private static final int[] LOADED = {1, 5, 7, 8};
    private static final List<String> END = List.of("QXwDone", "QXwRemoveInput");

    /**
     * What a case does, and what it answers: a query's result; the map after a request that
     * changes it; nothing for map events.
     */
    enum Op {
        SUBMAP(() -> client.getSubmapAndSymbols(6)),
        ROW(() -> client.getSymbolRowData(9, 7, 0)),
        SEARCH(() -> client.getMatchingSymbols(OBJECTNAME, MATCH_WILDCARD, "host-1*",
                "Location 1")),
        OTHERS(() -> client.getOtherSymbols(9, 7, "Location 1")),
        SYMBOL_PATH(() -> client.getSymbolParentPath(7, 8, "Location 1.1")),
        NODE_PATH(() -> List.of(client.getNodeParentPath("host-1.campus.example", ""),
                client.getNodeParentPath("10.0.1.3", ""))),
        NODE_SYMBOL(() -> logOf(() -> client.getNodeSymbol(99, "host-2", "10.0.1.Segment1"))
                .stream().filter(e -> e.startsWith("addNodeSymbol")).toList()),
        LOCATIONS(() -> client.getLocationScopingInfo()),
        ACK(() -> client.setAcknowledgeState(new int[] {7}, true)),
        MANAGE(() -> client.setManageState(new int[] {7}, false)),
        VISIBILITY(() -> client.setSymbolVisibilityState(new int[] {10}, true)),
        INTERFACES(() -> client.setInterfaceAndNodeVisibilityState(new int[] {8, 9}, true)),
        DELETE_ALL(() -> client.deleteAllSymbolsForObjects(new int[] {10})),
        PRINT(() -> TestNative.printError(false, null, "printed")),
        HIDE("hide 9"), UNHIDE("unhide 9"), STATUS("status 3 9"), DELETE("delete-symbols 13"),
        // A network object new to Java, and a symbol of it on Location 1.1's submap.
        CREATE("create-object {\"id\": 901, \"fields\": {\"Selection Name\": \"10.0.9\","
                + " \"isNetwork\": true}}", "create-symbol {\"id\": 900, \"submap\": 5, \"object\":"
                + " 901, \"type\": \"Network:IP\", \"variety\": 1, \"plane\": 2, \"apps\": [\"IP"
                + " Map\"], \"placement\": 1}"),
        MOVE("move 9 1 40 50"), NORMALIZE("normalize 9 1"), AUTOLAYOUT("autolayout 7 1"),
        CREATE_SUBMAP("create-submap {\"id\": 900, \"parentObject\": 38}"),
        DELETE_SUBMAP("delete-submaps 9"),
        CREATE_INTERFACE("create-object {\"id\": 902, \"fields\": {\"isInterface\": true,"
                + " \"TopM Node ID\": 7}}"),
        DELETE_INTERFACE("delete-objects 8"), OPEN("open-map"), CLOSE("close-map");

        final Callable<Object> answer;

        Op(Callable<Object> query) {
            answer = query;
        }

        Op(TestNative.Action request) {
            answer = () -> {
                request.run();
                control.ok("sync");
                return control.ok("dump");
            };
        }

        Op(String... commands) {
            answer = () -> {
                for (String command : commands) control.ok(command);
                return null;
            };
        }
    }

    /**
     * A fault during an operation: a platform function failing (`when` null), or a callback
     * throwing "before" or "after" its work; and what it writes (a callback, after the exception).
     */
    record Row(String name, Op op, String when, String stderr) {}

    /**
     * Rows: a platform function, then the operations during which it fails; or an operation, then
     * the callbacks that throw during it (qxwdbObjectInCache is never called; endSessionCB:
     * theEndOfTheSession).
     */
    static final String TABLE = """
            QXwGetSubmapInfo SUBMAP SEARCH OTHERS SYMBOL_PATH NODE_PATH LOCATIONS CREATE OPEN
            QXwListSymbols SUBMAP INTERFACES HIDE UNHIDE CREATE DELETE MOVE AUTOLAYOUT OPEN
            QXwListSymbols DELETE_INTERFACE
            QXwGetSymbolsByObject SEARCH OTHERS SYMBOL_PATH NODE_PATH NODE_SYMBOL LOCATIONS
            QXwGetSymbolsByObject INTERFACES DELETE_ALL CREATE OPEN
            QXwGetObjectInfo SEARCH OTHERS SYMBOL_PATH NODE_SYMBOL LOCATIONS INTERFACES CREATE
            QXwDbSelectionNameToObjectId SEARCH OTHERS SYMBOL_PATH NODE_PATH NODE_SYMBOL
            QXwDbSelectionNameToObjectId LOCATIONS CREATE
            QXwDbObjectIdToSelectionName SEARCH OTHERS NODE_PATH
            QXwDbHostnameToObjectId NODE_PATH
            QXwDbListObjectsByFieldValues NODE_PATH INTERFACES
            QXwDbGetFieldIntegerValue NODE_PATH
            QXwDbGetCapabilityFieldValues NODE_PATH SYMBOL_PATH
            QXwDbListObjectsByFieldValue LOCATIONS OPEN
            QXwDbSetFieldIntegerValue CREATE OPEN
            QXwDbGetFieldValues SUBMAP CREATE
            QXwDbGetFieldValuesByObjects INTERFACES CREATE_INTERFACE
            skCollectionEvaluate SEARCH
            QXwGetMapInfo OPEN CLOSE
            QXwAckMapClose CLOSE
            HIDE beginMapSync endMapSync submapInCache synchronizeLayoutAppearance symbolHiddenCB
            UNHIDE symbolUnhiddenCB; STATUS symbolStatusChangeCB; DELETE symbolDeletedCB
            CREATE symbolCreatedCB scopingNetworkCreatedCB; MOVE symbolMovedCB
            NORMALIZE symbolNormalizeChangeCB; AUTOLAYOUT submapAutoLayoutChangeCB
            CREATE_SUBMAP submapCreatedCB; DELETE_SUBMAP submapDeletedCB
            CREATE_INTERFACE scopingInterfacesCreatedCB; DELETE_INTERFACE scopingInterfacesDeletedCB
            OPEN mapOpenCB; CLOSE mapCloseCB; ROW getSymbolRowData; PRINT printError
            SUBMAP addSubmap addNodeSymbol addConnectionSymbol qxwdbObjectFieldValuesInCache
            SUBMAP setQxwdbObjectFieldValues; SEARCH addFoundSymbolInfo getRootObjectSelectionNames
            SYMBOL_PATH addParentPathInfo; LOCATIONS addParentLocationInfo; ACK getAckObjectList
            MANAGE getManageObjectList; VISIBILITY getVisibilityStateSymbolIds
            INTERFACES getInterfaceAndNodeVisibilityStateObjectIds
            DELETE_ALL getDeleteSymbolsObjectIds
            """;

    private static final String UNKNOWN = "The object with %s is not a Location, Network, Segment"
            + " or Node, ignoring...\n";
    private static final String NO_CHILD = "QxwEventDispatcher::"
            + "GetAssociatedIPMapSymbolsInvolvedInVisibilityChange segmentObjectId=6 has no child"
            + " submap!\n";
    // Synchronizing the Location ID fields finds no place of any location or network.
    private static final String NO_PLACE = Stream.of("Location 1 (oid:3", "Location 1.1 (oid:4",
            "Location 2 (oid:44", "Location 2.1 (oid:45", "IP Internet (oid:1", "10.0.1 (oid:5",
            "10.0.2 (oid:20", "10.0.3 (oid:46", "10.0.4 (oid:61").map(o -> "Object " + o
                    + ") has 0 symbol(s) attached (but should have exactly 1 attached)\n")
            .collect(Collectors.joining());

    /** What the rows that write something write, by "name OPERATION". */
    static final Map<String, String> MESSAGES = Map.ofEntries(
            Map.entry("QXwGetSubmapInfo NODE_PATH", ("GetTopMostIPMapSymbolForObject: could not"
                    + " find symbol to use for object [host-1]\n").repeat(2)),
            Map.entry("QXwGetSubmapInfo OPEN", NO_PLACE),
            Map.entry("QXwGetSymbolsByObject OPEN", NO_PLACE),
            Map.entry("QXwGetObjectInfo NODE_SYMBOL", "GetSymbolForObject: could not find symbol"
                    + " [host-2] within child submap of object [10.0.1.Segment1]\n"),
            Map.entry("QXwGetObjectInfo INTERFACES", NO_CHILD.repeat(2)),
            Map.entry("QXwDbGetCapabilityFieldValues NODE_PATH",
                    String.format(UNKNOWN, "Selection Name 'host-1'").repeat(2)),
            Map.entry("QXwDbGetCapabilityFieldValues SYMBOL_PATH",
                    String.format(UNKNOWN, "object id '4'")),
            Map.entry("QXwDbGetFieldValuesByObjects INTERFACES", "Problem in"
                    + " SetInterfaceAndNodeVisibilityState\n numInterfaceObjects:2"
                    + " pNodeObjectFieldList:0 (count:0)\n pSegmentObjectFieldList:0 (count:0)\n"
                    + " pNetworkObjectFieldList:0 (count:0)\n"),
            Map.entry("getRootObjectSelectionNames SEARCH", "QxwEventDispatcher::"
                    + "GetRootSubmapsHashtable failed, numRootObjects=1, arrayLength=0\n"),
            Map.entry("getAckObjectList ACK", failed("SetAcknowledgeState", "numObjs=1, objSize")),
            Map.entry("getManageObjectList MANAGE", failed("SetManageState", "numObjs=1, objSize")),
            Map.entry("getVisibilityStateSymbolIds VISIBILITY",
                    failed("SetSymbolVisibilityState", "numSymbols=1, arraySize")),
            Map.entry("getInterfaceAndNodeVisibilityStateObjectIds INTERFACES",
                    failed("SetInterfaceAndNodeVisibilityState",
                            "numInterfaceObjects=2, arraySize")),
            Map.entry("getDeleteSymbolsObjectIds DELETE_ALL",
                    failed("DeleteAllSymbolsForObjects", "numObjects=1, arraySize")));

    /** A map state request's line for an id array it did not get. */
    private static String failed(String operation, String sizes) {
        return "QxwEventDispatcher::" + operation + " failed, " + sizes + "=-1\n";
    }

    /**
     * Not injectable: the platform reports no failure of the functions that give records back,
     * of the error look-ups, or of closing the collection service.
     */
    static final String NOT_INJECTABLE = "QXwFreeMapInfo QXwFreeSymbolList QXwFreeSubmapInfo"
            + " QXwFreeObjectInfo QXwDbFreeFieldBindList QXwDbFreeObjectFieldList"
            + " QXwDbFreeObjectIdList QXwDbFreeFieldList QXwDbFreeFieldInfo QXwDbFreeEnumConstants"
            + " QXwError QXwErrorMsg skCollectionDone";

    /**
     * Failures that other tests make, each line the test, then its functions: those called at
     * start-up only (and for fields missing from the list taken then), once per enumeration
     * field, at the end of the session, or handled alike in every request that calls them.
     */
    static final String COVERED = """
            InitFailureTest QXwInit
            RegistrationFailureTest QXwAddCallback
            InputRegistrationFailureTest QXwAddInput
            StartupTest QXwProcessEvent QXwDbFieldNameToFieldId
            fieldinfocache_test QXwDbListFields QXwDbGetFieldInfo
            FieldValuesTest QXwDbGetEnumConstants
            SearchTest skCollectionOpen
            theEndOfTheSession QXwDone QXwRemoveInput
            ChannelTest QXwSetObjectAckState _QXwManageObjects _QXwUnmanageObjects
            ChannelTest QXwSetSymbolsVisibility QXwDeleteSymbols
            """;

    static Stream<Row> rows() {
        return TABLE.lines().flatMap(line -> Stream.of(line.split("; "))).flatMap(line -> {
            String[] w = line.split(" ");
            boolean callbacks = w[0].matches("[A-Z_]+");
            return Stream.of(w).skip(1).flatMap(name -> callbacks
                    ? Stream.of("before", "after").map(when -> row(name, w[0], when))
                    : Stream.of(row(w[0], name, null)));
        });
    }

    private static Row row(String name, String op, String when) {
        String stderr = MESSAGES.getOrDefault(name + " " + op, "");
        return new Row(name, Op.valueOf(op), when, when == null ? stderr : thrown(name) + stderr);
    }

    /** What each operation answers from the start every case has. */
    private static final Map<Op, Object> expected = new EnumMap<>(Op.class);

    @Test
    @Order(1)
    void everyPlatformFunctionTheLibraryCallsHasItsRows() throws Exception {
        Set<String> called;
        try (Stream<String> lines = Files.lines(Path.of(System.getenv("SKIFF_PLATFORM_CALLS")))) {
            called = lines.map(line -> line.trim().replaceFirst("^U +", "").replaceFirst("@.*", ""))
                    .filter(name -> name.matches("_?QXw\\w+|sk\\w+"))
                    .collect(Collectors.toCollection(TreeSet::new));
        }
        Set<String> named = new TreeSet<>(List.of(NOT_INJECTABLE.split(" ")));
        COVERED.lines().forEach(line -> named.addAll(List.of(line.split(" ", 2)[1].split(" "))));
        rows().filter(row -> row.when() == null).forEach(row -> named.add(row.name()));
        assertEquals(called, named);
    }

    @ParameterizedTest(name = "{0}")
    @MethodSource("rows")
    @Order(2)
    void aFault(Row row) throws Exception {
        Object answer = expected(row.op());
        startAfresh();
        long records = control.records();
        control.ok("reset-counters");
        AtomicBoolean thrown = new AtomicBoolean();
        if (row.when() == null) {
            // More calls than any operation makes.
            control.ok("fail " + row.name() + " 1 1000");
        } else {
            (row.when().equals("after") ? dispatcher.afterHooks : dispatcher.hooks).put(
                    row.name(), () -> {
                        if (!thrown.getAndSet(true)) throw new IllegalStateException(row.name());
                    });
        }
        try {
            String stderr = run(row.op());
            if (row.stderr().equals(NO_PLACE)) {
                // One line per object, in the order the platform lists the objects.
                assertEquals(NO_PLACE.lines().sorted().toList(), stderr.lines().sorted().toList());
            } else {
                assertEquals(row.stderr(), stderr);
            }
            assertTrue(row.when() == null ? control.calls(row.name()) > 0 : thrown.get(),
                    "the operation calls it");
        } finally {
            if (row.when() == null) control.ok("fail " + row.name() + " off");
            dispatcher.hooks.clear();
            dispatcher.afterHooks.clear();
        }
        // An override of endMapSync that throws before calling the one it overrides leaves the
        // mirror locked, against its contract: unlocked here, on the thread that locked it.
        if (row.name().equals("endMapSync") && row.when().equals("before")) {
            session.onDispatcherThread(() -> {
                dispatcher.endMapSync();
                return null;
            });
        }
        assertServing(row.op(), answer);
        assertEquals(records, control.records(), "platform records not released");
    }

    @Test
    @Order(3)
    void theEndOfTheSession() throws Exception {
        control.ok("reset-counters");
        for (String function : END) control.ok("fail " + function + " 1 1000");
        dispatcher.hooks.put("endSessionCB", () -> {
            throw new IllegalStateException("endSessionCB");
        });
        assertEquals(thrown("endSessionCB"), normalized(TestNative.captureStderr(() -> {
            control.ok("end-session");
            session.awaitEnd();
        })));
        String counters = TestNative.emulator("counters");
        for (String function : END) assertEquals(1, EmulatorControl.calls(counters, function));
        // No request is served any more: each fails at once.
        assertTimeoutPreemptively(TIMEOUT, () -> TestNative.captureStderr(
                () -> assertFalse(client.getSymbolRowData(9, 7, 0))));
    }

    /** The map opened afresh with the submaps of every case's start loaded. */
    private static void startAfresh() throws Exception {
        // The scoping cache forgets the objects the cases name, looked up while they are gone.
        control.ok("delete-objects 1 3 4");
        client.getSymbolParentPath(1, 1, "IP Internet", "Location 1", "Location 1.1");
        control.ok("open-map");
        control.ok("sync");
        for (int submapId : LOADED) assertTrue(client.getSubmapAndSymbols(submapId));
    }

    private static Object expected(Op op) throws Exception {
        if (!expected.containsKey(op)) {
            startAfresh();
            expected.put(op, op.answer.call());
        }
        return expected.get(op);
    }

    /**
     * Runs the operation, within the time limit, to its last event, and checks that each
     * beginMapSync it made was followed by its endMapSync; what it wrote, without stack traces.
     */
    private static String run(Op op) throws Exception {
        List<String> log = new ArrayList<>();
        String stderr = TestNative.captureStderr(() -> assertTimeoutPreemptively(TIMEOUT,
                () -> log.addAll(logOf(() -> {
                    op.answer.call();
                    control.ok("sync");
                }))));
        assertTrue(log.stream().filter(e -> e.endsWith("MapSync()")).map(e -> e.substring(0, 1))
                .collect(Collectors.joining()).matches("(be)*"), log.toString());
        return normalized(stderr);
    }

    private static String thrown(String callback) {
        return "Java method " + callback + " threw an exception\nException in thread \"T\""
                + " java.lang.IllegalStateException: " + callback + "\n";
    }

    private static String normalized(String stderr) {
        return stderr.replaceAll("(?m)^\t(at |\\.\\.\\. ).*\n", "")
                .replaceAll("Exception in thread \"[^\"]*\"", "Exception in thread \"T\"");
    }

    /** Asking again answers as at the start, and the loaded submaps are the platform's. */
    private static void assertServing(Op op, Object answer) throws Exception {
        if (op == CLOSE) {
            control.ok("open-map");
            control.ok("sync");
        }
        assertTimeoutPreemptively(TIMEOUT, () -> {
            if (answer != null) assertEquals(answer, op.answer.call(), "asked again");
            assertTrue(client.getSubmapAndSymbols(0), "the root submap, asked for as 0");
            MapDump map = MapDump.of(control);
            for (int submapId : LOADED) {
                if (!map.submaps.containsKey((long) submapId)) continue;
                assertTrue(client.getSubmapAndSymbols(submapId), "submap " + submapId);
                assertEquals(map.symbolsOn(submapId), dispatcher.getSubmap(submapId).getSymbols()
                        .stream().map(MapDump::describe).sorted(MapDump.BY_ID).toList(),
                        "submap " + submapId);
            }
        });
    }
}
