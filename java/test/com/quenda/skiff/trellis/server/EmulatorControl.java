package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.OutputStream;
import java.net.UnixDomainSocketAddress;
import java.nio.channels.Channels;
import java.nio.channels.SocketChannel;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * A client of the platform emulator's control socket (the path in QXW_CONTROL). Commands are
 * applied by the dispatcher thread's event loop, so they are answered only while it runs.
 */
final class EmulatorControl implements AutoCloseable {
    private final SocketChannel channel;
    private final BufferedReader replies;
    private final OutputStream commands;

    EmulatorControl() throws IOException {
        channel = SocketChannel.open(UnixDomainSocketAddress.of(System.getenv("QXW_CONTROL")));
        replies = new BufferedReader(Channels.newReader(channel, StandardCharsets.UTF_8));
        commands = Channels.newOutputStream(channel);
    }

    /** Sends one command and returns its one-line JSON reply. */
    String command(String line) throws IOException {
        commands.write((line + "\n").getBytes(StandardCharsets.UTF_8));
        commands.flush();
        return replies.readLine();
    }

    /** Sends a command that must succeed. */
    String ok(String line) throws IOException {
        String reply = command(line);
        assertTrue(reply != null && reply.contains("\"ok\":true"), line + " -> " + reply);
        return reply;
    }

    /**
     * The ids of a list in the order the platform serves it now: "submap ID" (its symbols),
     * "object ID" (its symbols), "fields ID" (the fields set on an object), "objects" (every
     * object, as a query serves them) or "fields" (the database's fields).
     */
    List<Integer> order(String list) throws IOException {
        String reply = ok("order " + list);
        String ids = reply.substring(reply.indexOf('[') + 1, reply.indexOf(']'));
        return ids.isEmpty() ? List.of()
                : Arrays.stream(ids.split(",")).map(id -> (int) Long.parseLong(id)).toList();
    }

    /** Whether the platform serves the object's field `field` after its field `other`. */
    boolean servesAfter(int objectId, String field, String other) throws IOException {
        Map<String, Long> ids = MapDump.of(this).fieldIds;
        List<Integer> order = order("fields " + objectId);
        return order.indexOf(ids.get(field).intValue()) > order.indexOf(ids.get(other).intValue());
    }

    /** The blocks of the ids in `order`, one after the other; an id without a block adds none. */
    static <T> List<T> inOrder(List<Integer> order, Map<Integer, List<T>> blocks) {
        List<T> out = new ArrayList<>();
        for (int id : order) out.addAll(blocks.getOrDefault(id, List.of()));
        return out;
    }

    /** Calls of a platform function since the counters were last reset. */
    long calls(String function) throws IOException {
        return calls(ok("counters"), function);
    }

    /** How many records the platform has handed out that are not released yet. */
    long records() throws IOException {
        return Long.parseLong(ok("counters").replaceAll(".*\"records\":(\\d+).*", "$1"));
    }

    /** The calls of a platform function in a reply to "counters". */
    static long calls(String countersReply, String function) {
        Matcher m = Pattern.compile("\"" + Pattern.quote(function) + "\":(\\d+)")
                .matcher(countersReply);
        return m.find() ? Long.parseLong(m.group(1)) : 0;
    }

    @Override
    public void close() throws IOException {
        channel.close();
    }
}
