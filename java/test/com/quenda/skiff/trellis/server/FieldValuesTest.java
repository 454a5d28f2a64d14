package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;

/**
 * The field values an object's node symbols bring to Java, on field-values.json: its tool-tip
 * fields rendered as text, the interface list as one line per interface.
 */
class FieldValuesTest extends OneSessionTest {
    private static final String LIST = "TopM Interface List";

    @Test
    void toolTipFieldsRenderAsTextOthersNever() throws Exception {
        record Case(String failure, int objectId, Map<String, String> values) {}
        for (Case c : List.of(
                // The first use of SNMPAgent's constants, which the platform fails to give,
                // renders the enumeration empty; the next has them.
                new Case("QXwDbGetEnumConstants", 14, Map.of("Selection Name", "agent",
                        "SNMPAgent", "")),
                new Case(null, 14, Map.of("Selection Name", "agent", "SNMPAgent", "Acme Agent")),
                // "IP Hostname", "isNode", "TopM Node ID" and the lists "SNMP sysDescr" and
                // "Aliases" are not reported.
                new Case(null, 10, Map.of("Selection Name", "host-a", "SNMP sysContact", "-7",
                        "isSNMPSupported", "TRUE", "isSNMPProxied", "FALSE", "vendor", "Globex",
                        "SNMP sysLocation", "Campus")),
                // Of the interface list and the scalar "IP Address", the later in the
                // platform's order wins (in creation order, the list for 11, the scalar for 12).
                new Case(null, 11, Map.of("Selection Name", "host-b",
                        "IP Address", control.servesAfter(11, LIST, "IP Address")
                                ? "10.1.2.3\n10.1.9.9" : "10.9.9.9",
                        "IP Subnet Mask", "255.255.255.0\n255.255.0.0",
                        "SNMP ifPhysAddr", "08:00:2b:01:02:03\n08:00:2b:0a:0b:0c")),
                new Case(null, 12, Map.of("IP Address", control.servesAfter(12, LIST, "IP Address")
                                ? "10.1.2.3" : "10.7.7.7",
                        "IP Subnet Mask", "255.255.255.0", "SNMP ifPhysAddr", "08:00:2b:01:02:03")),
                // An interface without a token keeps its line, empty; runs of blanks separate.
                new Case(null, 13, Map.of("IP Address", "10.1.2.3\n10.1.9.9",
                        "IP Subnet Mask", "\n255.255.0.0",
                        "SNMP ifPhysAddr", "\n08:00:2b:0a:0b:0c")),
                new Case(null, 15, Map.of("Selection Name", "no interfaces")),
                new Case(null, 16, Map.of()),
                new Case(null, 0, Map.of()))) {
            control.ok("reset-counters");
            if (c.failure() != null) control.ok("fail " + c.failure() + " 1 1");
            assertEquals(c.values(), session.onDispatcherThread(
                    () -> TestNative.objectFieldValues(c.objectId())), "object " + c.objectId());
            // One platform query per object, none for object 0.
            assertEquals(c.objectId() == 0 ? 0 : 1, control.calls("QXwDbGetFieldValues"));
        }
    }
}
