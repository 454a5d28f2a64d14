package com.quenda.skiff.trellis.bench;

import com.quenda.skiff.trellis.server.MapNodeSymbol;
import com.quenda.skiff.trellis.server.MapSymbol;
import com.quenda.skiff.trellis.server.QxwEventDispatcher;
import com.quenda.skiff.trellis.server.QxwInterface;
import java.io.IOException;
import java.io.Writer;
import java.lang.management.ManagementFactory;
import java.lang.management.ThreadMXBean;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.Properties;
import java.util.concurrent.TimeUnit;

/**
 * A submap of node symbols reported to the Java dispatcher (one submap request), with and
 * without field values, against a native loop that makes the same Java upcalls with the same
 * arguments and no platform in between. Both are measured in alternating rounds in one run;
 * prints symbols per second and the ratios as a Markdown section.
 *
 * <p>The map is written to the file named by QXW_MAP before the session opens. Arguments:
 * [symbols [rounds]].
 */
public final class SubmapBench {
    private static final int SUBMAP = 2;
    private static final int FIRST_SYMBOL = 100_000;
    private static final int FIRST_OBJECT = 10_000;
    private static final String TYPE = "Computer:Workstation";
    private static final String[] VENDORS = {"Unset", "Acme", "Globex", "Initech", "Umbrella",
        "Hooli"};
    private static final String[] AGENTS = {"Unset", "Generic", "Acme Agent", "Globex Agent",
        "Proxy"};

    /** The reference dispatcher, told whether it holds every object's field values already. */
    private static final class BenchDispatcher extends QxwEventDispatcher {
        volatile boolean fieldValuesHeld;

        @Override
        protected boolean qxwdbObjectFieldValuesInCache(int objectId) {
            return fieldValuesHeld;
        }
    }

    /** One property as it crosses: platform text is converted, the rest is not. */
    private record Property(String key, String value, boolean isPlatformText) {}

    /** Object i's field values as the library renders its tool-tip fields, in field order. */
    private static List<Property> properties(int i) {
        String a = (i / 256) + "." + (i % 256);
        return List.of(
                new Property("Selection Name", "node-" + i, true),
                new Property("SNMP sysLocation", "Campus", true),
                new Property("SNMP sysDescr", "Workstation OS 5.1", true),
                new Property("vendor", VENDORS[i % VENDORS.length], true),
                new Property("SNMPAgent", AGENTS[i % AGENTS.length], true),
                new Property("isSNMPProxied", "FALSE", false),
                new Property("isSNMPSupported", i % 2 == 0 ? "TRUE" : "FALSE", false),
                new Property("IP Address", "10." + a + ".1\n10." + a + ".2", false),
                new Property("IP Subnet Mask", "255.255.255.0\n255.255.255.0", false),
                new Property("SNMP ifPhysAddr", "08:00:2b:00:00:01\n08:00:2b:00:00:02", false));
    }

    /** Root submap 1 opens into submap 2, which holds the node symbols. */
    private static void writeMap(Path path, int symbols) throws IOException {
        try (Writer out = Files.newBufferedWriter(path)) {
            out.write("{\"map\": {\"name\": \"submap bench\", \"permissions\": 2,"
                    + " \"rootSubmap\": 1},\n\"submaps\": [{\"id\": 1, \"name\": \"Root\"},"
                    + " {\"id\": 2, \"name\": \"wide\", \"parentObject\": 1}],\n"
                    + "\"objects\": [{\"id\": 1, \"childSubmap\": 2},\n");
            for (int i = 0; i < symbols; i++) {
                String a = (i / 256) + "." + (i % 256);
                out.write(String.format(Locale.ROOT, "{\"id\": %d, \"fields\": {"
                        + "\"Selection Name\": \"node-%d\", \"IP Hostname\": \"node-%d.example\","
                        + " \"SNMP sysLocation\": \"Campus\","
                        + " \"SNMP sysDescr\": \"Workstation OS 5.1\", \"vendor\": %d,"
                        + " \"SNMPAgent\": %d, \"isNode\": true, \"isSNMPProxied\": false,"
                        + " \"isSNMPSupported\": %b, \"TopM Interface List\": ["
                        + "\"1 le0 10.%s.1 255.255.255.0 08:00:2b:00:00:01\","
                        + " \"2 le1 10.%s.2 255.255.255.0 08:00:2b:00:00:02\"]}}%s\n",
                        FIRST_OBJECT + i, i, i, i % VENDORS.length, i % AGENTS.length, i % 2 == 0,
                        a, a, i + 1 < symbols ? "," : ""));
            }
            out.write("],\n\"symbols\": [{\"id\": 1, \"submap\": 1, \"object\": 1,"
                    + " \"label\": \"wide\", \"type\": \"Network:Wide\", \"variety\": 1,"
                    + " \"plane\": 2}");
            for (int i = 0; i < symbols; i++) {
                out.write(String.format(Locale.ROOT, ",\n{\"id\": %d, \"submap\": 2,"
                        + " \"object\": %d, \"label\": \"node-%d\", \"type\": \"%s\","
                        + " \"variety\": 1, \"plane\": 2, \"status\": %d, \"placement\": 1,"
                        + " \"x\": %d, \"y\": %d}",
                        FIRST_SYMBOL + i, FIRST_OBJECT + i, i, TYPE, i % 5, i % 100, i / 100));
            }
            out.write("]}\n");
        }
    }

