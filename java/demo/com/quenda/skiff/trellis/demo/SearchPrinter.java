package com.quenda.skiff.trellis.demo;

import com.quenda.skiff.trellis.server.FoundSymbol;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.PrintStream;
import java.util.List;
import java.util.Map;

/**
 * Searches the map and prints the hits with their submaps. A query is a kind (name, host or
 * address) and a text: a text with '*' is a wildcard pattern, one between slashes a regular
 * expression, any other is matched exactly.
 */
final class SearchPrinter {
    static final String USAGE = "find name|host|address TEXT   (TEXT: exact, with * a wildcard,"
            + " /between slashes/ a regular expression)";
    private static final Map<String, FoundSymbol.Category> KINDS = Map.of(
            "name", FoundSymbol.Category.OBJECTNAME,
            "host", FoundSymbol.Category.HOSTNAME,
            "address", FoundSymbol.Category.IPADDRESS);

    private final QxwInterface client;
    private final PrintStream out;

    SearchPrinter(QxwInterface client, PrintStream out) {
        this.client = client;
        this.out = out;
    }

    /** True when the kind names something to search. */
    static boolean isKind(String kind) { return KINDS.containsKey(kind); }

    /** Searches the whole map and prints the hits; the kind must be one isKind accepts. */
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
}
