package com.quenda.skiff.trellis;

/** Look-ups the server's protocols need from the system. */
public final class TrellisProtocol {
    static {
        NativeLibrary.load();
    }

    private TrellisProtocol() {}

    /**
     * The port of the named TCP service in the system's services database, or 0 when the
     * database does not list it (a message then goes to standard error) or the name is null.
     */
    public static native int getServiceByName(String tcpServiceName);
}
