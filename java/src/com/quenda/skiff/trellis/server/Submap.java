package com.quenda.skiff.trellis.server;

import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.function.Consumer;

/** A submap as the map platform reported it, with the symbols reported on it. */
public class Submap {
    private final int parentObjectId;
    private final int submapId;
    private final String name;
    private final int layoutStyle;
    private volatile boolean autoLayout;
    private final String backgroundGraphicsFile;
    // By symbol id, in the order the symbols were reported: the platform's order.
    private final Map<Integer, MapSymbol> symbols = new LinkedHashMap<>();

    public Submap(int parentObjectId, int submapId, String name, int layoutStyle,
            boolean autoLayout, String backgroundGraphicsFile) {
        this.parentObjectId = parentObjectId;
        this.submapId = submapId;
        this.name = name;
        this.layoutStyle = layoutStyle;
        this.autoLayout = autoLayout;
        this.backgroundGraphicsFile = backgroundGraphicsFile;
    }

    public int getParentObjectId() { return parentObjectId; }
    public int getSubmapId() { return submapId; }
    public String getName() { return name; }
    public int getLayoutStyle() { return layoutStyle; }
    public boolean isAutoLayout() { return autoLayout; }
    public String getBackgroundGraphicsFile() { return backgroundGraphicsFile; }

    /** The symbols reported on this submap so far, in the platform's order. */
    public List<MapSymbol> getSymbols() {
        synchronized (symbols) {
            return List.copyOf(symbols.values());
        }
    }

    /** Gives each symbol reported on this submap, in the platform's order, without a copy. */
    void forEachSymbol(Consumer<MapSymbol> action) {
        synchronized (symbols) {
            symbols.values().forEach(action);
        }
    }

    void setAutoLayout(boolean autoLayout) { this.autoLayout = autoLayout; }

    /** Adds the symbol at the end, or replaces the one with its id where it stands. */
    void putSymbol(MapSymbol symbol) {
        synchronized (symbols) {
            symbols.put(symbol.getSymbolId(), symbol);
        }
    }

    void removeSymbol(int symbolId) {
        synchronized (symbols) {
            symbols.remove(symbolId);
        }
    }

    @Override
    public String toString() {
        return "Submap(" + submapId + " \"" + name + "\" parent object " + parentObjectId + ")";
    }
}
