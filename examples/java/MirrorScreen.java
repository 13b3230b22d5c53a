import com.sun.jna.Library;
import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Platform;
import com.sun.jna.Pointer;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.regex.Pattern;

/**
 * A host in Java, over JNA: lists the displays, mirrors the first one onto a light device for some
 * seconds, and shows the data sent and the colours on the screen.
 *
 * <pre>
 * export LD_PRELOAD=$JAVA_HOME/lib/libjsig.so
 * java -cp /usr/share/java/jna.jar MirrorScreen.java ADDRESS [SECONDS]
 * </pre>
 *
 * The library is found on the system's search path, or by its path in the environment variable
 * SCREEN_MIRROR_LIBRARY. Java's runtime may need its signal handlers at any moment; libjsig, which
 * preserves them, must be loaded when the process starts.
 */
public final class MirrorScreen {
    /** The eight functions. Call one at a time, from any thread. */
    public interface Mirror extends Library {
        int getDisplays(byte[] buffer, int bufferLength);

        int getSizeOfStreamFrameJson();

        int getStreamFrameJson(byte[] buffer);

        int captureCurrentStreamFrames();

        int getPalette(byte[] buffer);

        int setMirrorConfig(byte[] json);

        int startMirror();

        int stopMirror();
    }

    /** As the process itself resolves them: sigaction() is then libjsig's, not the C library's. */
    public interface Process extends Library {
        int sigaction(int signal, Pointer wanted, Pointer before);

        int inet_pton(int family, String text, byte[] address);

        int isatty(int descriptor);
    }

    /** Has an error message of one line. */
    private static final class MirrorException extends Exception {
        private static final long serialVersionUID = 1;

        MirrorException(String message) {
            super(message);
        }
    }

    private record Display(long id, long width, long height) {}

    private final Process process = Native.load(null, Process.class);
    private final Mirror mirror = loadLibrary();

    private MirrorScreen() throws MirrorException {}

    private static void check(boolean condition, String message) throws MirrorException {
        if (!condition) throw new MirrorException(message);
    }

    private static Mirror loadLibrary() throws MirrorException {
        final String usual =
                Platform.isMac() ? "libscreenMirrorMac.dylib" : "libscreenMirrorMac.so.1";
        final String name = System.getenv().getOrDefault("SCREEN_MIRROR_LIBRARY", usual);
        try {
            return Native.load(name, Mirror.class);
        } catch (UnsatisfiedLinkError error) {
            final String all = error.getMessage(); // the system's message is on line 2
            final String reason = all.lines().skip(1).findFirst().orElse(all);
            throw new MirrorException("the library cannot be loaded: " + reason);
        }
    }

    /** A text that fills its buffer has no terminating zero and may be cut. */
    private static String textIn(byte[] buffer, String ifCut) throws MirrorException {
        int end = 0;
        while (end < buffer.length && buffer[end] != 0) ++end;
        check(end < buffer.length, ifCut);
        return new String(buffer, 0, end, StandardCharsets.UTF_8);
    }

    /** The numbers of each object with these three members. A real host uses a JSON parser. */
    private static List<long[]> numbersIn(String json, String first, String second, String third) {
        final String form = "\\{\"%s\":(\\d+),\"%s\":(\\d+),\"%s\":(\\d+)\\}";
        final var all = new ArrayList<long[]>();
        final var matcher = Pattern.compile(form.formatted(first, second, third)).matcher(json);
        while (matcher.find())
            all.add(
                    new long[] {
                        Long.parseLong(matcher.group(1)),
                        Long.parseLong(matcher.group(2)),
                        Long.parseLong(matcher.group(3))
                    });
        return all;
    }

    /** The library accepts only numeric addresses and does not report others. */
    private boolean isAddress(String text) {
        final int version4 = 2;
        final int version6 = Platform.isMac() ? 30 : 10;
        final byte[] address = new byte[16];
        return process.inet_pton(version4, text, address) == 1
                || process.inet_pton(version6, text, address) == 1;
    }

    private Display firstDisplay() throws MirrorException {
        final byte[] buffer = new byte[4096];
        check(mirror.getDisplays(buffer, buffer.length) == 1, "the displays cannot be listed");
        final String list = textIn(buffer, "the list of displays is cut");
        final var displays = new ArrayList<Display>();
        for (long[] one : numbersIn(list, "displayID", "width", "height")) {
            displays.add(new Display(one[0], one[1], one[2]));
            System.out.printf("display %d: %d x %d%n", one[0], one[1], one[2]);
        }
        check(
                !displays.isEmpty(),
                "there is no display to mirror; on Linux, DISPLAY names an X server");
        return displays.get(0);
    }

