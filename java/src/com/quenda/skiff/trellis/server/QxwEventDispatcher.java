package com.quenda.skiff.trellis.server;

import com.quenda.skiff.trellis.NativeLibrary;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.HashSet;
import java.util.LinkedHashMap;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Map;
import java.util.Properties;
import java.util.Set;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.locks.Lock;
import java.util.concurrent.locks.ReentrantReadWriteLock;
import java.util.function.Consumer;
import java.util.function.Supplier;

/**
 * The dispatcher side of the server: the map as the map platform reports it.
 *
 * <p>One thread, the dispatcher thread, calls {@link #connect} and then {@link #listenForEvents},
 * which returns when the platform ends the session. The native library calls the protected
 * methods below on that thread only: to report map content and map changes, and to fetch the
 * arguments of the client request it is serving. This reference dispatcher keeps a mirror of the
 * submaps, symbols (each submap's in the platform's order) and object field values it is given,
 * answers {@link #submapInCache} and {@link #qxwdbObjectFieldValuesInCache} from it, applies
 * every map change to it and then tells the {@link MapListener}s; subclasses may override any
 * callback, calling the method they override to keep the mirror.
 *
 * <p>Any thread may read the mirror. The getters and {@link #readMirror} wait while a batch of
 * changes (from {@code beginMapSync} to {@code endMapSync}) is being applied, so that none sees
 * half of one. The submaps and symbols they return change in place as later changes come: read
 * them inside {@link #readMirror} to see them all at one state of the map.
 */
public class QxwEventDispatcher {
    static {
        NativeLibrary.load();
    }

    // The mirror. Written on the dispatcher thread under the write lock, which it also holds from
    // beginMapSync to endMapSync; read under the read lock.
    private final ReentrantReadWriteLock mirrorLock = new ReentrantReadWriteLock();
    private final Map<Integer, Submap> submaps = new HashMap<>();
    private final MirroredSymbols symbols = new MirroredSymbols();
    private final Map<Integer, Properties> objectFieldValues = new HashMap<>();
    // The submap reported last, and the objects whose field values came with that report: what
    // a map open keeps of the mirror. Dispatcher thread only.
    private Submap lastReportedSubmap;
    private final Set<Integer> lastReportFieldValues = new HashSet<>();

    private final List<MapListener> listeners = new CopyOnWriteArrayList<>();

    // Arguments of the client request being served: stored by QxwInterface under its request
    // lock before it sends the request, read here on the dispatcher thread.
    private volatile int[] requestIds = new int[0];
    private volatile String[] rootObjectSelectionNames = new String[0];
    // Where the request being served collects what its callbacks deliver; null while none is.
    private volatile RequestResults requestResults;
    // Each network's locations, as the last location scoping request and the networks created
    // since reported them. Guarded by itself.
    private final Map<Integer, Set<Integer>> networkLocations = new HashMap<>();

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

    /**
     * Starts the dispatcher thread: a daemon thread named "dispatcher" that connects with these
     * flags and, when the session is usable, listens for events until the session ends. Open the
     * {@link QxwInterface} first: the connection results go to it.
     */
    public Thread startDispatcherThread(boolean doInvokeJavaCallbacksForScopingUpdates,
            boolean doSetLocationIDFieldInCallbacks, boolean doSyncLocationIDFieldInSubLocations,
            boolean doSyncLocationIDFieldInNetworks) {
        Thread thread = new Thread(() -> {
            if (connect(doInvokeJavaCallbacksForScopingUpdates, doSetLocationIDFieldInCallbacks,
                    doSyncLocationIDFieldInSubLocations, doSyncLocationIDFieldInNetworks)) {
                listenForEvents();
            }
        }, "dispatcher");
        thread.setDaemon(true);
        thread.start();
        return thread;
    }

    public Submap getSubmap(int submapId) { return readMirror(() -> submaps.get(submapId)); }
    public MapSymbol getSymbol(int symbolId) { return readMirror(() -> symbols.get(symbolId)); }
    public Properties getObjectFieldValues(int objectId) {
        return readMirror(() -> objectFieldValues.get(objectId));
    }
    /** The loaded submaps, in no particular order. */
    public List<Submap> getSubmaps() { return readMirror(() -> new ArrayList<>(submaps.values())); }

    /**
     * Runs the reader while no change is being applied to the mirror, and returns its result. The
     * reader must not make client requests: they wait for the dispatcher thread, which may be
     * waiting for the reader.
     */
    public <T> T readMirror(Supplier<T> reader) {
        Lock lock = mirrorLock.readLock();
        lock.lock();
        try {
            return reader.get();
        } finally {
            lock.unlock();
        }
    }

