package com.quenda.skiff.trellis.demo;

import com.quenda.skiff.trellis.server.FoundSymbol;
import com.quenda.skiff.trellis.server.MapSymbol;
import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.PrintStream;
import java.util.List;
import java.util.Map;
import java.util.Properties;
import java.util.Set;
import java.util.TreeMap;
import java.util.stream.Collectors;

/**
 * The demo's queries, one line each: searches, paths from the root down to a symbol or a node,
 * and every network under its locations. Their answers are printed.
 */
final class MapQueries {
    static final String USAGE = String.join("\n",
            "  find name|host|address TEXT   TEXT: exact, with * a wildcard, /between slashes/"
                    + " a regular expression",
            "  path symbol SYMBOL SUBMAP     the path from the root submap down to a symbol",
            "  path name|host|address TEXT   the path down to a node (exact text)",
            "  locations                     every network under the locations that hold it");
    private static final Map<String, FoundSymbol.Category> KINDS = Map.of(
            "name", FoundSymbol.Category.OBJECTNAME,
            "host", FoundSymbol.Category.HOSTNAME,
            "address", FoundSymbol.Category.IPADDRESS);

    private final QxwInterface client;
    private final QxwEventDispatcher dispatcher;
    private final PrintStream out;

    MapQueries(QxwInterface client, PrintStream out) {
        this.client = client;
        this.dispatcher = client.getDispatcher();
        this.out = out;
    }

    /** True when the kind names something to search. */
    static boolean isKind(String kind) { return KINDS.containsKey(kind); }

    /** Answers one query line; false, printing nothing, for a line that is no query. */
    boolean run(String line) {
        String[] words = line.strip().split("\\s+", 3);
        switch (words[0]) {
            case "find" -> {
                if (words.length < 3 || !isKind(words[1])) return false;
                find(words[1], words[2]);
            }
            case "path" -> {
                if (words.length < 3) return false;
                if (words[1].equals("symbol")) {
                    String[] ids = words[2].split("\\s+");
                    if (ids.length != 2 || !ids[0].matches("\\d+") || !ids[1].matches("\\d+")) {
                        return false;
                    }
                    printPath("symbol " + ids[0], client.getSymbolParentPath(
                            Integer.parseInt(ids[0]), Integer.parseInt(ids[1])));
                } else if (words[1].equals("name")) {
                    List<FoundSymbol> hits = client.getMatchingSymbols(
                            FoundSymbol.Category.OBJECTNAME, FoundSymbol.MatchType.MATCH_EXACTLY,
                            words[2]);
                    printPath(words[2], hits.isEmpty() ? List.of()
                            : client.getSymbolParentPath(hits.get(0).symbolId(),
                                    hits.get(0).submapId()));
                } else if (words[1].equals("host") || words[1].equals("address")) {
                    printPath(words[2], client.getNodeParentPath(words[2], ""));
                } else {
                    return false;
                }
            }
            case "locations" -> {
                if (words.length != 1) return false;
                locations();
            }
            default -> {
                return false;
            }
        }
        out.flush();
        return true;
    }

    /** Searches the whole map and prints the hits with their submaps. */
    void find(String kind, String text) {
        FoundSymbol.MatchType matchType = FoundSymbol.MatchType.MATCH_EXACTLY;
        String query = text;
        if (text.length() >= 2 && text.startsWith("/") && text.endsWith("/")) {
            matchType = FoundSymbol.MatchType.MATCH_REGEXP;
            query = text.substring(1, text.length() - 1);
        } else if (text.contains("*")) {
            matchType = FoundSymbol.MatchType.MATCH_WILDCARD;
        }
        List<FoundSymbol> hits = client.getMatchingSymbols(KINDS.get(kind), matchType, query);
        out.printf("Search %s \"%s\": %d %s%n", kind, text, hits.size(),
                hits.size() == 1 ? "hit" : "hits");
        for (FoundSymbol hit : hits) {
            out.printf("  %s  [%s]  status %d  on submap %d \"%s\"  (symbol %d of %s)%n",
                    hit.symbolLabel(), hit.symbolType(), hit.symbolStatus(), hit.submapId(),
                    hit.submapName(), hit.symbolId(),
                    hit.objectSelectionName().isEmpty() ? "object " + hit.objectId()
                            : hit.objectSelectionName());
        }
        out.flush();
    }

    private void printPath(String target, List<Integer> path) {
        if (path.isEmpty()) {
            out.printf("Path to %s: not found%n", target);
            return;
        }
        out.printf("Path to %s: %s%n", target, path.stream().map(this::describe)
                .collect(Collectors.joining(" > ")));
    }

    /** A symbol as the mirror knows it: its label when its submap has been loaded. */
    private String describe(int symbolId) {
        MapSymbol symbol = dispatcher.getSymbol(symbolId);
        return symbol == null ? "symbol " + symbolId : symbol.getLabel() + " (" + symbolId + ")";
    }

    private void locations() {
        Map<Integer, Set<Integer>> byNetwork = new TreeMap<>(client.getLocationScopingInfo());
        out.printf("Networks inside locations: %d%n", byNetwork.size());
        byNetwork.forEach((network, locations) -> out.printf("  %s in %s%n", name(network),
                locations.stream().sorted().map(this::name).collect(Collectors.joining(", "))));
    }

    /** An object's selection name when the mirror has its field values, else its id. */
    private String name(int objectId) {
        Properties fields = dispatcher.getObjectFieldValues(objectId);
        String name = fields == null ? null : fields.getProperty("Selection Name");
        return name == null ? "object " + objectId : name + " (" + objectId + ")";
    }
}
