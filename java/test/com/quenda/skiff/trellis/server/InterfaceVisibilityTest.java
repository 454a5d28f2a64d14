package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.util.Arrays;
import java.util.List;
import java.util.Set;
import java.util.TreeSet;
import java.util.stream.Collectors;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/**
 * Hiding and showing through interface objects on interface-visibility.json. On network 10
 * (submap 2, where its nodes have symbols 103, 104 and 105) and its segment 20 (submap 3):
 * node 30 with interfaces 31 and 32 (symbols 120 and 121 on node submap 4; node symbols 103 and
 * 110), node 40 with interface 41 (130 on submap 5; node symbols 104 and 111). Interface 51 of
 * node 50 lies on segment 21, which has no child submap.
 */
class InterfaceVisibilityTest extends OneSessionTest {
    @BeforeEach
    void showEverySymbol() throws Exception {
        control.ok("unhide " + MapDump.of(control).symbols.keySet().stream()
                .map(String::valueOf).collect(Collectors.joining(" ")));
        // The unhidden event is delivered before the test starts, not during it.
        control.ok("sync");
    }

    private static Set<Long> hiddenSymbols() throws Exception {
        MapDump map = MapDump.of(control);
        return map.symbols.keySet().stream().filter(map::hidden)
                .collect(Collectors.toCollection(TreeSet::new));
    }

    private static Set<Long> ids(long... ids) {
        return Arrays.stream(ids).boxed().collect(Collectors.toCollection(TreeSet::new));
    }

    @Test
    void theNodeFollowsItsInterfacesOnTheNetwork() throws Exception {
        record Case(String name, String hiddenBefore, int[] interfaces, boolean hide,
                Set<Long> hiddenAfter, String stderr) {}
        List<Case> cases = List.of(
                new Case("its only interface", "", new int[] {41}, true, ids(130, 111, 104), ""),
                new Case("the other interface visible later in the list", "", new int[] {31},
                        true, ids(120, 110), ""),
                new Case("the other interface visible first in the list", "", new int[] {32},
                        true, ids(121, 110), ""),
                new Case("the other interface hidden already", "121", new int[] {31}, true,
                        ids(120, 121, 110, 103), ""),
                new Case("both interfaces at once", "", new int[] {31, 32}, true,
                        ids(120, 121, 110, 103), ""),
                new Case("showing one while the other stays hidden", "120 121 110 103",
                        new int[] {31}, false, ids(121), ""),
                new Case("a segment without a child submap", "", new int[] {51, 41}, true,
                        ids(130, 111, 104),
                        "QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibilityChange"
                                + " segmentObjectId=21 has no child submap!\n"));
        for (Case c : cases) {
            showEverySymbol();
            if (!c.hiddenBefore().isEmpty()) control.ok("hide " + c.hiddenBefore());
            assertEquals(c.stderr(), TestNative.captureStderr(
                    () -> client.setInterfaceAndNodeVisibilityState(c.interfaces(), c.hide())),
                    c.name());
            assertEquals(c.hiddenAfter(), hiddenSymbols(), c.name());
        }
    }

    @Test
    void anUnreadableTopMFieldStopsTheWholeRequest() throws Exception {
        control.ok("reset-counters");
        control.ok("fail QXwDbGetFieldValuesByObjects 10 1");
        String stderr = TestNative.captureStderr(
                () -> client.setInterfaceAndNodeVisibilityState(new int[] {41, 31}, true));
        assertEquals("Problem in SetInterfaceAndNodeVisibilityState\n numInterfaceObjects:2"
                + " pNodeObjectFieldList:0 (count:0)\n pSegmentObjectFieldList:1 (count:2)\n"
                + " pNetworkObjectFieldList:1 (count:2)\n", stderr);
        assertEquals(3, control.calls("QXwDbGetFieldValuesByObjects"));
        assertEquals(0, control.calls("QXwSetSymbolsVisibility"));
        assertEquals(Set.of(), hiddenSymbols());
    }

    @Test
    void verboseModeReportsEachInterfaceAndEachNetworkNodeOnce() throws Exception {
        client.open(false, true, false);
        String stderr;
        try {
            stderr = TestNative.captureStderr(() -> {
                client.setInterfaceAndNodeVisibilityState(new int[] {31, 32}, true);
                control.ok("sync");
            });
        } finally {
            client.open(false, false, false);
        }
        String associated = "QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibilityChange"
                + "\n interfaceObjectId:%d nodeObjectId:30 segmentObjectId:20 networkObjectId:10"
                + "\n results in interfaceSymbolId:%d segmentNodeSymbolId:110"
                + " networkNodeSymbolId:103\n";
        assertEquals("In QxwInterface::SetInterfaceAndNodeVisibilityState: numInterfaceObjects=2"
                + " doSetHidden=1\n"
                + "In QxwEventDispatcher::SetInterfaceAndNodeVisibilityState:"
                + " numInterfaceObjects=2 doSetHidden=1\n"
                + String.format(associated, 31, 120) + String.format(associated, 32, 121)
                + "QxwEventDispatcher::DoSetNetworkSubmapNodeSymbolHidden\n nodeObjectId:30"
                + " networkObjectId:10 doSetHidden:1\n returning 1\n"
                // The platform reports the change like any other.
                + "SymbolsHiddenCB\n", stderr);
        assertEquals(ids(120, 121, 110, 103), hiddenSymbols());
    }
}
