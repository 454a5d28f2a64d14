package com.quenda.skiff.trellis.demo;

import com.quenda.skiff.trellis.server.MapListener;
import com.quenda.skiff.trellis.server.MapNodeSymbol;
import com.quenda.skiff.trellis.server.MapSymbol;
import java.io.PrintStream;

/** Prints each change to the map, one line each, once the dispatcher's mirror has applied it. */
final class MapChangePrinter implements MapListener {
    private final PrintStream out;

    MapChangePrinter(PrintStream out) {
        this.out = out;
    }

    @Override
    public void symbolHidden(MapSymbol symbol) { print(symbol, "hidden"); }

    @Override
    public void symbolUnhidden(MapSymbol symbol) { print(symbol, "visible"); }

    @Override
    public void symbolStatusChanged(MapSymbol symbol, int previousStatus) {
        print(symbol, "status " + previousStatus + " -> " + symbol.getStatus());
    }

    @Override
    public void symbolCreated(MapSymbol symbol) { print(symbol, "created"); }

    @Override
    public void symbolDeleted(MapSymbol symbol) { print(symbol, "deleted"); }

    @Override
    public void symbolMoved(MapNodeSymbol symbol) {
        String position = switch (symbol.getPlacement()) {
            case MapNodeSymbol.PLACED_AT_COORDINATES ->
                    "moved to (" + symbol.getX() + ", " + symbol.getY() + ")";
            case MapNodeSymbol.PLACED_AFTER_PREDECESSOR -> symbol.getPredSymbolId() == 0
                    ? "moved to the front" : "moved after symbol " + symbol.getPredSymbolId();
            default -> "placed by rule " + symbol.getPlacement();
        };
        print(symbol, position);
    }

    @Override
    public void symbolNormalizeChanged(MapNodeSymbol symbol) {
        print(symbol, symbol.isNormalized() ? "normalized" : "no longer normalized");
    }

    @Override
    public void submapCreated(int submapId, int parentObjectId) {
        out.println("* submap " + submapId + " created"
                + (parentObjectId != 0 ? " for object " + parentObjectId : ""));
    }

    @Override
    public void submapDeleted(int submapId, int parentObjectId) {
        out.println("* submap " + submapId + " deleted");
    }

    @Override
    public void submapAutoLayoutChanged(int submapId, boolean layoutOn) {
        out.println("* submap " + submapId + ": automatic layout " + (layoutOn ? "on" : "off"));
    }

    @Override
    public void mapOpened(String mapName, boolean readOnly, int rootSubmapId) {
        out.println("* map \"" + mapName + "\" opened (" + (readOnly ? "read-only" : "read-write")
                + "), root submap " + rootSubmapId);
    }

    @Override
    public void mapClosed(String mapName) {
        out.println("* map \"" + mapName + "\" closed");
    }

    @Override
    public void sessionEnded() {
        out.println("* the session has ended");
    }

    private void print(MapSymbol symbol, String change) {
        String label = symbol.getLabel().isEmpty() ? "" : " \"" + symbol.getLabel() + "\"";
        out.println("* symbol " + symbol.getSymbolId() + label + " on submap "
                + symbol.getSubmapId() + ": " + change);
    }
}
