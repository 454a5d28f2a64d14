package com.quenda.skiff.trellis.demo;

import com.quenda.skiff.trellis.server.Submap;
import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;

/**
 * The demo: runs the reference Java server over the map platform, prints the map as a tree from
 * its root submap, then prints each change to the map as the server's mirror applies it, until
 * the session ends. The map is the platform's (the emulator's QXW_MAP, or its embedded default
 * map) and so is the control socket through which a person changes it (QXW_CONTROL);
 * build/bin/skiff-demo sets both up. With --find KIND TEXT it also searches the map before
 * watching it; while it watches, query lines on standard input search it, show paths and group
 * networks under their locations (see MapQueries). SIGTERM
 * ends the session before the demo exits.
 */
public final class Demo {
    private Demo() {}

    public static void main(String[] args) throws Exception {
        boolean find = args.length == 3 && args[0].equals("--find")
                && MapQueries.isKind(args[1]);
        if (args.length > 0 && !find) {
            System.err.println("usage: skiff-demo [--control SOCKET]"
                    + " [--find name|host|address TEXT] [MAP_FILE]");
            System.exit(2);
        }
        DemoSession session = DemoSession.start(new DemoDispatcher());
        if (session == null) {
            System.err.println("skiff-demo: the map platform session could not be opened");
            System.exit(1);
        }
        Runtime.getRuntime().addShutdownHook(new Thread(session::endIfRunning, "end session"));
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

        MapQueries queries = new MapQueries(session.client, System.out);
        if (find) {
            System.out.println();
            queries.find(args[1], args[2]);
        }

        session.dispatcher.addMapListener(new MapChangePrinter(System.out));
        String socket = System.getenv("QXW_CONTROL");
        String controlClient = System.getProperty("skiff.demo.controlClient", "qxw-ctl");
        String example = root == null || root.getSymbols().isEmpty() ? "ID"
                : String.valueOf(root.getSymbols().get(0).getSymbolId());
        System.out.printf("%nWatching the map. Change it through the control socket %s,"
                + " for example:%n  %s -s %s \"status 3 %s\" \"hide %s\" \"move %s 1 100 100\"%n"
                + "End with \"%s -s %s end-session\" or Ctrl-C.%n", socket, controlClient,
                socket, example, example, example, controlClient, socket);
        System.out.printf("Ask it by typing:%n%s%n%n", MapQueries.USAGE);
        System.out.flush();
        Thread input = new Thread(() -> readCommands(queries), "standard input");
        input.setDaemon(true);
        input.start();
        session.awaitEnd();
        System.exit(0);
    }

    /** Answers the query lines of standard input until it ends. */
    private static void readCommands(MapQueries queries) {
        BufferedReader in = new BufferedReader(new InputStreamReader(System.in));
        try {
            for (String line; (line = in.readLine()) != null; ) {
                if (line.isBlank() || queries.run(line)) continue;
                System.out.println("? " + line.strip() + "\n" + MapQueries.USAGE);
                System.out.flush();
            }
        } catch (IOException e) {
            // Standard input is gone: the demo goes on watching the map.
        }
    }
}
