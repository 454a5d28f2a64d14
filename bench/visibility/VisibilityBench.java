package com.quenda.skiff.trellis.bench;

import static com.quenda.skiff.trellis.bench.BenchSupport.append;
import static com.quenda.skiff.trellis.bench.BenchSupport.duration;

import com.quenda.skiff.trellis.bench.BenchSupport.Calls;
import com.quenda.skiff.trellis.bench.BenchSupport.Control;
import com.quenda.skiff.trellis.bench.BenchSupport.RoundLimits;
import com.quenda.skiff.trellis.bench.BenchSupport.Rounds;
import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.BufferedReader;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Interfaces hidden and shown again with their nodes ({@code setInterfaceAndNodeVisibilityState},
 * two requests), 1 to 10,000 interfaces at a time, each request followed by the emulator's
 * "sync" so that its events have reached Java; beside the floor: the same symbols hidden and
 * shown directly ({@code setSymbolVisibilityState}, also followed by "sync"), which makes the
 * same platform change and the same events without finding the symbols.
 *
 * <p>Arguments: MAP_FILE MAP_LABEL TIMES_FILE [MIN_ROUNDS [BUDGET_MS [MAX_ROUNDS]]]. MAP_FILE is
 * the map QXW_MAP names, as qxw-mapgen writes it (one object per line); each size appends one
 * Markdown row to TIMES_FILE, prefixed by a sort key, and one point to its series.
 */
public final class VisibilityBench {
    private static final int[] SIZES = {1, 10, 100, 1_000, 10_000};
    private static final Pattern INTERFACE =
            Pattern.compile("^\\{\"id\": (\\d+),.*\"isInterface\": true");

    /**
     * The reference dispatcher, also keeping the symbols hidden since it was last asked. The
     * library reports a symbol's change only on a submap that Java holds: while {@code
     * discovering}, it is told that Java holds them all.
     */
    private static final class HiddenSymbols extends QxwEventDispatcher {
        private final Set<Integer> hidden = new LinkedHashSet<>();
        volatile boolean discovering;

        @Override
        protected boolean submapInCache(int submapId) {
            return discovering || super.submapInCache(submapId);
        }

        @Override
        protected void symbolHiddenCB(int symbolId, int submapId, boolean isNode) {
            synchronized (hidden) {
                hidden.add(symbolId);
            }
            super.symbolHiddenCB(symbolId, submapId, isNode);
        }

        int[] take() {
            synchronized (hidden) {
                int[] ids = hidden.stream().mapToInt(Integer::intValue).toArray();
                hidden.clear();
                return ids;
            }
        }
    }

    /** The interface objects of the map, in the order of the file. */
    private static List<Integer> interfaces(Path map) throws IOException {
        List<Integer> ids = new ArrayList<>();
        try (BufferedReader in = Files.newBufferedReader(map)) {
            for (String line; (line = in.readLine()) != null; ) {
                Matcher m = INTERFACE.matcher(line);
                if (m.find()) ids.add(Integer.parseInt(m.group(1)));
            }
        }
        return ids;
    }

    public static void main(String[] args) throws Exception {
        List<Integer> all = interfaces(Path.of(args[0]));
        String mapLabel = args[1];
        Path timesFile = Path.of(args[2]);
        RoundLimits limits = RoundLimits.of(args, 3, 31, 2000, 1001);

        HiddenSymbols dispatcher = new HiddenSymbols();
        QxwInterface client = BenchSupport.connectOnOneCpu("VisibilityBench", dispatcher);
        Control control = new Control();
        for (int size : SIZES) {
            if (size > all.size()) break;
            int[] interfaces = all.subList(0, size).stream().mapToInt(Integer::intValue).toArray();
            // The symbols the request changes, shown again before anything is timed.
            control.run("sync");
            dispatcher.take();
            dispatcher.discovering = true;
            client.setInterfaceAndNodeVisibilityState(interfaces, true);
            control.run("sync");
            dispatcher.discovering = false;
            int[] symbols = dispatcher.take();
            client.setInterfaceAndNodeVisibilityState(interfaces, false);
            control.run("sync");
            if (symbols.length < size) {
                throw new IllegalStateException(size + " interfaces hid " + symbols.length
                        + " symbols");
            }
            Runnable request = () -> {
                client.setInterfaceAndNodeVisibilityState(interfaces, true);
                control.run("sync");
                client.setInterfaceAndNodeVisibilityState(interfaces, false);
                control.run("sync");
            };
            Runnable direct = () -> {
                client.setSymbolVisibilityState(symbols, true);
                control.run("sync");
                client.setSymbolVisibilityState(symbols, false);
                control.run("sync");
            };
            Rounds rounds = new Rounds(request, direct, limits);
            Calls calls = Calls.of(request);
            Calls directCalls = Calls.of(direct);
            append(timesFile, String.format(Locale.ROOT, "%06d", size), String.format(Locale.ROOT,
                    "| %,d | %,d | %s | %d | %s | %s | %s | %s | %s | %s | %,d | %,d |", size,
                    symbols.length, mapLabel, rounds.count, duration(rounds.subject(0.50)),
                    duration(rounds.subject(0.99)), duration(rounds.baseline(0.50)),
                    duration(rounds.baseline(0.99)), rounds.share(), rounds.ratio(),
                    calls.total(), directCalls.total()));
            BenchSupport.series("visibility", "hide and show interfaces with their nodes",
                    "interfaces", size, rounds, calls.total());
        }
        System.exit(0);
    }
}
