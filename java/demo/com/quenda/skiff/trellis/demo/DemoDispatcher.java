package com.quenda.skiff.trellis.demo;

import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.Submap;

/**
 * The demo's dispatcher: the reference dispatcher, which keeps the map it is given, and which
 * also remembers the submap reported last, so that the demo learns the root submap's id from its
 * first request. Map changes reach this class's callbacks on the dispatcher thread.
 */
class DemoDispatcher extends QxwEventDispatcher {
    private volatile Submap lastReported;

    /** The submap the last submap request reported; null before the first. */
    Submap lastReportedSubmap() { return lastReported; }

    @Override
    protected Submap addSubmap(int parentObjectId, int submapId, String submapName,
            int layoutStyle, boolean doUseAutoLayout, String backgroundGraphicsFile) {
        Submap submap = super.addSubmap(parentObjectId, submapId, submapName, layoutStyle,
                doUseAutoLayout, backgroundGraphicsFile);
        lastReported = submap;
        return submap;
    }
}
