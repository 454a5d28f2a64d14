package com.quenda.skiff.trellis.server;

/**
 * Hears of each change to the map once the {@link QxwEventDispatcher} has applied it to its
 * mirror. Every method does nothing unless overridden.
 *
 * <p>Listeners are called on the dispatcher thread, in the order the changes come; changes that
 * the platform reports together are applied, and heard of, between the dispatcher's
 * {@code beginMapSync} and {@code endMapSync}. A listener must not make client requests (the
 * dispatcher thread serves them only after the listener has returned) and should return quickly.
 * An exception thrown by a listener is reported on standard error and does not keep the others
 * from hearing of the change.
 */
public interface MapListener {
    /** The symbol, on a loaded submap, was hidden. */
    default void symbolHidden(MapSymbol symbol) {}

    /** The symbol, on a loaded submap, was shown again. */
    default void symbolUnhidden(MapSymbol symbol) {}

    /** The symbol's status changed from previousStatus to its current one. */
    default void symbolStatusChanged(MapSymbol symbol, int previousStatus) {}

    /** The symbol was created on a loaded submap and added to it. */
    default void symbolCreated(MapSymbol symbol) {}

    /** The symbol, removed from its loaded submap, was deleted. */
    default void symbolDeleted(MapSymbol symbol) {}

    /** The node symbol has another position. */
    default void symbolMoved(MapNodeSymbol symbol) {}

    /** The node symbol was normalized or no longer is. */
    default void symbolNormalizeChanged(MapNodeSymbol symbol) {}

    /** A submap was created, as the child submap of the object when that is not 0. */
    default void submapCreated(int submapId, int parentObjectId) {}

    /** A submap was deleted; when it was loaded, it and its symbols have left the mirror. */
    default void submapDeleted(int submapId, int parentObjectId) {}

    /** Automatic layout of a submap, loaded or not, was switched on or off. */
    default void submapAutoLayoutChanged(int submapId, boolean layoutOn) {}

    /** A map was opened; the mirror holds its root submap alone. */
    default void mapOpened(String mapName, boolean readOnly, int rootSubmapId) {}

    /** The map was closed; the mirror is empty. */
    default void mapClosed(String mapName) {}

    /** The platform session has ended: no further change will come. */
    default void sessionEnded() {}
}