    public void addMapListener(MapListener listener) { listeners.add(listener); }
    public void removeMapListener(MapListener listener) { listeners.remove(listener); }

    void setRequestIds(int[] ids) { requestIds = ids.clone(); }
    void setRootObjectSelectionNames(String[] names) { rootObjectSelectionNames = names.clone(); }
    void collectResults(RequestResults results) { requestResults = results; }

    /** What the callbacks of one request delivered, in the order they came. */
    static final class RequestResults {
        final List<FoundSymbol> found = new ArrayList<>();
        final List<Integer> path = new ArrayList<>();
        final Map<Integer, Set<Integer>> locations = new LinkedHashMap<>();
    }

    /**
     * Each network's locations (object ids), as the last {@link
     * QxwInterface#getLocationScopingInfo} reported them and as networks created since were
     * reported: a copy.
     */
    public Map<Integer, Set<Integer>> getNetworkLocations() {
        synchronized (networkLocations) {
            Map<Integer, Set<Integer>> copy = new HashMap<>();
            networkLocations.forEach((network, locations) ->
                    copy.put(network, Set.copyOf(locations)));
            return copy;
        }
    }

    // Map content.

    protected Submap addSubmap(int parentObjectId, int submapId, String submapName,
            int layoutStyle, boolean doUseAutoLayout, String backgroundGraphicsFile) {
        Submap submap = new Submap(parentObjectId, submapId, submapName, layoutStyle,
                doUseAutoLayout, backgroundGraphicsFile);
        applyToMirror(() -> {
            // A submap reported again replaces the old report and its symbols.
            Submap previous = submaps.put(submapId, submap);
            if (previous != null) previous.forEachSymbol(symbols::removeExactly);
            lastReportedSubmap = submap;
            lastReportFieldValues.clear();
        });
        return submap;
    }

    protected MapNodeSymbol addNodeSymbol(int symbolId, int submapId, String label,
            String annotation, String symbolType, int plane, int status, int objectId,
            int childSubmapId, boolean hidden, int placement, int x, int y, int predSymbolId,
            int customSubmapId) {
        MapNodeSymbol symbol = new MapNodeSymbol(symbolId, submapId, label, annotation,
                symbolType, plane, status, objectId, childSubmapId, hidden, placement, x, y,
                predSymbolId, customSubmapId);
        // A symbol reported for another submap (customSubmapId) is not part of its submap's report.
        applyToMirror(() -> putSymbol(symbol, customSubmapId == 0));
        return symbol;
    }

    protected MapConnectionSymbol addConnectionSymbol(int symbolId, int submapId, String label,
            String symbolType, int plane, int status, int objectId, int childSubmapId,
            boolean hidden, int endpoint1Id, int endpoint2Id) {
        MapConnectionSymbol symbol = new MapConnectionSymbol(symbolId, submapId, label,
                symbolType, plane, status, objectId, childSubmapId, hidden, endpoint1Id,
                endpoint2Id);
        applyToMirror(() -> putSymbol(symbol, true));
        return symbol;
    }

    private void putSymbol(MapSymbol symbol, boolean onItsSubmap) {
        symbols.put(symbol);
        Submap submap = onItsSubmap ? submaps.get(symbol.getSubmapId()) : null;
        if (submap != null) submap.putSymbol(symbol);
    }

    protected boolean submapInCache(int submapId) {
        return readMirror(() -> submaps.containsKey(submapId));
    }

    protected boolean qxwdbObjectInCache(int objectId) {
        return readMirror(() -> objectFieldValues.containsKey(objectId));
    }

    protected boolean qxwdbObjectFieldValuesInCache(int objectId) {
        return readMirror(() -> objectFieldValues.containsKey(objectId));
    }

    protected void setQxwdbObjectFieldValues(int objectId, Properties fieldValues) {
        applyToMirror(() -> {
            objectFieldValues.put(objectId, fieldValues);
            lastReportFieldValues.add(objectId);
        });
    }

    /** The row shown for a symbol: its label, type and status; null for an unknown symbol. */
    protected String getSymbolRowData(int symbolId, int objectId, int propertySetIndex) {
        MapSymbol symbol = getSymbol(symbolId);
        if (symbol == null) return null;
        return symbol.getLabel() + "\t" + symbol.getSymbolType() + "\t" + symbol.getStatus();
    }

    // Results of searches and paths.

    /** The next symbol of the path being reported, from the top down. */
    protected void addParentPathInfo(int symbolId) {
        RequestResults results = requestResults;
        if (results != null) results.path.add(symbolId);
    }

