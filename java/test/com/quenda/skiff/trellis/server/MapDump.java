package com.quenda.skiff.trellis.server;

import java.io.IOException;
import java.util.ArrayList;
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