    // The native loop: takes the arguments once, then replays the report's upcalls on the
    // dispatcher object with the library's own method ids.
    private static native void load(int[] symbolFields, String[] labels, String[] types,
            int[] propertyStarts, String[] keys, String[] values, boolean[] isPlatformText);

    private static native void replay(QxwEventDispatcher dispatcher);

    /** Hands the native loop exactly what the map's report sends. */
    private static void loadNativeLoop(int symbols) {
        int[] fields = new int[symbols * 11];
        String[] labels = new String[symbols];
        String[] types = new String[symbols];
        int[] starts = new int[symbols + 1];
        List<Property> all = new ArrayList<>();
        for (int i = 0; i < symbols; i++) {
            int[] f = {FIRST_SYMBOL + i, SUBMAP, 2, i % 5, FIRST_OBJECT + i, 0, 0, 1, i % 100,
                i / 100, 0};
            System.arraycopy(f, 0, fields, i * 11, 11);
            labels[i] = "node-" + i;
            types[i] = TYPE;
            starts[i] = all.size();
            all.addAll(properties(i));
        }
        starts[symbols] = all.size();
        boolean[] platform = new boolean[all.size()];
        for (int k = 0; k < platform.length; k++) platform[k] = all.get(k).isPlatformText();
        load(fields, labels, types, starts, all.stream().map(Property::key).toArray(String[]::new),
                all.stream().map(Property::value).toArray(String[]::new), platform);
    }

    /** The library's report sent what the native loop sends: the bench compares like with like. */
    private static void checkReport(BenchDispatcher dispatcher, int symbols) {
        for (int i = 0; i < symbols; i++) {
            MapSymbol symbol = dispatcher.getSymbol(FIRST_SYMBOL + i);
            Map<String, String> expected = new LinkedHashMap<>();
            for (Property p : properties(i)) expected.put(p.key(), p.value());
            Properties actual = dispatcher.getObjectFieldValues(FIRST_OBJECT + i);
            if (!(symbol instanceof MapNodeSymbol node) || !node.getLabel().equals("node-" + i)
                    || node.getX() != i % 100 || node.getY() != i / 100
                    || node.getStatus() != i % 5 || !expected.equals(actual)) {
                throw new IllegalStateException("symbol " + i + " was reported as " + symbol
                        + " with " + actual);
            }
        }
    }