    /** One location that contains a network, from a location scoping request. */
    protected void addParentLocationInfo(int networkObjectId, int parentLocationObjectId) {
        RequestResults results = requestResults;
        if (results != null) {
            results.locations.computeIfAbsent(networkObjectId, n -> new LinkedHashSet<>())
                    .add(parentLocationObjectId);
        }
    }

    /** Takes a location scoping request's report as every network's locations. */
    void setNetworkLocations(Map<Integer, Set<Integer>> locations) {
        synchronized (networkLocations) {
            networkLocations.clear();
            locations.forEach((network, set) -> networkLocations.put(network, Set.copyOf(set)));
        }
    }

    /** One symbol found by the search being served; it joins that search's result. */
    protected void addFoundSymbolInfo(String symbolLabel, String submapName,
            String objectSelectionName, int objectId, int symbolId, int submapId,
            String symbolType, int symbolStatus) {
        RequestResults results = requestResults;
        if (results != null) {
            results.found.add(new FoundSymbol(symbolLabel, submapName, objectSelectionName, objectId,
                    symbolId, submapId, symbolType, symbolStatus));
        }
    }

    // Arguments of the client request being served.

    protected String[] getRootObjectSelectionNames() { return rootObjectSelectionNames; }
    protected int[] getManageObjectList(int numObjs) { return requestIds; }
    protected int[] getAckObjectList(int numObjs) { return requestIds; }
    protected int[] getVisibilityStateSymbolIds() { return requestIds; }
    protected int[] getInterfaceAndNodeVisibilityStateObjectIds() { return requestIds; }
    protected int[] getDeleteSymbolsObjectIds() { return requestIds; }

    // Map changes: each is applied to the mirror, then the listeners hear of it.

    /**
     * A batch of changes begins: readers of the mirror wait until it has ended. Overrides of this
     * method and of endMapSync must call the method they override.
     */
    protected void beginMapSync() {
        mirrorLock.writeLock().lock();
    }

    /** The batch of changes has ended: readers of the mirror go on. */
    protected void endMapSync() {
        if (mirrorLock.isWriteLockedByCurrentThread()) mirrorLock.writeLock().unlock();
    }

    protected void synchronizeLayoutAppearance(int submapId) {}

    protected void symbolHiddenCB(int symbolId, int submapId, boolean isNode) {
        MapSymbol symbol = changeSymbol(symbolId, s -> s.setHidden(true));
        if (symbol != null) tellListeners(l -> l.symbolHidden(symbol));
    }

    protected void symbolUnhiddenCB(int symbolId, int submapId, boolean isNode) {
        MapSymbol symbol = changeSymbol(symbolId, s -> s.setHidden(false));
        if (symbol != null) tellListeners(l -> l.symbolUnhidden(symbol));
    }

    protected void symbolStatusChangeCB(int symbolId, int submapId, int status, boolean isNode) {
        int[] previous = new int[1];
        MapSymbol symbol = changeSymbol(symbolId, s -> {
            previous[0] = s.getStatus();
            s.setStatus(status);
        });
        if (symbol != null) tellListeners(l -> l.symbolStatusChanged(symbol, previous[0]));
    }

    /** The symbol joined the mirror when addNodeSymbol or addConnectionSymbol made it. */
    protected void symbolCreatedCB(MapSymbol symbol, int submapId) {
        if (symbol != null) tellListeners(l -> l.symbolCreated(symbol));
    }

    protected void symbolDeletedCB(int symbolId, int submapId, boolean isNode) {
        MapSymbol[] removed = new MapSymbol[1];
        applyToMirror(() -> {
            removed[0] = symbols.remove(symbolId);
            Submap submap = submaps.get(submapId);
            if (submap != null) submap.removeSymbol(symbolId);
        });
        if (removed[0] != null) tellListeners(l -> l.symbolDeleted(removed[0]));
    }

    /**
     * Keeps the position as a submap report gives it: coordinates for placement 1, the
     * predecessor for placement 2, neither for any other placement. Listeners hear only of a
     * position that changed (a position refresh reports every node symbol of a submap).
     */
    protected void symbolMovedCB(int symbolId, int submapId, int placement, int x, int y,
            int predSymbolId, boolean fromMoveEvent, boolean moreToFollow, boolean fromRefresh) {
        boolean coordinates = placement == MapNodeSymbol.PLACED_AT_COORDINATES;
        boolean after = placement == MapNodeSymbol.PLACED_AFTER_PREDECESSOR;
        boolean[] moved = new boolean[1];
        MapSymbol symbol = changeSymbol(symbolId, s -> {
            if (s instanceof MapNodeSymbol node) {
                moved[0] = node.moveTo(placement, coordinates ? x : 0, coordinates ? y : 0,
                        after ? predSymbolId : 0);
            }
        });
        if (moved[0]) tellListeners(l -> l.symbolMoved((MapNodeSymbol) symbol));
    }

