package com.quenda.skiff.trellis.demo;

import com.quenda.skiff.trellis.server.Submap;

/**
 * The demo: runs the reference Java server over the map platform, prints the map as a tree from
 * its root submap, and ends the session. The map is the platform's (the emulator's QXW_MAP, or
 * its embedded default map); build/bin/skiff-demo sets that up.
 */
public final class Demo {
    private Demo() {}

    public static void main(String[] args) throws Exception {
        if (args.length > 0) {
            System.err.println("usage: skiff-demo [MAP_FILE]");
            System.exit(2);
        }
        DemoSession session = DemoSession.start(new DemoDispatcher());
        if (session == null) {
            System.err.println("skiff-demo: the map platform session could not be opened");
            System.exit(1);
        }
        System.out.printf("Map \"%s\" (%s)%n%n", session.results.mapName(),
                session.results.readOnly() ? "read-only" : "read-write");
        // The first request makes the client's connection; 0 asks for the root submap.
        Submap root = session.client.getSubmapAndSymbols(0)
                ? session.dispatcher.lastReportedSubmap() : null;
        if (root == null) {
            System.out.println("(the map has no root submap)");
        } else {
            new MapTreePrinter(session.client, session.dispatcher, System.out).print(root);
        }
        System.out.flush();
        if (!session.end()) {
            System.err.println("skiff-demo: the platform session could not be ended"
                    + " (no control socket in QXW_CONTROL); it ends with the process");
        }
        System.exit(0);
    }
}
