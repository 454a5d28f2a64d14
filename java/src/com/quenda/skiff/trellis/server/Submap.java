package com.quenda.skiff.trellis.server;

/** A submap as the map platform reported it. */
public class Submap {
    private final int parentObjectId;
    private final int submapId;
    private final String name;
    private final int layoutStyle;
    private volatile boolean autoLayout;
    private final String backgroundGraphicsFile;

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

    void setAutoLayout(boolean autoLayout) { this.autoLayout = autoLayout; }

    @Override
    public String toString() {
        return "Submap(" + submapId + " \"" + name + "\" parent object " + parentObjectId + ")";
    }
}