    public static void main(String[] args) throws Exception {
        int symbols = args.length > 0 ? Integer.parseInt(args[0]) : 10_000;
        int rounds = args.length > 1 ? Integer.parseInt(args[1]) : 101;
        writeMap(Path.of(System.getenv("QXW_MAP")), symbols);
        System.loadLibrary("skiffsubmapbench");

        BenchDispatcher dispatcher = new BenchDispatcher();
        QxwInterface client = new QxwInterface(dispatcher);
        client.open(false, false, false);
        Thread dispatcherThread = dispatcher.startDispatcherThread(false, false, false, false);
        if (client.awaitConnectionResults(60, TimeUnit.SECONDS) == null) {
            throw new IllegalStateException("the dispatcher reported no connection results");
        }
        Runnable withLibrary = () -> {
            if (!client.getSubmapAndSymbols(SUBMAP)) throw new IllegalStateException("answered 0");
        };
        Runnable withNativeLoop = () -> replay(dispatcher);
        int[] round = {0};
        client.getSubmapAndSymbols(0);  // makes the one connection
        withLibrary.run();
        checkReport(dispatcher, symbols);
        loadNativeLoop(symbols);

        // [0]: without field values, [1]: with them; each against its native loop.
        long[][] library = new long[2][rounds];
        long[][] nativeLoop = new long[2][rounds];
        // CPU time: the library's report on both threads, the native loop's on this one.
        long[][] libraryCpu = new long[2][rounds];
        long[][] nativeLoopCpu = new long[2][rounds];
        ThreadMXBean threads = ManagementFactory.getThreadMXBean();
        long dispatcherId = dispatcherThread.getId();
        Runnable timedLibrary = () -> {
            long cpu = threads.getCurrentThreadCpuTime() + threads.getThreadCpuTime(dispatcherId);
            withLibrary.run();
            cpu = threads.getCurrentThreadCpuTime() + threads.getThreadCpuTime(dispatcherId) - cpu;
            libraryCpu[dispatcher.fieldValuesHeld ? 0 : 1][round[0]] = cpu;
        };
        for (int withValues = 0; withValues < 2; withValues++) {
            dispatcher.fieldValuesHeld = withValues == 0;
            for (int warmUp = 0; warmUp < 3; warmUp++) {
                BenchSupport.time(withLibrary);
                BenchSupport.time(withNativeLoop);
            }
            for (int r = 0; r < rounds; r++) {
                round[0] = r;
                // Each goes first in every other round.
                if (r % 2 == 0) library[withValues][r] = BenchSupport.time(timedLibrary);
                long cpu = threads.getCurrentThreadCpuTime();
                nativeLoop[withValues][r] = BenchSupport.time(withNativeLoop);
                nativeLoopCpu[withValues][r] = threads.getCurrentThreadCpuTime() - cpu;
                if (r % 2 == 1) library[withValues][r] = BenchSupport.time(timedLibrary);
            }
        }

        StringBuilder table = new StringBuilder();
        String[] names = {"without field values", "with field values (10 per object)"};
        for (int withValues = 0; withValues < 2; withValues++) {
            long[] lib = library[withValues];
            long[] loop = nativeLoop[withValues];
            long libP50 = BenchSupport.percentile(lib, rounds, 0.50);
            long libP99 = BenchSupport.percentile(lib, rounds, 0.99);
            long loopP50 = BenchSupport.percentile(loop, rounds, 0.50);
            long loopP99 = BenchSupport.percentile(loop, rounds, 0.99);
            long libCpu = BenchSupport.percentile(libraryCpu[withValues], rounds, 0.50);
            long loopCpu = BenchSupport.percentile(nativeLoopCpu[withValues], rounds, 0.50);
            table.append(String.format(Locale.ROOT,
                    "| %s | %s | %s | %s | %s | %,.0f | %.2f | %.2f | %s | %s | %.2f |%n",
                    names[withValues],
                    BenchSupport.duration(libP50), BenchSupport.duration(libP99),
                    BenchSupport.duration(loopP50), BenchSupport.duration(loopP99),
                    symbols / (libP50 / 1e9), (double) libP50 / loopP50,
                    (double) libP99 / loopP99, BenchSupport.duration(libCpu),
                    BenchSupport.duration(loopCpu), (double) libCpu / loopCpu));
        }
        System.out.printf(Locale.ROOT, "## Submap report%n%n"
                + "A submap of %,d node symbols reported to the Java dispatcher by one submap"
                + " request (request, platform look-ups, rendering and upcalls), against a native"
                + " loop making the same upcalls with the same arguments and no platform in"
                + " between. With field values, the dispatcher lacks every object's values, so"
                + " each symbol also brings a Properties of 10 entries. %d rounds each,"
                + " alternating, each side first in every other round; the JVM's default"
                + " garbage collector, heap fixed at 1g and touched up front, so each side pays"
                + " for the garbage of its own reports as a server would. *CPU* is the median CPU"
                + " time of one report: the library's on the requesting and the dispatcher"
                + " threads, the native loop's on its one thread; unlike the times it does not"
                + " count waiting, for a CPU or for a collection.%n%n"
                + "| report | library p50 | library p99 | native loop p50 | native loop p99"
                + " | library symbols/s at p50 | ratio p50 | ratio p99 | library CPU"
                + " | native loop CPU | CPU ratio |%n"
                + "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|%n%s%n"
                + "Goal: ratio within 1.15 with field values.%n",
                symbols, rounds, table);
        System.exit(0);
    }
}
