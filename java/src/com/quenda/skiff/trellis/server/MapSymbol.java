package com.quenda.skiff.trellis.server;

/** A symbol on a submap: a node symbol or a connection symbol. */
public abstract class MapSymbol {
    private final int symbolId;
    private final int submapId;
    private final String label;
    private final String symbolType;
    private final int plane;
    private volatile int status;
    private final int objectId;
    private volatile int childSubmapId;
    private volatile boolean hidden;

    protected MapSymbol(int symbolId, int submapId, String label, String symbolType, int plane,
            int status, int objectId, int childSubmapId, boolean hidden) {
        this.symbolId = symbolId;
        this.submapId = submapId;
        this.label = label;
        this.symbolType = symbolType;
        this.plane = plane;
        this.status = status;
        this.objectId = objectId;
        this.childSubmapId = childSubmapId;
        this.hidden = hidden;
    }

    public int getSymbolId() { return symbolId; }
    public int getSubmapId() { return submapId; }
    public String getLabel() { return label; }
    /** The class and subclass joined by a colon, for example "Network:IP Internet". */
    public String getSymbolType() { return symbolType; }
    public int getPlane() { return plane; }
    public int getStatus() { return status; }
    public int getObjectId() { return objectId; }
    /** The submap that shows the object's insides, 0 if none. */
    public int getChildSubmapId() { return childSubmapId; }
    public boolean isHidden() { return hidden; }

    void setStatus(int status) { this.status = status; }
    void setHidden(boolean hidden) { this.hidden = hidden; }
    void setChildSubmapId(int childSubmapId) { this.childSubmapId = childSubmapId; }
}
