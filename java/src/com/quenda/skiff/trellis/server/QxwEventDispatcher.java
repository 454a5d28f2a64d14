package com.quenda.skiff.trellis.server;

import java.util.Map;
import java.util.Properties;
import java.util.concurrent.ConcurrentHashMap;

/**
 * The dispatcher side of the server: the map as the map platform reports it.
 *
 * <p>One thread, the dispatcher thread, calls {@link #connect} and then {@link #listenForEvents},
 * which returns when the platform ends the session. The native library calls the protected
 * methods below on that thread only: to report map content and map changes, and to fetch the
 * arguments of the client request it is serving. This reference dispatcher keeps the submaps,
 * symbols (each submap's in the platform's order) and object field values it is given, and
 * answers {@link #submapInCache} and {@link #qxwdbObjectFieldValuesInCache} from them; subclasses
 * may override any callback.
 */
public class QxwEventDispatcher {
    static {
        System.loadLibrary("skiffqxw");
    }

    private final Map<Integer, Submap> submaps = new ConcurrentHashMap<>();
    private final Map<Integer, MapSymbol> symbols = new ConcurrentHashMap<>();
    private final Map<Integer, Properties> objectFieldValues = new ConcurrentHashMap<>();

    // Arguments of the client request being served: stored by QxwInterface under its request
    // lock before it sends the request, read here on the dispatcher thread.
    private volatile int[] requestIds = new int[0];
    private volatile String[] rootObjectSelectionNames = new String[0];

    /**
     * Opens the session with the map platform, once per process: a call after a successful one
     * only takes this object as the dispatcher again. Reports the connection results to the
     * opened {@link QxwInterface}, then waits until its first {@code getSubmapAndSymbols} has
     * connected. True when the session is usable.
     */
    public native boolean connect(boolean doInvokeJavaCallbacksForScopingUpdates,
            boolean doSetLocationIDFieldInCallbacks, boolean doSyncLocationIDFieldInSubLocations,
            boolean doSyncLocationIDFieldInNetworks);

    /** Runs the platform's event loop, serving client requests, until the session ends. */
    public native void listenForEvents();

    public Submap getSubmap(int submapId) { return submaps.get(submapId); }
    public MapSymbol getSymbol(int symbolId) { return symbols.get(symbolId); }
    public Properties getObjectFieldValues(int objectId) { return objectFieldValues.get(objectId); }

    void setRequestIds(int[] ids) { requestIds = ids.clone(); }
    void setRootObjectSelectionNames(String[] names) { rootObjectSelectionNames = names.clone(); }

    // Map content.

    protected Submap addSubmap(int parentObjectId, int submapId, String submapName,
            int layoutStyle, boolean doUseAutoLayout, String backgroundGraphicsFile) {
        Submap submap = new Submap(parentObjectId, submapId, submapName, layoutStyle,
                doUseAutoLayout, backgroundGraphicsFile);
        submaps.put(submapId, submap);
        return submap;
    }

    protected MapNodeSymbol addNodeSymbol(int symbolId, int submapId, String label,
            String annotation, String symbolType, int plane, int status, int objectId,
            int childSubmapId, boolean hidden, int placement, int x, int y, int predSymbolId,
            int customSubmapId) {
        MapNodeSymbol symbol = new MapNodeSymbol(symbolId, submapId, label, annotation,
                symbolType, plane, status, objectId, childSubmapId, hidden, placement, x, y,
                predSymbolId, customSubmapId);
        symbols.put(symbolId, symbol);
        // A symbol reported for another submap (customSubmapId) is not part of its submap's report.
        if (customSubmapId == 0) addToSubmap(symbol);
        return symbol;
    }

    protected MapConnectionSymbol addConnectionSymbol(int symbolId, int submapId, String label,
            String symbolType, int plane, int status, int objectId, int childSubmapId,
            boolean hidden, int endpoint1Id, int endpoint2Id) {
        MapConnectionSymbol symbol = new MapConnectionSymbol(symbolId, submapId, label,
                symbolType, plane, status, objectId, childSubmapId, hidden, endpoint1Id,
                endpoint2Id);
        symbols.put(symbolId, symbol);
        addToSubmap(symbol);
        return symbol;
    }

    private void addToSubmap(MapSymbol symbol) {
        Submap submap = submaps.get(symbol.getSubmapId());
        if (submap != null) submap.putSymbol(symbol);
    }

    protected boolean submapInCache(int submapId) { return submaps.containsKey(submapId); }

