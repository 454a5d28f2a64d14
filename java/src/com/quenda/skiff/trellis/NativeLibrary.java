package com.quenda.skiff.trellis;

import java.io.File;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;

/**
 * Loads libskiffqxw.so, the library behind every native method here, once per JVM.
 *
 * <p>A copy in a folder of {@code java.library.path} comes first. Without one, the copy that
 * this jar carries for the running JVM ({@code native/linux-x86_64/} or {@code native/linux-x86/}
 * beside this class) is extracted, with the map platform's library that it needs, into a new
 * temporary folder that only this user can read, loaded from there, and the files removed (the
 * loaded libraries stay mapped). So a server needs only the jar on its class path.
 */
public final class NativeLibrary {
    /** The libraries the jar carries for each platform, each after those it needs. */
    static final List<String> CARRIED = List.of("qxwplatform", "skiffqxw");

    private static boolean loaded;

    private NativeLibrary() {}

    /**
     * Loads the library unless this JVM has loaded it already. Throws UnsatisfiedLinkError,
     * saying where it looked, when neither the library path nor the jar has it for this JVM, and
     * passes on the error of a copy that does not load (one of the other word size, say).
     */
    public static synchronized void load() {
        if (loaded) return;
        String libraryPath = System.getProperty("java.library.path", "");
        Path onPath = find(libraryPath, System.mapLibraryName("skiffqxw"));
        if (onPath != null) {
            System.load(onPath.toAbsolutePath().toString());
        } else {
            String osName = System.getProperty("os.name");
            String osArch = System.getProperty("os.arch");
            String platform = platform(osName, osArch);
            if (platform == null || !carries(platform)) {
                throw new UnsatisfiedLinkError("skiff-qxw: " + System.mapLibraryName("skiffqxw")
                        + " is not on java.library.path (" + libraryPath
                        + ") and the jar carries none for " + osName + " " + osArch);
            }
            loadCarried(platform);
        }
        loaded = true;
    }

    /**
     * The jar's folder for a JVM on this operating system and architecture (the values of
     * {@code os.name} and {@code os.arch}), or null for one it has no folder for.
     */
    static String platform(String osName, String osArch) {
        if (!"Linux".equals(osName) || osArch == null) return null;
        return switch (osArch) {
            case "amd64", "x86_64" -> "linux-x86_64";
            case "i386", "i486", "i586", "i686", "x86" -> "linux-x86";
            default -> null;
        };
    }

    /**
     * The file in the first folder of a search path (folders separated as in
     * {@code java.library.path}; an empty entry is the working folder) that holds it, or null.
     */
    static Path find(String searchPath, String file) {
        for (String folder : searchPath.split(File.pathSeparator, -1)) {
            Path candidate = Path.of(folder.isEmpty() ? "." : folder, file);
            if (Files.isRegularFile(candidate)) return candidate;
        }
        return null;
    }

    private static String resource(String platform, String name) {
        return "native/" + platform + "/" + System.mapLibraryName(name);
    }

    private static boolean carries(String platform) {
        return CARRIED.stream().allMatch(
                name -> NativeLibrary.class.getResource(resource(platform, name)) != null);
    }

    private static void loadCarried(String platform) {
        Path folder = null;
        try {
            folder = Files.createTempDirectory("skiff-qxw-");
            for (String name : CARRIED) {
                try (InputStream in = NativeLibrary.class.getResourceAsStream(
                        resource(platform, name))) {
                    Files.copy(in, folder.resolve(System.mapLibraryName(name)));
                }
            }
            for (String name : CARRIED) {
                System.load(folder.resolve(System.mapLibraryName(name)).toString());
            }
        } catch (IOException e) {
            UnsatisfiedLinkError error = new UnsatisfiedLinkError("skiff-qxw: cannot extract the"
                    + " jar's libraries for " + platform + (folder == null ? "" : " to " + folder)
                    + ": " + e);
            error.initCause(e);
            throw error;
        } finally {
            remove(folder);
        }
    }

    private static void remove(Path folder) {
        if (folder == null) return;
        for (String name : CARRIED) {
            try {
                Files.deleteIfExists(folder.resolve(System.mapLibraryName(name)));
            } catch (IOException ignored) {
                // A file left in the temporary folder is no harm to the library.
            }
        }
        try {
            Files.deleteIfExists(folder);
        } catch (IOException ignored) {
            // As above.
        }
    }
}
