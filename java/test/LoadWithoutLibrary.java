import com.quenda.skiff.trellis.NativeLibrary;

/** Loads the library where neither java.library.path nor the class path has it. */
class LoadWithoutLibrary {
    public static void main(String[] args) {
        try {
            NativeLibrary.load();
            System.out.println("loaded");
        } catch (UnsatisfiedLinkError e) {
            System.out.println(e.getMessage());
        }
    }
}
