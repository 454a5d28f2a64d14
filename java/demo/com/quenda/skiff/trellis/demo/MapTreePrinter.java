package com.quenda.skiff.trellis.demo;

import com.quenda.skiff.trellis.server.MapConnectionSymbol;
import com.quenda.skiff.trellis.server.MapSymbol;
import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.QxwInterface;
import com.quenda.skiff.trellis.server.Submap;
import java.io.PrintStream;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Properties;
import java.util.Set;
import java.util.stream.Collectors;

/**
 * Prints the map as a tree: one line per symbol, and under every symbol that opens into a child
 * submap (icon symbols and meta-connections) that submap's symbols, one level deeper. Each
 * submap is asked for and printed once; a symbol that opens into a submap printed before (on a
 * cycle, or a router shown on several submaps) says so instead. An object's fields are printed
 * with its first symbol only.
 */
final class MapTreePrinter {
    private static final String INDENT = "  ";
    /** Tool-tip fields in the order they are printed; any other key follows, sorted. */
    private static final List<String> FIELD_ORDER = List.of("Selection Name", "IP Address",
            "IP Subnet Mask", "SNMP ifPhysAddr", "SNMP sysObjectID", "SNMP sysLocation",
            "SNMP sysDescr", "SNMP sysContact", "vendor", "SNMPAgent", "isSNMPProxied",
            "isSNMPSupported", "isNormalized");

    private final QxwInterface client;
    private final QxwEventDispatcher dispatcher;
    private final PrintStream out;
    private final Set<Integer> opened = new HashSet<>();
    private final Set<Integer> objectsShown = new HashSet<>();

    MapTreePrinter(QxwInterface client, QxwEventDispatcher dispatcher, PrintStream out) {
        this.client = client;
        this.dispatcher = dispatcher;
        this.out = out;
    }

    /** Prints the tree below a submap that has been reported already. */
    void print(Submap root) {
        opened.add(root.getSubmapId());
        out.println(describe(root));
        printSymbols(root, 1);
    }

    private void printSymbols(Submap submap, int depth) {
        String indent = INDENT.repeat(depth);
        for (MapSymbol symbol : submap.getSymbols()) {
            String line = indent + describe(symbol);
            int childId = symbol.getChildSubmapId();
            if (childId == 0) {
                out.println(line);
            } else if (!opened.add(childId)) {
                out.println(line + "  -> submap " + childId + " (shown above)");
            } else if (!client.getSubmapAndSymbols(childId)) {
                out.println(line + "  -> submap " + childId + " (not on the map)");
            } else {
                Submap child = dispatcher.getSubmap(childId);
                out.println(line + "  -> " + describe(child));
                printSymbols(child, depth + 1);
            }
        }
    }

    private static String describe(Submap submap) {
        return "submap " + submap.getSubmapId() + " \"" + submap.getName() + "\"";
    }

    /** Label, type, status, hidden flag and, the first time, the object's tool-tip fields. */
    private String describe(MapSymbol symbol) {
        StringBuilder line = new StringBuilder();
        if (symbol instanceof MapConnectionSymbol connection) {
            line.append("connection ").append(endpoint(connection.getEndpoint1Id()))
                    .append(" -- ").append(endpoint(connection.getEndpoint2Id()));
            if (!symbol.getLabel().isEmpty()) {
                line.append(" \"").append(symbol.getLabel()).append('"');
            }
        } else {
            line.append(symbol.getLabel().isEmpty() ? "(no label)" : symbol.getLabel());
        }
        line.append("  [").append(symbol.getSymbolType()).append("]  status ")
                .append(symbol.getStatus()).append(symbol.isHidden() ? ", hidden" : ", visible");
        Properties fields = dispatcher.getObjectFieldValues(symbol.getObjectId());
        if (fields != null && !fields.isEmpty() && objectsShown.add(symbol.getObjectId())) {
            line.append("  {").append(format(fields)).append('}');
        }
        return line.toString();
    }

    private String endpoint(int symbolId) {
        MapSymbol symbol = dispatcher.getSymbol(symbolId);
        return symbol != null && !symbol.getLabel().isEmpty() ? symbol.getLabel() : "#" + symbolId;
    }

    /** "key: value; ..."; a value of several lines (one per interface) is joined with " / ". */
    private static String format(Properties fields) {
        List<String> keys = new ArrayList<>(fields.stringPropertyNames());
        keys.sort((a, b) -> {
            int ia = FIELD_ORDER.indexOf(a);
            int ib = FIELD_ORDER.indexOf(b);
            if (ia >= 0 && ib >= 0) return Integer.compare(ia, ib);
            if (ia >= 0 || ib >= 0) return ia >= 0 ? -1 : 1;
            return a.compareTo(b);
        });
        return keys.stream()
                .map(key -> key + ": " + fields.getProperty(key).replace("\n", " / "))
                .collect(Collectors.joining("; "));
    }
}
