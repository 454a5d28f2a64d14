package com.quenda.skiff.trellis.server;

import com.quenda.skiff.trellis.NativeLibrary;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.locks.ReentrantLock;
import java.util.function.Function;

/**
 * The client side of the server: requests to the map, from any thread but the dispatcher thread.
 *
 * <p>Each request is sent to the dispatcher thread, served there between map events, and answered;
 * the calling thread waits for the answer. Results reach the {@link QxwEventDispatcher} through its
 * callbacks before the answer comes. Requests whose serving fetches ids or root names from the
 * dispatcher are made through the public methods here, which store those arguments and send the
 * request under one lock; all methods may be called from several threads at once.
 *
 * <p>{@link #open} must be called before the dispatcher's {@code connect}, which reports the
 * connection results to this object; the first {@link #getSubmapAndSymbols} makes the connection.
 */
public class QxwInterface {
    static {
        NativeLibrary.load();
    }

    /** What the dispatcher's connect reported. */
    public record ConnectionResults(boolean connectionEstablished, String mapName,
            boolean readOnly) {}

    private final QxwEventDispatcher dispatcher;
    // Held from storing a request's arguments to taking its results; fair, so that threads take
    // their turns in the order they came.
    private final ReentrantLock requestLock = new ReentrantLock(true);
    private final Object resultsLock = new Object();
    private ConnectionResults connectionResults;  // guarded by resultsLock
    /** The thread that runs the dispatcher's connect and event loop; null before connect. */
    private volatile Thread dispatcherThread;

    public QxwInterface(QxwEventDispatcher dispatcher) {
        this.dispatcher = dispatcher;
    }

    public QxwEventDispatcher getDispatcher() { return dispatcher; }

    /** Takes this object as the client and sets the three verbose modes of the native library. */
    public native void open(boolean doEnableVerboseJNI, boolean doEnableVerboseQXW,
            boolean doEnableVerboseNSP);

    /** Closes the connection; later requests are not sent. */
    public native void close();

    /** Reports a submap and its symbols to the dispatcher; 0 asks for the root submap. */
    public native boolean getSubmapAndSymbols(int submapId);

    /** True when the dispatcher's getSymbolRowData gave a row for the symbol. */
    public native boolean getSymbolRowData(int symbolId, int objectId, int propertySetIndex);

    /** Reports the top-most symbol of the node with that selection name. */
    public native void getNodeSymbol(int customSubmapId, String selectionName,
            String parentSelectionName);

    native void getNodeParentPathInternal(String hostnameOrIPAddress,
            String parentSelectionName, int numRootObjects);

    native void getSymbolParentPathInternal(int symbolId, int submapId, int numRootObjects);

    native void getOtherSymbolsInternal(int symbolId, int objectId, int numRootObjects);

    native void getMatchingSymbolsInternal(int queryCategoryType, int queryMatchType,
            String queryString, int numRootObjects);

    native void getLocationScopingInfoInternal();

    native void setAcknowledgeState(boolean doAcknowledge, int numObjs);

    native void setManageState(boolean doManage, int numObjs);

    native void setSymbolVisibilityStateInternal(boolean doSetHidden, int numSymbols);

    native void setInterfaceAndNodeVisibilityStateInternal(boolean doSetHidden,
            int numInterfaceObjects);

    native void deleteAllSymbolsForObjectsInternal(int numObjects);

    /**
     * The path to the node with that host name or IP address, as symbol ids from the top down,
     * the node's own symbol last: within the child submap of parentSelectionName when that is not
     * empty, else its top-most symbol within the root objects' hierarchy (the map's root submap
     * when none are given). Empty when no such node or symbol is found.
     */
    public List<Integer> getNodeParentPath(String hostnameOrIPAddress, String parentSelectionName,
            String... rootObjectSelectionNames) {
        refuseOnDispatcherThread("getNodeParentPath");
        return collect(rootObjectSelectionNames, results -> results.path,
                () -> getNodeParentPathInternal(hostnameOrIPAddress, parentSelectionName,
                        rootObjectSelectionNames.length));
    }

    /**
     * The path from the root objects' hierarchy (the map's root submap when none are given) down
     * to the symbol on that submap, as symbol ids from the top down, the symbol itself last (alone
     * when no path is found). Empty for a symbol or submap id of 0.
     */
    public List<Integer> getSymbolParentPath(int symbolId, int submapId,
            String... rootObjectSelectionNames) {
        refuseOnDispatcherThread("getSymbolParentPath");
        return collect(rootObjectSelectionNames, results -> results.path,
                () -> getSymbolParentPathInternal(symbolId, submapId,
                        rootObjectSelectionNames.length));
    }

    /**
     * The object's other places: its icon symbols other than the one given, in the map's order;
     * with root objects, only those within their hierarchy.
     */
    public List<FoundSymbol> getOtherSymbols(int symbolId, int objectId,
            String... rootObjectSelectionNames) {
        refuseOnDispatcherThread("getOtherSymbols");
        return collect(rootObjectSelectionNames, results -> results.found,
                () -> getOtherSymbolsInternal(symbolId, objectId,
                        rootObjectSelectionNames.length));
    }

    /**
     * Searches the map: every symbol of each object whose field matches the query, object by
     * object in the database's order and each object's symbols in the map's order. With root
     * objects, only the symbols on submaps within their hierarchy; with none, every symbol. A
     * query that cannot be made (a text too long for the request or holding a vertical tab or a
     * NUL) finds nothing and says why on standard error.
     */
    public List<FoundSymbol> getMatchingSymbols(FoundSymbol.Category category,
            FoundSymbol.MatchType matchType, String queryString,
            String... rootObjectSelectionNames) {
        return getMatchingSymbols(category.ordinal(), matchType.ordinal(), queryString,
                rootObjectSelectionNames);
    }

