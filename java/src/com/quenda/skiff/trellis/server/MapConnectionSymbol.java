package com.quenda.skiff.trellis.server;

/** A connection symbol between two endpoint symbols. */
public class MapConnectionSymbol extends MapSymbol {
    private final int endpoint1Id;
    private final int endpoint2Id;

    public MapConnectionSymbol(int symbolId, int submapId, String label, String symbolType,
            int plane, int status, int objectId, int childSubmapId, boolean hidden,
            int endpoint1Id, int endpoint2Id) {
        super(symbolId, submapId, label, symbolType, plane, status, objectId, childSubmapId,
                hidden);
        this.endpoint1Id = endpoint1Id;
        this.endpoint2Id = endpoint2Id;
    }

    public int getEndpoint1Id() { return endpoint1Id; }
    public int getEndpoint2Id() { return endpoint2Id; }

    @Override
    public String toString() {
        return "MapConnectionSymbol(" + getSymbolId() + " " + endpoint1Id + "-" + endpoint2Id
                + " on submap " + getSubmapId() + ")";
    }
}
