package com.quenda.skiff.trellis.server;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.Properties;
import java.util.concurrent.ConcurrentHashMap;
import java.util.stream.Collectors;
import java.util.stream.Stream;

/**
 * A dispatcher that records every callback, in order, as "name(arg, arg, ...)", into a log that
 * the tests (and RecordingInterface) can also write to, and then keeps its mirror as the
 * reference dispatcher does. Its row data is "row SYMBOL OBJECT INDEX", or null for a negative
 * property set index.
 */
class RecordingDispatcher extends QxwEventDispatcher {
    /** Texts given to printError, in order (the static printError of this class). */
    static final List<String> printedErrors = new ArrayList<>();

    private final List<String> log = new ArrayList<>();
    /** While set, the id callbacks of the map state requests return null. */
    volatile boolean returnNoIds;
    /**
     * Run right after a callback of that name is recorded, on the thread that made the call; a
     * hook that throws makes the callback throw.
     */
    final Map<String, Runnable> hooks = new ConcurrentHashMap<>();

    void record(String name, Object... args) {
        String text = name + Stream.of(args).map(RecordingDispatcher::show)
                .collect(Collectors.joining(", ", "(", ")"));
        synchronized (log) {
            log.add(text);
        }
        Runnable hook = hooks.get(name);
        if (hook != null) hook.run();
    }

    List<String> log() {
        synchronized (log) {
            return new ArrayList<>(log);
        }
    }

    /** The entries of the log that begin with the prefix. */
    List<String> log(String prefix) {
        return log().stream().filter(entry -> entry.startsWith(prefix)).toList();
    }

    private static String show(Object value) {
        return value instanceof int[] ids ? Arrays.toString(ids) : String.valueOf(value);
    }

    @Override protected Submap addSubmap(int parentObjectId, int submapId, String submapName,
            int layoutStyle, boolean doUseAutoLayout, String backgroundGraphicsFile) {
        record("addSubmap", parentObjectId, submapId, submapName, layoutStyle, doUseAutoLayout,
                backgroundGraphicsFile);
        return super.addSubmap(parentObjectId, submapId, submapName, layoutStyle,
                doUseAutoLayout, backgroundGraphicsFile);
    }

    @Override protected MapNodeSymbol addNodeSymbol(int symbolId, int submapId, String label,
            String annotation, String symbolType, int plane, int status, int objectId,
            int childSubmapId, boolean hidden, int placement, int x, int y, int predSymbolId,
            int customSubmapId) {
        record("addNodeSymbol", symbolId, submapId, label, annotation, symbolType, plane, status,
                objectId, childSubmapId, hidden, placement, x, y, predSymbolId, customSubmapId);
        return super.addNodeSymbol(symbolId, submapId, label, annotation, symbolType, plane,
                status, objectId, childSubmapId, hidden, placement, x, y, predSymbolId,
                customSubmapId);
    }

    @Override protected MapConnectionSymbol addConnectionSymbol(int symbolId, int submapId,
            String label, String symbolType, int plane, int status, int objectId, int childSubmapId,
            boolean hidden, int endpoint1Id, int endpoint2Id) {
        record("addConnectionSymbol", symbolId, submapId, label, symbolType, plane, status,
                objectId, childSubmapId, hidden, endpoint1Id, endpoint2Id);
        return super.addConnectionSymbol(symbolId, submapId, label, symbolType, plane, status,
                objectId, childSubmapId, hidden, endpoint1Id, endpoint2Id);
    }

    @Override protected boolean submapInCache(int submapId) {
        record("submapInCache", submapId);
        return super.submapInCache(submapId);
    }

    @Override protected boolean qxwdbObjectFieldValuesInCache(int objectId) {
        record("qxwdbObjectFieldValuesInCache", objectId);
        return super.qxwdbObjectFieldValuesInCache(objectId);
    }

    @Override protected void setQxwdbObjectFieldValues(int objectId, Properties fieldValues) {
        record("setQxwdbObjectFieldValues", objectId, fieldValues);
        super.setQxwdbObjectFieldValues(objectId, fieldValues);
    }

    @Override protected String getSymbolRowData(int symbolId, int objectId, int propertySetIndex) {
        record("getSymbolRowData", symbolId, objectId, propertySetIndex);
        return propertySetIndex < 0 ? null
                : "row " + symbolId + " " + objectId + " " + propertySetIndex;
    }

    private int[] answerIds(int[] stored) {
        return returnNoIds ? null : stored;
    }

    @Override protected int[] getManageObjectList(int numObjs) {
        record("getManageObjectList", numObjs);
        return answerIds(super.getManageObjectList(numObjs));
    }

    @Override protected int[] getAckObjectList(int numObjs) {
        record("getAckObjectList", numObjs);
        return answerIds(super.getAckObjectList(numObjs));
    }

    @Override protected int[] getVisibilityStateSymbolIds() {
        record("getVisibilityStateSymbolIds");
        return answerIds(super.getVisibilityStateSymbolIds());
    }

