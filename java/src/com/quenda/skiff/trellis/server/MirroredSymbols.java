package com.quenda.skiff.trellis.server;

import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

/**
 * The mirror's symbols by symbol id, and by object id for the changes that reach every symbol of
 * an object. Each operation costs the same whatever the size of the map (an object's symbols are
 * few). Not synchronized: the dispatcher guards it with its mirror lock.
 */
final class MirroredSymbols {
    private final Map<Integer, MapSymbol> byId = new HashMap<>();
    // Each object's symbols, in no particular order; an object with none has no entry.
    private final Map<Integer, List<MapSymbol>> byObject = new HashMap<>();

    MapSymbol get(int symbolId) { return byId.get(symbolId); }

    /** Adds the symbol, replacing the one with its id. */
    void put(MapSymbol symbol) {
        MapSymbol previous = byId.put(symbol.getSymbolId(), symbol);
        if (previous != null) unindex(previous);
        byObject.computeIfAbsent(symbol.getObjectId(), o -> new ArrayList<>(1)).add(symbol);
    }

    /** Removes the symbol with this id; the symbol removed, or null. */
    MapSymbol remove(int symbolId) {
        MapSymbol removed = byId.remove(symbolId);
        if (removed != null) unindex(removed);
        return removed;
    }

    /** Removes this very symbol, unless another has taken its id since. */
    void removeExactly(MapSymbol symbol) {
        if (byId.remove(symbol.getSymbolId(), symbol)) unindex(symbol);
    }

    void clear() {
        byId.clear();
        byObject.clear();
    }

    /** The symbols of the object that open into submap `from` open into `to` now. */
    void setChildSubmap(int objectId, int from, int to) {
        for (MapSymbol symbol : byObject.getOrDefault(objectId, List.of())) {
            if (symbol.getChildSubmapId() == from) symbol.setChildSubmapId(to);
        }
    }

    private void unindex(MapSymbol symbol) {
        List<MapSymbol> ofObject = byObject.get(symbol.getObjectId());
        if (ofObject == null) return;
        for (int i = 0; i < ofObject.size(); i++) {
            if (ofObject.get(i) == symbol) {
                ofObject.remove(i);
                break;
            }
        }
        if (ofObject.isEmpty()) byObject.remove(symbol.getObjectId());
    }
}
