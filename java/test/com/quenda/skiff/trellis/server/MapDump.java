package com.quenda.skiff.trellis.server;

import java.io.IOException;
import java.util.ArrayList;
import java.util.Comparator;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/**
 * The emulator's {@code dump} of the current map: its objects, submaps and symbols by id, in map
 * order, and the ids of its fields by name.
 */
final class MapDump {
    final Map<String, Long> fieldIds = new LinkedHashMap<>();
    final Map<Long, Map<String, Object>> objects = new LinkedHashMap<>();
    final Map<Long, Map<String, Object>> submaps = new LinkedHashMap<>();
    final Map<Long, Map<String, Object>> symbols = new LinkedHashMap<>();

    @SuppressWarnings("unchecked")
    private MapDump(String reply) {
        Map<?, ?> map = (Map<?, ?>) ((Map<?, ?>) new Reader(reply).value()).get("map");
        for (Object field : (List<?>) map.get("fields")) {
            fieldIds.put((String) ((Map<?, ?>) field).get("name"),
                    (Long) ((Map<?, ?>) field).get("id"));
        }
        for (var kind : List.of(Map.entry("objects", objects), Map.entry("submaps", submaps),
                Map.entry("symbols", symbols))) {
            for (Object entity : (List<?>) map.get(kind.getKey())) {
                kind.getValue().put((Long) ((Map<?, ?>) entity).get("id"),
                        (Map<String, Object>) entity);
            }
        }
    }

    static MapDump of(EmulatorControl control) throws IOException {
        return new MapDump(control.ok("dump"));
    }

    boolean hidden(long symbolId) { return (Boolean) symbols.get(symbolId).get("hidden"); }
    long status(long symbolId) { return (Long) symbols.get(symbolId).get("status"); }
    boolean acknowledged(long objectId) {
        return (Boolean) objects.get(objectId).get("acknowledged");
    }
    boolean managed(long objectId) { return (Boolean) objects.get(objectId).get("managed"); }

    /**
     * The symbols of a submap by id, each as {@link #describe(MapSymbol)} shows a symbol of the
     * dispatcher's mirror.
     */
    List<List<Object>> symbolsOn(long submapId) {
        return symbols.values().stream().filter(s -> (Long) s.get("submap") == submapId)
                .map(s -> {
                    long placement = (Long) s.getOrDefault("placement", -1L);
                    boolean at = placement == MapNodeSymbol.PLACED_AT_COORDINATES;
                    return List.of(s.get("id"), s.get("hidden"), s.get("status"), placement,
                            at ? s.getOrDefault("x", 0L) : 0L, at ? s.getOrDefault("y", 0L) : 0L,
                            placement == MapNodeSymbol.PLACED_AFTER_PREDECESSOR ? s.get("pred")
                                    : 0L);
                }).sorted(BY_ID).toList();
    }

    /** Orders descriptions by their symbol id. */
    static final Comparator<List<Object>> BY_ID = Comparator.comparing(d -> (Long) d.get(0));

    /**
     * Id, hidden flag, status and position (placement, x, y, predecessor) as the mirror keeps
     * them: coordinates only for placement 1, a predecessor only for placement 2; a connection
     * has placement -1.
     */
    static List<Object> describe(MapSymbol s) {
        MapNodeSymbol n = s instanceof MapNodeSymbol node ? node : null;
        return List.of((long) s.getSymbolId(), s.isHidden(), (long) s.getStatus(),
                n == null ? -1L : (long) n.getPlacement(), n == null ? 0L : (long) n.getX(),
                n == null ? 0L : (long) n.getY(), n == null ? 0L : (long) n.getPredSymbolId());
    }

    /** An object's database field value (Long, Boolean, String or List), null when unset. */
    Object field(long objectId, String name) {
        return ((Map<?, ?>) objects.get(objectId).get("fields")).get(name);
    }

    /** Just enough of the emulator's compact JSON: objects, arrays, strings, integers, literals. */
    private static final class Reader {
        private final String text;
        private int at;

        Reader(String text) { this.text = text; }

        Object value() {
            char c = text.charAt(at);
            if (c == '{' || c == '[') {
                Map<String, Object> members = new LinkedHashMap<>();
                List<Object> elements = new ArrayList<>();
                do {
                    if (text.charAt(++at) == (c == '{' ? '}' : ']')) break;
                    if (c == '[') {
                        elements.add(value());
                    } else {
                        String name = (String) value();
                        at++;
                        members.put(name, value());
                    }
                } while (text.charAt(at) == ',');
                at++;
                return c == '{' ? members : elements;
            }
            if (c == '"') return string();
            int start = at;
            while (at < text.length() && ",]}".indexOf(text.charAt(at)) < 0) at++;
            String word = text.substring(start, at);
            return word.equals("null") ? null
                    : word.equals("true") || word.equals("false") ? Boolean.valueOf(word)
                    : (Object) Long.parseLong(word);
        }

        /** A string; a Unicode escape is decoded, any other escape keeps its character. */
        private String string() {
            StringBuilder s = new StringBuilder();
            for (at++; text.charAt(at) != '"'; at++) {
                char c = text.charAt(at);
                if (c == '\\' && text.charAt(++at) == 'u') {
                    c = (char) Integer.parseInt(text.substring(at + 1, at + 5), 16);
                    at += 4;
                } else if (c == '\\') {
                    c = text.charAt(at);
                }
                s.append(c);
            }
            at++;
            return s.toString();
        }
    }
}
