package com.quenda.skiff.trellis.server;

/** An icon symbol, placed by coordinates or after another symbol. */
public class MapNodeSymbol extends MapSymbol {
    /** Placement by coordinates (x, y). */
    public static final int PLACED_AT_COORDINATES = 1;
    /** Placement after the predecessor symbol. */
    public static final int PLACED_AFTER_PREDECESSOR = 2;

    private final String annotation;
    private volatile int placement;
    private volatile int x;
    private volatile int y;
    private volatile int predSymbolId;
    private final int customSubmapId;
    private volatile boolean normalized;

    public MapNodeSymbol(int symbolId, int submapId, String label, String annotation,
            String symbolType, int plane, int status, int objectId, int childSubmapId,
            boolean hidden, int placement, int x, int y, int predSymbolId, int customSubmapId) {
        super(symbolId, submapId, label, symbolType, plane, status, objectId, childSubmapId,
                hidden);
        this.annotation = annotation;
        this.placement = placement;
        this.x = x;
        this.y = y;
        this.predSymbolId = predSymbolId;
        this.customSubmapId = customSubmapId;
    }

    public String getAnnotation() { return annotation; }
    public int getPlacement() { return placement; }
    public int getX() { return x; }
    public int getY() { return y; }
    public int getPredSymbolId() { return predSymbolId; }
    /** The submap this symbol was reported for, when not its own; 0 otherwise. */
    public int getCustomSubmapId() { return customSubmapId; }
    /** The symbol's normalize flag as the last change reported it; false until then. */
    public boolean isNormalized() { return normalized; }

    /** Takes the position; true when it differs from the one held. */
    boolean moveTo(int placement, int x, int y, int predSymbolId) {
        boolean moved = placement != this.placement || x != this.x || y != this.y
                || predSymbolId != this.predSymbolId;
        this.placement = placement;
        this.x = x;
        this.y = y;
        this.predSymbolId = predSymbolId;
        return moved;
    }

    void setNormalized(boolean normalized) { this.normalized = normalized; }

    @Override
    public String toString() {
        return "MapNodeSymbol(" + getSymbolId() + " \"" + getLabel() + "\" on submap "
                + getSubmapId() + ")";
    }
}