    /** Four panels in a row across the middle of the display, as zero-terminated text. */
    private static byte[] configuration(Display display, String address) {
        final var panels = new ArrayList<String>();
        for (int i = 0; i < 4; ++i)
            panels.add(
                    "{\"panelID\": %d, \"centroidX\": %d, \"centroidY\": %d}"
                            .formatted(
                                    i + 1, (2 * i + 1) * display.width / 8, display.height / 2));
        // Integers in the document are signed: pass the identifier's 32 bits as a signed integer.
        final String document =
                """
                {"displayID": %d, "mode": 0, "devices": [{"ip": "%s", "controlVersion": 2,
                 "shapeType": 0, "scaleFactor": 1.0, "panels": [%s]}]}
                """
                        .formatted((int) display.id, address, String.join(", ", panels));
        return (document + "\0").getBytes(StandardCharsets.UTF_8);
    }

    /**
     * startMirror() replaces the handlers of these signals with the library's, which end the
     * process. They are in place when it returns, so that is when to restore Java's own handlers.
     * 256 bytes hold sigaction()'s structure on every system.
     */
    private int startKeepingSignalHandlers() {
        final int bus = Platform.isMac() ? 10 : 7;
        // SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV
        final Map<Integer, Memory> saved = new HashMap<>();
        for (int signal : new int[] {2, 6, 15, bus, 8, 13, 11}) {
            saved.put(signal, new Memory(256));
            process.sigaction(signal, null, saved.get(signal));
        }
        final int result = mirror.startMirror();
        saved.forEach((signal, action) -> process.sigaction(signal, action, null));
        return result;
    }

    private void showSent() throws MirrorException {
        check(mirror.captureCurrentStreamFrames() == 0, "nothing was sent within a second");
        final int size = mirror.getSizeOfStreamFrameJson();
        check(size >= 0, "the snapshot could not be made");
        check(size > 0, "no frame was captured");
        final byte[] buffer = new byte[size];
        check(mirror.getStreamFrameJson(buffer) == 0, "the snapshot could not be fetched");
        System.out.println("sent: " + new String(buffer, StandardCharsets.UTF_8));
    }

    private void showPalette() throws MirrorException {
        final byte[] buffer = new byte[512];
        check(mirror.getPalette(buffer) == 0, "the palette could not be made");
        final String palette = textIn(buffer, "the palette is cut");
        final boolean hasColours = process.isatty(1) == 1;
        final var line = new StringBuilder("palette:");
        for (long[] one : numbersIn(palette, "R", "G", "B")) {
            if (hasColours)
                line.append(" \033[48;2;%d;%d;%dm  \033[0m".formatted(one[0], one[1], one[2]));
            line.append(" #%02x%02x%02x".formatted(one[0], one[1], one[2]));
        }
        System.out.println(line);
        check(!System.out.checkError(), "standard output cannot be written");
    }

    private void run(String address, double seconds) throws MirrorException, InterruptedException {
        check(isAddress(address), "not an IPv4 or IPv6 address: " + address);
        final Display display = firstDisplay();
        check(
                mirror.setMirrorConfig(configuration(display, address)) == 1,
                "the configuration was not applied: the screen cannot be captured");
        final int started = startKeepingSignalHandlers();
        check(
                started != 0,
                "mirroring was not started: a run exists already or there is no device");
        check(started == 1, "mirroring was not started: no thread could be made");
        int stopped;
        try {
            System.out.printf("mirroring display %d onto %s%n", display.id, address);
            Thread.sleep((long) (seconds * 1000));
            showSent();
            showPalette();
        } finally {
            stopped = mirror.stopMirror();
        }
        check(stopped == 1, "mirroring could not be stopped");
    }

    public static void main(String[] words) throws InterruptedException {
        if (words.length < 1 || words.length > 2) {
            System.err.println("usage: MirrorScreen ADDRESS [SECONDS]");
            System.exit(2);
        }
        try {
            new MirrorScreen().run(words[0], words.length > 1 ? Double.parseDouble(words[1]) : 10);
        } catch (MirrorException problem) {
            System.err.println("MirrorScreen: " + problem.getMessage());
            System.exit(1);
        }
    }
}
