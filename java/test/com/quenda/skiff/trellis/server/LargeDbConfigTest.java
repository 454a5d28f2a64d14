package com.quenda.skiff.trellis.server;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Map;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;

/**
 * The large-database file at its real path, read afresh by every submap request, on
 * field-values.json. The file and its directory are put back as they were.
 */
class LargeDbConfigTest extends OneSessionTest {
    private static final Path FILE = Path.of("/usr/QX/conf/SkiffLargeDb.conf");

    private static byte[] saved;
    private static Path created;  // the outermost directory this test made, if any

    @BeforeAll
    static void clearFile() throws Exception {
        saved = Files.exists(FILE) ? Files.readAllBytes(FILE) : null;
        for (Path dir = FILE.getParent(); !Files.exists(dir); dir = dir.getParent()) created = dir;
        Files.createDirectories(FILE.getParent());
        Files.deleteIfExists(FILE);
    }

    @AfterAll
    static void restoreFile() throws Exception {
        if (saved != null) Files.write(FILE, saved);
        else Files.deleteIfExists(FILE);
        // Only when the file was not there: the directories made for it.
        for (Path dir = FILE.getParent(); created != null; dir = dir.getParent()) {
            Files.delete(dir);
            if (dir.equals(created)) break;
        }
    }

    @Test
    void theSettingFollowsTheFileAtEveryRequest() throws Exception {
        Files.writeString(FILE, "# large map\nSKIFF_LARGE_DB=TRUE\n");
        // Only string fields: the integer, booleans and enumeration of object 10 are left out.
        assertTrue(client.getSubmapAndSymbols(2));
        assertEquals(Map.of("Selection Name", "host-a", "SNMP sysLocation", "Campus"),
                dispatcher.getObjectFieldValues(10));
        Files.delete(FILE);
        assertTrue(client.getSubmapAndSymbols(3));
        // Of the interface list and the scalar "IP Address", the later in the platform's order
        // wins.
        assertEquals(Map.of("Selection Name", "host-b",
                "IP Address", control.servesAfter(11, "TopM Interface List", "IP Address")
                        ? "10.1.2.3\n10.1.9.9" : "10.9.9.9",
                "IP Subnet Mask", "255.255.255.0\n255.255.0.0",
                "SNMP ifPhysAddr", "08:00:2b:01:02:03\n08:00:2b:0a:0b:0c"),
                dispatcher.getObjectFieldValues(11));
    }
}
