package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.util.Arrays;
import java.util.List;
import java.util.Set;
import java.util.stream.Collectors;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/**
 * Hiding and showing through interface objects on interface-visibility.json. On network 10
 * (submap 2, where its nodes have symbols 103, 104 and 105) and its segment 20 (submap 3):
 * node 30 with interfaces 31 and 32 (symbols 120 and 121 on node submap 4; node symbols 103 and
 * 110), node 40 with interface 41 (130 on submap 5; node symbols 104 and 111). Interface 51 of
 * node 50 lies on segment 21, which has no child submap: what the whole request does to the map
 * and says.
 */
class InterfaceVisibilityTest extends OneSessionTest {
    @BeforeEach
    void showEverySymbolQuietly() throws Exception {
        client.open(false, false, false);
        control.ok("unhide " + MapDump.of(control).symbols.keySet().stream()
                .map(String::valueOf).collect(Collectors.joining(" ")));
        // The unhidden event is delivered before the test starts, not during it.
        control.ok("sync");
    }

    private static Set<Long> hiddenSymbols() throws Exception {
        MapDump map = MapDump.of(control);
        return map.symbols.keySet().stream().filter(map::hidden).collect(Collectors.toSet());
    }

    @Test
    void theNodeFollowsItsInterfacesOnTheNetwork() throws Exception {
        String associated = "QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibility"
                + "Change\n interfaceObjectId:%d nodeObjectId:30 segmentObjectId:20"
                + " networkObjectId:10\n results in interfaceSymbolId:%d segmentNodeSymbolId:110"
                + " networkNodeSymbolId:103\n";
        record Case(String hiddenBefore, int[] interfaces, boolean hide, boolean verbose,
                Set<Long> hiddenAfter, String stderr) {}
        for (Case c : List.of(
                // Both at once; verbose mode tells of each interface, of the network node once.
                new Case("", new int[] {31, 32}, true, true, Set.of(120L, 121L, 110L, 103L),
                        "In QxwInterface::SetInterfaceAndNodeVisibilityState:"
                        + " numInterfaceObjects=2 doSetHidden=1\n"
                        + "In QxwEventDispatcher::SetInterfaceAndNodeVisibilityState:"
                        + " numInterfaceObjects=2 doSetHidden=1\n"
                        + String.format(associated, 31, 120) + String.format(associated, 32, 121)
                        + "QxwEventDispatcher::DoSetNetworkSubmapNodeSymbolHidden\n nodeObjectId:30"
                        + " networkObjectId:10 doSetHidden:1\n returning 1\n"
                        // The platform reports the change like any other.
                        + "SymbolsHiddenCB\n"),
                // The node's other interface is visible, before or after this one in the list.
                new Case("", new int[] {32}, true, false, Set.of(121L, 110L), ""),
                new Case("", new int[] {31}, true, false, Set.of(120L, 110L), ""),
                // The other one is hidden already.
                new Case("121", new int[] {31}, true, false, Set.of(120L, 121L, 110L, 103L), ""),
                // Showing one while the other stays hidden.
                new Case("120 121 110 103", new int[] {31}, false, false, Set.of(121L), ""),
                // A segment without a child submap adds nothing, and says so.
                new Case("", new int[] {51, 41}, true, false, Set.of(130L, 111L, 104L),
                        "QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibilityChange"
                                + " segmentObjectId=21 has no child submap!\n"),
                new Case("", new int[] {}, true, false, Set.of(), ""))) {
            String name = Arrays.toString(c.interfaces()) + (c.hide() ? " hidden" : " shown")
                    + " after hiding [" + c.hiddenBefore() + "]";
            showEverySymbolQuietly();
            if (!c.hiddenBefore().isEmpty()) control.ok("hide " + c.hiddenBefore());
            client.open(false, c.verbose(), false);
            assertEquals(c.stderr(), TestNative.captureStderr(() -> {
                client.setInterfaceAndNodeVisibilityState(c.interfaces(), c.hide());
                control.ok("sync");
            }), name);
            assertEquals(c.hiddenAfter(), hiddenSymbols(), name);
        }
    }

    @Test
    void anUnreadableTopMFieldStopsTheWholeRequest() throws Exception {
        control.ok("reset-counters");
        control.ok("fail QXwDbGetFieldValuesByObjects 10 1");
        assertEquals("Problem in SetInterfaceAndNodeVisibilityState\n numInterfaceObjects:2"
                + " pNodeObjectFieldList:0 (count:0)\n pSegmentObjectFieldList:1 (count:2)\n"
                + " pNetworkObjectFieldList:1 (count:2)\n", TestNative.captureStderr(
                        () -> client.setInterfaceAndNodeVisibilityState(new int[] {41, 31}, true)));
        assertEquals(3, control.calls("QXwDbGetFieldValuesByObjects"));
        assertEquals(0, control.calls("QXwSetSymbolsVisibility"));
        assertEquals(Set.of(), hiddenSymbols());
    }
}
