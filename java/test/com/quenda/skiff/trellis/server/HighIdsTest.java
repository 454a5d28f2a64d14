package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;

/**
 * Ids of 2^31 and above, on high-ids.json: Java holds them as the ints with the same 32 bits
 * (negative), and they reach the platform and come back intact through requests, the id lists
 * the state changes fetch, answers and map events.
 */
class HighIdsTest extends OneSessionTest {
    static final int SITE = (int) 2147483648L;
    static final int SITE_SYMBOL = (int) 2147483649L;
    static final int FAR = (int) 4294967295L;
    static final int HOST = (int) 3000000000L;
    static final int HOST_SYMBOL = (int) 4294967294L;
    static final int PEER = (int) 4000000000L;
    static final int PEER_SYMBOL = (int) 3000000002L;
    static final int LINK_SYMBOL = (int) 3000000001L;

    /** The report's entries but the field values, which are not about ids. */
    private static List<String> reported(TestNative.Action request) throws Exception {
        return logOf(request).stream()
                .filter(e -> !e.startsWith("qxwdbObjectFieldValuesInCache")
                        && !e.startsWith("setQxwdbObjectFieldValues"))
                .toList();
    }

    @Test
    void requestsAndAnswersCarryThemIntact() throws Exception {
        List<String> report =
                new ArrayList<>(List.of("addSubmap(-2147483648, -1, Far, 0, false, )"));
        report.addAll(EmulatorControl.inOrder(control.order("submap 4294967295"), Map.of(
                HOST_SYMBOL, List.of("addNodeSymbol(-2, -1, far-host, , Computer:Workstation, 2,"
                        + " 0, -1294967296, 0, false, 1, 1, 2, 0, 0)"),
                PEER_SYMBOL, List.of("addNodeSymbol(-1294967294, -1, peer-host, ,"
                        + " Computer:Workstation, 2, 0, -294967296, 0, false, 2, 0, 0, -2, 0)"),
                LINK_SYMBOL, List.of("addConnectionSymbol(-1294967295, -1, , Connection:IP, 2, 0,"
                        + " -1294967293, 0, false, -2, -1294967294)"))));
        assertEquals(report, reported(() -> assertTrue(client.getSubmapAndSymbols(FAR))));
        assertEquals(List.of("getSymbolRowData(-2, -1294967296, 0)"),
                reported(() -> assertTrue(client.getSymbolRowData(HOST_SYMBOL, HOST, 0))));
        assertEquals(List.of(new FoundSymbol("far-host", "Far", "far-host", HOST, HOST_SYMBOL,
                FAR, "Computer:Workstation", 0)), client.getMatchingSymbols(
                        FoundSymbol.Category.OBJECTNAME, FoundSymbol.MatchType.MATCH_EXACTLY,
                        "far-host"));
        assertEquals(List.of(SITE_SYMBOL, PEER_SYMBOL), client.getSymbolParentPath(PEER_SYMBOL,
                FAR));
    }

    @Test
    void stateChangesReachTheirObjectsAndEventsComeBack() throws Exception {
        client.setAcknowledgeState(new int[] {HOST, PEER}, true);
        client.setSymbolVisibilityState(new int[] {LINK_SYMBOL}, true);
        control.ok("sync");
        MapDump map = MapDump.of(control);
        assertEquals(List.of(true, true, false), List.of(map.acknowledged(3000000000L),
                map.acknowledged(4000000000L), map.acknowledged(2147483648L)));
        assertTrue(map.hidden(3000000001L));
        // The deletion refreshes the positions on the submap, in the platform's order:
        // placement 2 reports its predecessor as x too.
        List<String> log = callbacks("status 3 4294967294", "delete-symbols 3000000001");
        List<Integer> nodes = control.order("submap 4294967295");
        Map<Integer, String> moved = Map.of(
                HOST_SYMBOL, "symbolMovedCB(-2, -1, 1, 1, 2, 0, false, %s, true)",
                PEER_SYMBOL, "symbolMovedCB(-1294967294, -1, 2, -2, 0, -2, false, %s, true)");
        assertEquals(List.of("symbolStatusChangeCB(-2, -1, 3, true)", "beginMapSync()",
                "submapInCache(-1)", "symbolDeletedCB(-1294967295, -1, false)",
                String.format(moved.get(nodes.get(0)), true),
                String.format(moved.get(nodes.get(1)), false),
                "synchronizeLayoutAppearance(-1)", "endMapSync()"), log);
    }
}
