package com.quenda.skiff.trellis.bench;

import static com.quenda.skiff.trellis.bench.BenchSupport.append;
import static com.quenda.skiff.trellis.bench.BenchSupport.duration;

import com.quenda.skiff.trellis.bench.BenchSupport.Calls;
import com.quenda.skiff.trellis.bench.BenchSupport.Control;
import com.quenda.skiff.trellis.bench.BenchSupport.RoundLimits;
import com.quenda.skiff.trellis.bench.BenchSupport.Rounds;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.IOException;
import java.io.Writer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Locale;

/**
 * Map events on one symbol of a submap of N node symbols that the Java dispatcher has loaded,
 * each timed from the control command that makes it until its handler has returned (the
 * command, then "sync"), beside the same event on a submap of the same size that Java has not
 * loaded: there the library asks whether the submap is loaded and does nothing more.
 *
 * <p>Arguments: SYMBOLS MAP_FILE TIMES_FILE [MIN_ROUNDS [BUDGET_MS [MAX_ROUNDS]]]. The map is
 * written to MAP_FILE (which QXW_MAP names) before the session opens; each event appends one
 * Markdown row to TIMES_FILE, prefixed by a sort key, and one point to its series.
 */
public final class EventsBench {
    private static final int LOADED = 2;
    private static final int NOT_LOADED = 3;

    /** An event: the command that makes it on one symbol, alternating between two forms. */
    private record Event(String name, String series, String first, String second) {
        String command(int round, int symbol) {
            return String.format(Locale.ROOT, round % 2 == 0 ? first : second, symbol);
        }
    }

    private static final Event[] EVENTS = {
        new Event("status change", "events-status", "status 3 %d", "status 2 %d"),
        new Event("hide, unhide", "events-hide", "hide %d", "unhide %d"),
        new Event("move", "events-move", "move %d 1 5 6", "move %d 1 7 8"),
    };

    /** Symbols of submap s: ids s * 1,000,000 + i, objects the same, at (i % 100, i / 100). */
    private static void writeMap(Path path, int symbols) throws IOException {
        try (Writer out = Files.newBufferedWriter(path)) {
            out.write("{\"map\": {\"name\": \"events bench\", \"permissions\": 2,"
                    + " \"rootSubmap\": 1},\n\"submaps\": [{\"id\": 1, \"name\": \"Root\"},"
                    + " {\"id\": 2, \"name\": \"loaded\", \"parentObject\": 2},"
                    + " {\"id\": 3, \"name\": \"not loaded\", \"parentObject\": 3}],\n"
                    + "\"objects\": [{\"id\": 2, \"childSubmap\": 2},"
                    + " {\"id\": 3, \"childSubmap\": 3}");
            for (int s = LOADED; s <= NOT_LOADED; s++) {
                for (int i = 0; i < symbols; i++) {
                    out.write(String.format(Locale.ROOT, ",\n{\"id\": %d, \"fields\":"
                            + " {\"Selection Name\": \"node-%d-%d\", \"isNode\": true}}",
                            s * 1_000_000 + i, s, i));
                }
            }
            out.write("],\n\"symbols\": [");
            for (int s = LOADED; s <= NOT_LOADED; s++) {
                out.write(String.format(Locale.ROOT, "%s{\"id\": %d, \"submap\": 1, \"object\":"
                        + " %d, \"label\": \"submap %d\", \"type\": \"Network:Bench\", \"variety\":"
                        + " 1, \"plane\": 2}", s == LOADED ? "" : ",\n", s, s, s));
                for (int i = 0; i < symbols; i++) {
                    out.write(String.format(Locale.ROOT, ",\n{\"id\": %d, \"submap\": %d,"
                            + " \"object\": %d, \"label\": \"node-%d\", \"type\":"
                            + " \"Computer:Workstation\", \"variety\": 1, \"plane\": 2,"
                            + " \"placement\": 1, \"x\": %d, \"y\": %d}",
                            s * 1_000_000 + i, s, s * 1_000_000 + i, i, i % 100, i / 100));
                }
            }
            out.write("]}\n");
        }
    }

    public static void main(String[] args) throws Exception {
        int symbols = Integer.parseInt(args[0]);
        writeMap(Path.of(args[1]), symbols);
        Path timesFile = Path.of(args[2]);
        RoundLimits limits = RoundLimits.of(args, 3, 31, 2000, 1001);

        QxwInterface client = BenchSupport.connectOnOneCpu("EventsBench");
        if (!client.getSubmapAndSymbols(LOADED)) throw new IllegalStateException("no submap");
        Control control = new Control();
        // The middle symbol of each submap.
        int loaded = LOADED * 1_000_000 + symbols / 2;
        int notLoaded = NOT_LOADED * 1_000_000 + symbols / 2;

        for (int e = 0; e < EVENTS.length; e++) {
            Event event = EVENTS[e];
            int[] round = {0, 0};
            Runnable onLoaded = () -> control.run(event.command(round[0]++, loaded), "sync");
            Runnable onNotLoaded = () -> control.run(event.command(round[1]++, notLoaded), "sync");
            Rounds rounds = new Rounds(onLoaded, onNotLoaded, limits);
            Calls calls = Calls.of(onLoaded);
            Calls floorCalls = Calls.of(onNotLoaded);
            append(timesFile, String.format(Locale.ROOT, "%d.%09d", e, symbols),
                    String.format(Locale.ROOT,
                            "| %s | %,d | %d | %s | %s | %s | %s | %s | %s | %,d | %,d |",
                            event.name(), symbols, rounds.count, duration(rounds.subject(0.50)),
                            duration(rounds.subject(0.99)), duration(rounds.baseline(0.50)),
                            duration(rounds.baseline(0.99)), rounds.share(), rounds.ratio(),
                            calls.total(), floorCalls.total()));
            BenchSupport.series(event.series(), "event on a loaded submap: " + event.name(),
                    "symbols on the submap", symbols, rounds, calls.total());
        }
        System.exit(0);
    }
}