    @Override protected int[] getInterfaceAndNodeVisibilityStateObjectIds() {
        record("getInterfaceAndNodeVisibilityStateObjectIds");
        return answerIds(super.getInterfaceAndNodeVisibilityStateObjectIds());
    }

    @Override protected int[] getDeleteSymbolsObjectIds() {
        record("getDeleteSymbolsObjectIds");
        return answerIds(super.getDeleteSymbolsObjectIds());
    }

    @Override protected void beginMapSync() {
        record("beginMapSync");
        super.beginMapSync();
    }

    @Override protected void endMapSync() {
        record("endMapSync");
        super.endMapSync();
    }

    @Override protected void synchronizeLayoutAppearance(int submapId) {
        record("synchronizeLayoutAppearance", submapId);
    }

    @Override protected void symbolHiddenCB(int symbolId, int submapId, boolean isNode) {
        record("symbolHiddenCB", symbolId, submapId, isNode);
        super.symbolHiddenCB(symbolId, submapId, isNode);
    }

    @Override protected void symbolUnhiddenCB(int symbolId, int submapId, boolean isNode) {
        record("symbolUnhiddenCB", symbolId, submapId, isNode);
        super.symbolUnhiddenCB(symbolId, submapId, isNode);
    }

    @Override protected void symbolStatusChangeCB(int symbolId, int submapId, int status,
            boolean isNode) {
        record("symbolStatusChangeCB", symbolId, submapId, status, isNode);
        super.symbolStatusChangeCB(symbolId, submapId, status, isNode);
    }

    @Override protected void symbolCreatedCB(MapSymbol symbol, int submapId) {
        record("symbolCreatedCB", symbol, submapId);
        super.symbolCreatedCB(symbol, submapId);
    }

    @Override protected void symbolDeletedCB(int symbolId, int submapId, boolean isNode) {
        record("symbolDeletedCB", symbolId, submapId, isNode);
        super.symbolDeletedCB(symbolId, submapId, isNode);
    }

    @Override protected void symbolMovedCB(int symbolId, int submapId, int placement, int x, int y,
            int predSymbolId, boolean fromMoveEvent, boolean moreToFollow, boolean fromRefresh) {
        record("symbolMovedCB", symbolId, submapId, placement, x, y, predSymbolId, fromMoveEvent,
                moreToFollow, fromRefresh);
        super.symbolMovedCB(symbolId, submapId, placement, x, y, predSymbolId, fromMoveEvent,
                moreToFollow, fromRefresh);
    }

    @Override protected void symbolNormalizeChangeCB(int symbolId, int submapId,
            boolean isNormalized) {
        record("symbolNormalizeChangeCB", symbolId, submapId, isNormalized);
        super.symbolNormalizeChangeCB(symbolId, submapId, isNormalized);
    }

    @Override protected void submapCreatedCB(int submapId, int parentObjectId) {
        record("submapCreatedCB", submapId, parentObjectId);
        super.submapCreatedCB(submapId, parentObjectId);
    }

    @Override protected void submapDeletedCB(int submapId, int parentObjectId) {
        record("submapDeletedCB", submapId, parentObjectId);
        super.submapDeletedCB(submapId, parentObjectId);
    }

    @Override protected void submapAutoLayoutChangeCB(int submapId, int parentObjectId,
            boolean layoutOn) {
        record("submapAutoLayoutChangeCB", submapId, parentObjectId, layoutOn);
        super.submapAutoLayoutChangeCB(submapId, parentObjectId, layoutOn);
    }

    @Override protected void mapOpenCB(String mapName, boolean isReadOnly, int rootSubmapId) {
        record("mapOpenCB", mapName, isReadOnly, rootSubmapId);
        super.mapOpenCB(mapName, isReadOnly, rootSubmapId);
    }

    @Override protected void mapCloseCB(String mapName, int rootSubmapId) {
        record("mapCloseCB", mapName, rootSubmapId);
        super.mapCloseCB(mapName, rootSubmapId);
    }

    @Override protected void endSessionCB() {
        record("endSessionCB");
        super.endSessionCB();
    }

    @Override protected void scopingNetworkCreatedCB(int networkObjectId,
            int[] parentLocationObjectIds) {
        record("scopingNetworkCreatedCB", networkObjectId, parentLocationObjectIds);
        super.scopingNetworkCreatedCB(networkObjectId, parentLocationObjectIds);
    }

    @Override protected void scopingInterfacesCreatedCB(int[] interfaceObjectIds,
            int[] nodeObjectIds) {
        record("scopingInterfacesCreatedCB", interfaceObjectIds, nodeObjectIds);
    }

    @Override protected void scopingInterfacesDeletedCB(int[] interfaceObjectIds) {
        record("scopingInterfacesDeletedCB", (Object) interfaceObjectIds);
    }

    /** Hides the dispatcher's printError: the native library calls this one. */
    public static void printError(String errorText) {
        synchronized (printedErrors) {
            printedErrors.add(errorText);
        }
    }
}