    /** The same with the request's own codes, which are sent unchecked. */
    List<FoundSymbol> getMatchingSymbols(int queryCategoryType, int queryMatchType,
            String queryString, String... rootObjectSelectionNames) {
        refuseOnDispatcherThread("getMatchingSymbols");
        return collect(rootObjectSelectionNames, results -> results.found,
                () -> getMatchingSymbolsInternal(queryCategoryType, queryMatchType, queryString,
                        rootObjectSelectionNames.length));
    }

    /**
     * Every network (object id) with the locations that contain it, up to the "IP Internet"
     * submap; a network inside no location is left out. The dispatcher keeps this grouping
     * (see {@link QxwEventDispatcher#getNetworkLocations}) and, while the map is open for writing,
     * keeps it current as networks appear.
     */
    public Map<Integer, Set<Integer>> getLocationScopingInfo() {
        refuseOnDispatcherThread("getLocationScopingInfo");
        requestLock.lock();
        try {
            Map<Integer, Set<Integer>> locations =
                    collect(new String[0], results -> results.locations,
                            this::getLocationScopingInfoInternal);
            dispatcher.setNetworkLocations(locations);
            return locations;
        } finally {
            requestLock.unlock();
        }
    }

    /**
     * Sends a request whose results come through the dispatcher's callbacks, with the root
     * objects stored for it, and takes what the callbacks delivered.
     */
    private <T> T collect(String[] rootObjectSelectionNames,
            Function<QxwEventDispatcher.RequestResults, T> take, Runnable request) {
        requestLock.lock();
        try {
            QxwEventDispatcher.RequestResults results = new QxwEventDispatcher.RequestResults();
            dispatcher.setRootObjectSelectionNames(rootObjectSelectionNames);
            dispatcher.collectResults(results);
            try {
                request.run();
            } finally {
                dispatcher.collectResults(null);
            }
            return take.apply(results);
        } finally {
            requestLock.unlock();
        }
    }

    public void setAcknowledgeState(int[] objectIds, boolean doAcknowledge) {
        refuseOnDispatcherThread("setAcknowledgeState");
        requestLock.lock();
        try {
            dispatcher.setRequestIds(objectIds);
            setAcknowledgeState(doAcknowledge, objectIds.length);
        } finally {
            requestLock.unlock();
        }
    }

    public void setManageState(int[] objectIds, boolean doManage) {
        refuseOnDispatcherThread("setManageState");
        requestLock.lock();
        try {
            dispatcher.setRequestIds(objectIds);
            setManageState(doManage, objectIds.length);
        } finally {
            requestLock.unlock();
        }
    }

    public void setSymbolVisibilityState(int[] symbolIds, boolean doSetHidden) {
        refuseOnDispatcherThread("setSymbolVisibilityState");
        requestLock.lock();
        try {
            dispatcher.setRequestIds(symbolIds);
            setSymbolVisibilityStateInternal(doSetHidden, symbolIds.length);
        } finally {
            requestLock.unlock();
        }
    }

    public void setInterfaceAndNodeVisibilityState(int[] interfaceObjectIds,
            boolean doSetHidden) {
        refuseOnDispatcherThread("setInterfaceAndNodeVisibilityState");
        requestLock.lock();
        try {
            dispatcher.setRequestIds(interfaceObjectIds);
            setInterfaceAndNodeVisibilityStateInternal(doSetHidden, interfaceObjectIds.length);
        } finally {
            requestLock.unlock();
        }
    }

    public void deleteAllSymbolsForObjects(int[] objectIds) {
        refuseOnDispatcherThread("deleteAllSymbolsForObjects");
        requestLock.lock();
        try {
            dispatcher.setRequestIds(objectIds);
            deleteAllSymbolsForObjectsInternal(objectIds.length);
        } finally {
            requestLock.unlock();
        }
    }

    /**
     * Waits for the connection results that the dispatcher's connect reports and takes them, so
     * that a later call waits for those of a later connect; null when none came in time.
     */
    public ConnectionResults awaitConnectionResults(long timeout, TimeUnit unit)
            throws InterruptedException {
        long deadline = System.nanoTime() + unit.toNanos(timeout);
        synchronized (resultsLock) {
            while (connectionResults == null) {
                long left = deadline - System.nanoTime();
                if (left <= 0) return null;
                TimeUnit.NANOSECONDS.timedWait(resultsLock, left);
            }
            ConnectionResults results = connectionResults;
            connectionResults = null;
            return results;
        }
    }

    /**
     * Refuses a request made on the dispatcher thread, from inside a callback: that thread
     * serves requests, so it would wait for itself (and for the lock of the request it is
     * serving) forever.
     */
    private void refuseOnDispatcherThread(String request) {
        if (Thread.currentThread() == dispatcherThread) {
            throw new IllegalStateException("QxwInterface." + request + ": called on the"
                    + " dispatcher thread (from a callback), where no request can be served");
        }
    }

    /** Called by the native library on the dispatcher thread during connect. */
    protected void setConnectionResults(boolean connectionEstablished, String mapName,
            boolean isReadOnly) {
        dispatcherThread = Thread.currentThread();
        synchronized (resultsLock) {
            connectionResults = new ConnectionResults(connectionEstablished, mapName, isReadOnly);
            resultsLock.notifyAll();
        }
    }

    /** An error text from the native library. */
    public static void printError(String errorText) {
        System.err.println(errorText);
    }
}