    protected void symbolNormalizeChangeCB(int symbolId, int submapId, boolean isNormalized) {
        MapSymbol symbol = changeSymbol(symbolId, s -> {
            if (s instanceof MapNodeSymbol node) node.setNormalized(isNormalized);
        });
        if (symbol instanceof MapNodeSymbol node) {
            tellListeners(l -> l.symbolNormalizeChanged(node));
        }
    }

    protected void submapCreatedCB(int submapId, int parentObjectId) {
        applyToMirror(() -> symbols.setChildSubmap(parentObjectId, 0, submapId));
        tellListeners(l -> l.submapCreated(submapId, parentObjectId));
    }

    protected void submapDeletedCB(int submapId, int parentObjectId) {
        applyToMirror(() -> {
            Submap submap = submaps.remove(submapId);
            if (submap != null) submap.forEachSymbol(symbols::removeExactly);
            symbols.setChildSubmap(parentObjectId, submapId, 0);
        });
        tellListeners(l -> l.submapDeleted(submapId, parentObjectId));
    }

    protected void submapAutoLayoutChangeCB(int submapId, int parentObjectId, boolean layoutOn) {
        applyToMirror(() -> {
            Submap submap = submaps.get(submapId);
            if (submap != null) submap.setAutoLayout(layoutOn);
        });
        tellListeners(l -> l.submapAutoLayoutChanged(submapId, layoutOn));
    }

    // The session.

    /**
     * The root submap and its symbols have just been reported: the mirror keeps them and the field
     * values that came with them, and forgets everything of the map before.
     */
    protected void mapOpenCB(String mapName, boolean isReadOnly, int rootSubmapId) {
        applyToMirror(() -> {
            Submap root = lastReportedSubmap != null
                    && lastReportedSubmap.getSubmapId() == rootSubmapId ? lastReportedSubmap : null;
            submaps.clear();
            symbols.clear();
            objectFieldValues.keySet().retainAll(lastReportFieldValues);
            if (root != null) {
                submaps.put(rootSubmapId, root);
                root.forEachSymbol(symbols::put);
            }
        });
        tellListeners(l -> l.mapOpened(mapName, isReadOnly, rootSubmapId));
    }

    protected void mapCloseCB(String mapName, int rootSubmapId) {
        applyToMirror(() -> {
            submaps.clear();
            symbols.clear();
            objectFieldValues.clear();
            lastReportedSubmap = null;
        });
        tellListeners(l -> l.mapClosed(mapName));
    }

    protected void endSessionCB() {
        tellListeners(MapListener::sessionEnded);
    }

    private void applyToMirror(Runnable change) {
        Lock lock = mirrorLock.writeLock();
        lock.lock();
        try {
            change.run();
        } finally {
            lock.unlock();
        }
    }

    /** Applies the change to the symbol when the mirror holds it; the symbol, or null. */
    private MapSymbol changeSymbol(int symbolId, Consumer<MapSymbol> change) {
        MapSymbol[] symbol = new MapSymbol[1];
        applyToMirror(() -> {
            symbol[0] = symbols.get(symbolId);
            if (symbol[0] != null) change.accept(symbol[0]);
        });
        return symbol[0];
    }

    private void tellListeners(Consumer<MapListener> event) {
        for (MapListener listener : listeners) {
            try {
                event.accept(listener);
            } catch (RuntimeException e) {
                e.printStackTrace();
            }
        }
    }

    // Location scoping.

    /** A network symbol appeared: the network's locations are now these. */
    protected void scopingNetworkCreatedCB(int networkObjectId, int[] parentLocationObjectIds) {
        Set<Integer> locations = new HashSet<>();
        for (int location : parentLocationObjectIds) locations.add(location);
        synchronized (networkLocations) {
            networkLocations.put(networkObjectId, Set.copyOf(locations));
        }
    }

    protected void scopingInterfacesCreatedCB(int[] interfaceObjectIds, int[] nodeObjectIds) {}

    protected void scopingInterfacesDeletedCB(int[] interfaceObjectIds) {}

    /** An error text from the native library. */
    public static void printError(String errorText) {
        System.err.println(errorText);
    }
}
