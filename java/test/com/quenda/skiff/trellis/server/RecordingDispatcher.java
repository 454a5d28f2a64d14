package com.quenda.skiff.trellis.server;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.Properties;
import java.util.concurrent.ConcurrentHashMap;
import java.util.function.Supplier;
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
    /** The dispatcher made last: the static printError records and hooks as this one does. */
    private static volatile RecordingDispatcher latest;

    private final List<String> log = new ArrayList<>();
    /**
     * Run right after a callback of that name is recorded, before its work, on the thread that
     * made the call; a hook that throws makes the callback throw.
     */
    final Map<String, Runnable> hooks = new ConcurrentHashMap<>();
    /** The same, run after the callback's work (the reference dispatcher's, or this one's). */
    final Map<String, Runnable> afterHooks = new ConcurrentHashMap<>();

    RecordingDispatcher() {
        latest = this;
    }

    void record(String name, Object... args) {
        String text = name + Stream.of(args).map(RecordingDispatcher::show)
                .collect(Collectors.joining(", ", "(", ")"));
        synchronized (log) {
            log.add(text);
        }
        Runnable hook = hooks.get(name);
        if (hook != null) hook.run();
    }

    /** Records the callback, does its work, runs its after-hook and returns what the work did. */
    private <T> T answer(String name, Supplier<T> work, Object... args) {
        record(name, args);
        T result = work.get();
        Runnable hook = afterHooks.get(name);
        if (hook != null) hook.run();
        return result;
    }

    private void call(String name, Runnable work, Object... args) {
        answer(name, () -> {
            work.run();
            return null;
        }, args);
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
        return answer("addSubmap", () -> super.addSubmap(parentObjectId, submapId, submapName,
                layoutStyle, doUseAutoLayout, backgroundGraphicsFile), parentObjectId, submapId,
                submapName, layoutStyle, doUseAutoLayout, backgroundGraphicsFile);
    }

    @Override protected MapNodeSymbol addNodeSymbol(int symbolId, int submapId, String label,
            String annotation, String symbolType, int plane, int status, int objectId,
            int childSubmapId, boolean hidden, int placement, int x, int y, int predSymbolId,
            int customSubmapId) {
        return answer("addNodeSymbol", () -> super.addNodeSymbol(symbolId, submapId, label,
                annotation, symbolType, plane, status, objectId, childSubmapId, hidden, placement,
                x, y, predSymbolId, customSubmapId), symbolId, submapId, label, annotation,
                symbolType, plane, status, objectId, childSubmapId, hidden, placement, x, y,
                predSymbolId, customSubmapId);
    }

    @Override protected MapConnectionSymbol addConnectionSymbol(int symbolId, int submapId,
            String label, String symbolType, int plane, int status, int objectId, int childSubmapId,
            boolean hidden, int endpoint1Id, int endpoint2Id) {
        return answer("addConnectionSymbol", () -> super.addConnectionSymbol(symbolId, submapId,
                label, symbolType, plane, status, objectId, childSubmapId, hidden, endpoint1Id,
                endpoint2Id), symbolId, submapId, label, symbolType, plane, status, objectId,
                childSubmapId, hidden, endpoint1Id, endpoint2Id);
    }

    @Override protected boolean submapInCache(int submapId) {
        return answer("submapInCache", () -> super.submapInCache(submapId), submapId);
    }

    @Override protected boolean qxwdbObjectFieldValuesInCache(int objectId) {
        return answer("qxwdbObjectFieldValuesInCache",
                () -> super.qxwdbObjectFieldValuesInCache(objectId), objectId);
    }

    @Override protected void setQxwdbObjectFieldValues(int objectId, Properties fieldValues) {
        call("setQxwdbObjectFieldValues", () -> super.setQxwdbObjectFieldValues(objectId,
                fieldValues), objectId, fieldValues);
    }

    @Override protected String getSymbolRowData(int symbolId, int objectId, int propertySetIndex) {
        return answer("getSymbolRowData", () -> propertySetIndex < 0 ? null
                : "row " + symbolId + " " + objectId + " " + propertySetIndex, symbolId, objectId,
                propertySetIndex);
    }

    @Override protected void addParentPathInfo(int symbolId) {
        call("addParentPathInfo", () -> super.addParentPathInfo(symbolId), symbolId);
    }

    @Override protected void addParentLocationInfo(int networkObjectId,
            int parentLocationObjectId) {
        call("addParentLocationInfo", () -> super.addParentLocationInfo(networkObjectId,
                parentLocationObjectId), networkObjectId, parentLocationObjectId);
    }

    @Override protected void addFoundSymbolInfo(String symbolLabel, String submapName,
            String objectSelectionName, int objectId, int symbolId, int submapId,
            String symbolType, int symbolStatus) {
        call("addFoundSymbolInfo", () -> super.addFoundSymbolInfo(symbolLabel, submapName,
                objectSelectionName, objectId, symbolId, submapId, symbolType, symbolStatus),
                symbolLabel, submapName, objectSelectionName, objectId, symbolId, submapId,
                symbolType, symbolStatus);
    }

    @Override protected String[] getRootObjectSelectionNames() {
        return answer("getRootObjectSelectionNames", super::getRootObjectSelectionNames);
    }

    @Override protected int[] getManageObjectList(int numObjs) {
        return answer("getManageObjectList", () -> super.getManageObjectList(numObjs), numObjs);
    }

    @Override protected int[] getAckObjectList(int numObjs) {
        return answer("getAckObjectList", () -> super.getAckObjectList(numObjs), numObjs);
    }

    @Override protected int[] getVisibilityStateSymbolIds() {
        return answer("getVisibilityStateSymbolIds", super::getVisibilityStateSymbolIds);
    }

    @Override protected int[] getInterfaceAndNodeVisibilityStateObjectIds() {
        return answer("getInterfaceAndNodeVisibilityStateObjectIds",
                super::getInterfaceAndNodeVisibilityStateObjectIds);
    }

    @Override protected int[] getDeleteSymbolsObjectIds() {
        return answer("getDeleteSymbolsObjectIds", super::getDeleteSymbolsObjectIds);
    }

    @Override protected void beginMapSync() {
        call("beginMapSync", super::beginMapSync);
    }

    @Override protected void endMapSync() {
        call("endMapSync", super::endMapSync);
    }

    @Override protected void synchronizeLayoutAppearance(int submapId) {
        call("synchronizeLayoutAppearance", () -> super.synchronizeLayoutAppearance(submapId),
                submapId);
    }

    @Override protected void symbolHiddenCB(int symbolId, int submapId, boolean isNode) {
        call("symbolHiddenCB", () -> super.symbolHiddenCB(symbolId, submapId, isNode), symbolId,
                submapId, isNode);
    }

    @Override protected void symbolUnhiddenCB(int symbolId, int submapId, boolean isNode) {
        call("symbolUnhiddenCB", () -> super.symbolUnhiddenCB(symbolId, submapId, isNode),
                symbolId, submapId, isNode);
    }

    @Override protected void symbolStatusChangeCB(int symbolId, int submapId, int status,
            boolean isNode) {
        call("symbolStatusChangeCB", () -> super.symbolStatusChangeCB(symbolId, submapId, status,
                isNode), symbolId, submapId, status, isNode);
    }

    @Override protected void symbolCreatedCB(MapSymbol symbol, int submapId) {
        call("symbolCreatedCB", () -> super.symbolCreatedCB(symbol, submapId), symbol, submapId);
    }

    @Override protected void symbolDeletedCB(int symbolId, int submapId, boolean isNode) {
        call("symbolDeletedCB", () -> super.symbolDeletedCB(symbolId, submapId, isNode),
                symbolId, submapId, isNode);
    }

    @Override protected void symbolMovedCB(int symbolId, int submapId, int placement, int x, int y,
            int predSymbolId, boolean fromMoveEvent, boolean moreToFollow, boolean fromRefresh) {
        call("symbolMovedCB", () -> super.symbolMovedCB(symbolId, submapId, placement, x, y,
                predSymbolId, fromMoveEvent, moreToFollow, fromRefresh), symbolId, submapId,
                placement, x, y, predSymbolId, fromMoveEvent, moreToFollow, fromRefresh);
    }

    @Override protected void symbolNormalizeChangeCB(int symbolId, int submapId,
            boolean isNormalized) {
        call("symbolNormalizeChangeCB", () -> super.symbolNormalizeChangeCB(symbolId, submapId,
                isNormalized), symbolId, submapId, isNormalized);
    }

    @Override protected void submapCreatedCB(int submapId, int parentObjectId) {
        call("submapCreatedCB", () -> super.submapCreatedCB(submapId, parentObjectId), submapId,
                parentObjectId);
    }

    @Override protected void submapDeletedCB(int submapId, int parentObjectId) {
        call("submapDeletedCB", () -> super.submapDeletedCB(submapId, parentObjectId), submapId,
                parentObjectId);
    }

    @Override protected void submapAutoLayoutChangeCB(int submapId, int parentObjectId,
            boolean layoutOn) {
        call("submapAutoLayoutChangeCB", () -> super.submapAutoLayoutChangeCB(submapId,
                parentObjectId, layoutOn), submapId, parentObjectId, layoutOn);
    }

    @Override protected void mapOpenCB(String mapName, boolean isReadOnly, int rootSubmapId) {
        call("mapOpenCB", () -> super.mapOpenCB(mapName, isReadOnly, rootSubmapId), mapName,
                isReadOnly, rootSubmapId);
    }

    @Override protected void mapCloseCB(String mapName, int rootSubmapId) {
        call("mapCloseCB", () -> super.mapCloseCB(mapName, rootSubmapId), mapName, rootSubmapId);
    }

    @Override protected void endSessionCB() {
        call("endSessionCB", super::endSessionCB);
    }

    @Override protected void scopingNetworkCreatedCB(int networkObjectId,
            int[] parentLocationObjectIds) {
        call("scopingNetworkCreatedCB", () -> super.scopingNetworkCreatedCB(networkObjectId,
                parentLocationObjectIds), networkObjectId, parentLocationObjectIds);
    }

    @Override protected void scopingInterfacesCreatedCB(int[] interfaceObjectIds,
            int[] nodeObjectIds) {
        call("scopingInterfacesCreatedCB", () -> super.scopingInterfacesCreatedCB(
                interfaceObjectIds, nodeObjectIds), interfaceObjectIds, nodeObjectIds);
    }

    @Override protected void scopingInterfacesDeletedCB(int[] interfaceObjectIds) {
        call("scopingInterfacesDeletedCB", () -> super.scopingInterfacesDeletedCB(
                interfaceObjectIds), (Object) interfaceObjectIds);
    }

    /**
     * Hides the dispatcher's printError: the native library calls this one. It is recorded and
     * hooked as the latest dispatcher's.
     */
    public static void printError(String errorText) {
        Runnable work = () -> {
            synchronized (printedErrors) {
                printedErrors.add(errorText);
            }
        };
        RecordingDispatcher dispatcher = latest;
        if (dispatcher == null) work.run();
        else dispatcher.call("printError", work, errorText);
    }
}
