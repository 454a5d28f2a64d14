package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import org.junit.jupiter.api.Test;

/**
 * Parent paths, node symbols and other symbols on search.json (see SearchTest). The map's root
 * submap 1 shows "IP Internet" (100), whose submap 2 shows Site A (200) and Site B (201); Site
 * A's submap 3 shows network 10.1.0 (300, submap 5 with rtr1 500), network 10.11.5 (304, also
 * 400 on Site B; submap 12), Annex on the user plane (301, submap 6) and the meta-connection 302
 * into submap 7; Depot has a user-plane symbol on the root submap (111) before an
 * application-plane one on Site B (403).
 */
class PathTest extends OneSessionTest {
    record Case(String what, Callable<List<?>> request, List<?> result, String stderr) {}

    private static void check(List<Case> cases) throws Exception {
        for (Case c : cases) {
            List<Object> result = new ArrayList<>();
            String stderr = TestNative.captureStderr(() -> result.addAll(c.request().call()));
            assertEquals(c.result(), result, c.what());
            assertEquals(c.stderr(), stderr, c.what());
        }
    }

    private static Case path(String what, int symbolId, int submapId, List<String> roots,
            Integer... path) {
        return new Case(what, () -> client.getSymbolParentPath(symbolId, submapId,
                roots.toArray(String[]::new)), List.of(path), "");
    }

    @Test
    void aSymbolsPathRunsFromTheScopeDownToItself() throws Exception {
        List<String> none = List.of();
        // Network 10.11.5 (object 5) shows submap 12 on Site A (304) and on Site B (400): its
        // first symbol in the platform's order makes the path.
        boolean siteAFirst = control.order("object 5").get(0) == 304;
        check(List.of(
                path("on the root submap", 100, 1, none, 100),
                path("three levels down", 500, 5, none, 100, 200, 300, 500),
                path("on a root object's submap", 300, 3, List.of("Site A"), 200, 300),
                path("below a root object", 500, 5, List.of("Site A"), 200, 300, 500),
                siteAFirst ? path("first of two routes", 1200, 12, none, 100, 200, 304, 1200)
                        : path("first of two routes", 1200, 12, none, 100, 201, 400, 1200),
                path("second route, the first leaving the scope", 1200, 12, List.of("Site B"),
                        201, 400, 1200),
                path("application plane before a shorter user-plane route", 1100, 11, none,
                        100, 201, 403, 1100),
                path("through a meta-connection", 700, 7, none, 100, 200, 302, 700),
                path("through the user plane", 600, 6, none, 100, 200, 301, 600),
                path("in a cycle", 901, 9, none, 901),
                path("no symbol", 0, 5, none),
                path("no submap", 500, 0, none)));
    }

    @Test
    void aNodesPathStartsFromItsTopMostSymbolInTheIPTopology() throws Exception {
        String notFound = "GetTopMostIPMapSymbolForObject: could not find symbol to use for object"
                + " [%s]\n";
        check(List.of(
                new Case("a router's compound-status symbol",
                        () -> client.getNodeParentPath("10.1.0.1", ""),
                        List.of(100, 200, 300, 500), ""),
                new Case("its first in-scope symbol when none in scope has compound status",
                        () -> client.getNodeParentPath("rtr1.example", "", "Site B"),
                        List.of(201, 401), ""),
                new Case("only on a meta-connection's submap",
                        () -> client.getNodeParentPath("trunk.local", ""), List.of(),
                        String.format(notFound, "trunk-host")),
                new Case("inside a parent, but no meta-connection on the way up",
                        () -> client.getNodeParentPath("trunk.local", "trunk"), List.of(700), ""),
                new Case("out of scope", () -> client.getNodeParentPath("hostx.example", "",
                        "Site A"), List.of(), String.format(notFound, "host-x")),
                new Case("no such node", () -> client.getNodeParentPath("nobody", ""),
                        List.of(), "")));
    }

    @Test
    void theScopingVerboseSwitchTellsWhichSymbolWasChosen() throws Exception {
        for (boolean verbose : new boolean[] {true, false}) {
            client.open(false, false, verbose);
            assertEquals(!verbose ? "" : "GetTopMostIPMapSymbolForObject for rtr1 (oid:10) decided"
                    + " to use symbol 500 (submap:Net 10.1.0)\n", TestNative.captureStderr(
                            () -> client.getNodeParentPath("10.1.0.1", "")));
        }
    }

    /** The node symbols that getNodeSymbol reports for its custom submap. */
    private static Case node(String what, int customSubmapId, String name, String parent,
            String stderr, String... reported) {
        return new Case(what, () -> logOf(() -> client.getNodeSymbol(customSubmapId, name, parent))
                .stream().filter(e -> e.startsWith("addNodeSymbol(")).toList(), List.of(reported),
                stderr);
    }

    @Test
    void aNodeSymbolIsReportedForItsCustomSubmap() throws Exception {
        // The twins are alike but for their ids.
        List<Integer> twins = control.order("object 25");
        check(List.of(
                node("of unknown kind: an in-scope symbol of another application will do", 99,
                        "elsewhere", null, "", "addNodeSymbol(303, 3, elsewhere, , Location:Other, 2,"
                                + " 0, 8, 8, false, 0, 0, 0, 0, 99)"),
                node("the later of two user-plane symbols on the parent's submap, in the"
                        + " platform's order", 7, "twin", "10.11.5", "", "addNodeSymbol("
                        + twins.get(1) + ", 12, twin, , Computer:Workstation, 4, 0, 25, 0, false,"
                        + " 0, 0, 0, 0, 7)"),
                node("not within the parent", 5, "host-x", "rtr1", "GetSymbolForObject: could"
                        + " not find symbol [host-x] within child submap of object [rtr1]\n"),
                node("no custom submap", 0, "rtr1", null, "")));
    }

    @Test
    void otherSymbolsAreTheObjectsOtherIconsWithinTheScope() throws Exception {
        check(List.of(
                new Case("the other place", () -> client.getOtherSymbols(401, 10),
                        List.of(new FoundSymbol("rtr1", "Net 10.1.0", "rtr1", 10, 500, 5,
                                "Connector:Router", 0)), ""),
                new Case("within Site B", () -> client.getOtherSymbols(0, 10, "Site B"),
                        List.of(new FoundSymbol("rtr1", "Site B", "rtr1", 10, 401, 4,
                                "Connector:Router", 0)), ""),
                new Case("never a connection", () -> client.getOtherSymbols(0, 7), List.of(), ""),
                new Case("on the user plane", () -> client.getOtherSymbols(1201, 25).stream()
                        .map(FoundSymbol::symbolId).toList(), List.of(1202), "")));
    }
}