    protected boolean qxwdbObjectInCache(int objectId) {
        return objectFieldValues.containsKey(objectId);
    }

    protected boolean qxwdbObjectFieldValuesInCache(int objectId) {
        return objectFieldValues.containsKey(objectId);
    }

    protected void setQxwdbObjectFieldValues(int objectId, Properties fieldValues) {
        objectFieldValues.put(objectId, fieldValues);
    }

    /** The row shown for a symbol: its label, type and status; null for an unknown symbol. */
    protected String getSymbolRowData(int symbolId, int objectId, int propertySetIndex) {
        MapSymbol symbol = symbols.get(symbolId);
        if (symbol == null) return null;
        return symbol.getLabel() + "\t" + symbol.getSymbolType() + "\t" + symbol.getStatus();
    }

    // Results of searches and paths.

    protected void addParentPathInfo(int symbolId) {}

    protected void addParentLocationInfo(int networkObjectId, int parentLocationObjectId) {}

    protected void addFoundSymbolInfo(String symbolLabel, String submapName,
            String objectSelectionName, int objectId, int symbolId, int submapId,
            String symbolType, int symbolStatus) {}

    // Arguments of the client request being served.

    protected String[] getRootObjectSelectionNames() { return rootObjectSelectionNames; }
    protected int[] getManageObjectList(int numObjs) { return requestIds; }
    protected int[] getAckObjectList(int numObjs) { return requestIds; }
    protected int[] getVisibilityStateSymbolIds() { return requestIds; }
    protected int[] getInterfaceAndNodeVisibilityStateObjectIds() { return requestIds; }
    protected int[] getDeleteSymbolsObjectIds() { return requestIds; }

    // Map changes.

    protected void beginMapSync() {}

    protected void endMapSync() {}

    protected void synchronizeLayoutAppearance(int submapId) {}

    protected void symbolHiddenCB(int symbolId, int submapId, boolean isNode) {
        MapSymbol symbol = symbols.get(symbolId);
        if (symbol != null) symbol.setHidden(true);
    }

    protected void symbolUnhiddenCB(int symbolId, int submapId, boolean isNode) {
        MapSymbol symbol = symbols.get(symbolId);
        if (symbol != null) symbol.setHidden(false);
    }

    protected void symbolStatusChangeCB(int symbolId, int submapId, int status, boolean isNode) {
        MapSymbol symbol = symbols.get(symbolId);
        if (symbol != null) symbol.setStatus(status);
    }

    /** The symbol was kept when addNodeSymbol or addConnectionSymbol made it. */
    protected void symbolCreatedCB(MapSymbol symbol, int submapId) {}

    protected void symbolDeletedCB(int symbolId, int submapId, boolean isNode) {
        symbols.remove(symbolId);
        Submap submap = submaps.get(submapId);
        if (submap != null) submap.removeSymbol(symbolId);
    }

    protected void symbolMovedCB(int symbolId, int submapId, int placement, int x, int y,
            int predSymbolId, boolean fromMoveEvent, boolean moreToFollow, boolean fromRefresh) {
        if (symbols.get(symbolId) instanceof MapNodeSymbol node) {
            node.moveTo(placement, x, y, predSymbolId);
        }
    }

    protected void symbolNormalizeChangeCB(int symbolId, int submapId, boolean isNormalized) {}

    protected void submapCreatedCB(int submapId, int parentObjectId) {}

    protected void submapDeletedCB(int submapId, int parentObjectId) {
        submaps.remove(submapId);
        symbols.values().removeIf(symbol -> symbol.getSubmapId() == submapId);
    }

    protected void submapAutoLayoutChangeCB(int submapId, int parentObjectId, boolean layoutOn) {
        Submap submap = submaps.get(submapId);
        if (submap != null) submap.setAutoLayout(layoutOn);
    }

    // The session.

    protected void mapOpenCB(String mapName, boolean isReadOnly, int rootSubmapId) {}

    protected void mapCloseCB(String mapName, int rootSubmapId) {
        submaps.clear();
        symbols.clear();
        objectFieldValues.clear();
    }

    protected void endSessionCB() {}

    // Location scoping.

    protected void scopingNetworkCreatedCB(int networkObjectId, int[] parentLocationObjectIds) {}

    protected void scopingInterfacesCreatedCB(int[] interfaceObjectIds, int[] nodeObjectIds) {}

    protected void scopingInterfacesDeletedCB(int[] interfaceObjectIds) {}

    /** An error text from the native library. */
    public static void printError(String errorText) {
        System.err.println(errorText);
    }
}
