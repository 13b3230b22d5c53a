// mirrorctl doctor on X servers that refuse capture, make it expensive, or cannot be reached.
#include "tests/tools/mirrorctl/mirrorSetup.h"
#include "tests/tools/mirrorctl/plainProxy.h"
#include "tests/tools/mirrorctl/waylandSession.h"

#include <csignal>
#include <cstdlib>

using test::contains;
using test::doctor;
using test::expectOutput;
using test::PlainProxy;
using test::ProcessResult;
using test::VirtualScreen;
using test::WaylandSession;

namespace {

// The contents of a key file with one key for every server.
std::string anyServersKey(char letter) {
    const std::string protocol = "MIT-MAGIC-COOKIE-1";
    const std::string anyServer("\xFF\xFF\0\0\0\0", 6);
    return anyServer + '\0' + static_cast<char>(protocol.size()) + protocol + '\0' + '\x10' +
           std::string(16, letter);
}

} // namespace

TEST(MirrorctlDoctorServers, SaysThatPixelsTravelOverTheNetwork) {
    const VirtualScreen screen(640, 480, 24, {"-listen", "tcp"});
    expectOutput(doctor("localhost" + screen.display()), 0,
                 {"unsure  MIT-SHM: of no use, since DISPLAY names a server over the network; the "
                  "screen is read through the connection, at several times the cost.\n"
                  "          To fix it: run this on the machine that the screen belongs to",
                  "frames arrive", "8 good, 1 unsure, 0 bad."});
    expectOutput(doctor("unix" + screen.display()), 0, {"good    MIT-SHM: the screen is read"});
}

TEST(MirrorctlDoctorServers, TriesToShareMemory) {
    const VirtualScreen screen(640, 480);
    const PlainProxy proxy(screen.display());
    expectOutput(doctor(proxy.display()), 0,
                 {"unsure  MIT-SHM: there, but memory cannot be shared, as when a proxy stands "
                  "between this program and the server; the screen is read through the connection, "
                  "at several times the cost.\n          To fix it: set DISPLAY to the name of "
                  "the server itself",
                  "frames arrive", "8 good, 1 unsure, 0 bad."});
}

TEST(MirrorctlDoctorServers, TellsThatSharedMemoryIsMissing) {
    const VirtualScreen screen(640, 480, 24, {"-extension", "MIT-SHM"});
    expectOutput(doctor(screen.display()), 0,
                 {"unsure  MIT-SHM: missing; the screen is read through the connection"});
}

TEST(MirrorctlDoctorServers, FindsServersBadThatDoNotTellOfChanges) {
    const VirtualScreen withoutDamage(640, 480, 24, {"-extension", "DAMAGE"});
    expectOutput(doctor(withoutDamage.display()), 77,
                 {"bad     DAMAGE: missing; without DAMAGE and XFIXES, which tell of changes, "
                  "nothing is captured.\n          To fix it: switch the extension on",
                  "capturing it was refused; the library said: Screen Recording not allowed!\n"
                  "          To fix it: first fix what is bad under System.\n",
                  "7 good, 0 unsure, 2 bad."});
    // Nothing more is expected here: this server crashes when the first of several clients leaves.
    const VirtualScreen withoutFixes(640, 480, 24, {"-extension", "XFIXES"});
    expectOutput(doctor(withoutFixes.display()), 77,
                 {"bad     XFIXES: missing; without DAMAGE and XFIXES, which tell of changes, "
                  "nothing is captured.\n          To fix it: switch the extension on"});
}

TEST(MirrorctlDoctorServers, FindsServersBadThatListNoDisplays) {
    const VirtualScreen screen(640, 480, 24, {"-extension", "RANDR"});
    expectOutput(doctor(screen.display()), 69,
                 {"bad     RANDR: missing; without it there are no displays to name.",
                  "bad     displays: there is none to mirror.\n"
                  "          To fix it: first fix what is bad under System.\n"});
}

TEST(MirrorctlDoctorServers, FindsColourTablesBad) {
    const VirtualScreen screen(640, 480, 8);
    expectOutput(doctor(screen.display()), 77,
                 {"bad     screen: 8 bits a pixel, looked up in a table of colours; the library "
                  "reads 16 or 32 bits of red, green and blue.\n"
                  "          To fix it: give the screen a depth of 16 or 24: ",
                  ": no picture available.\n"
                  "          To fix it: first fix what is bad under System.\n",
                  " good, 0 unsure, 2 bad."});
}

TEST(MirrorctlDoctorServers, KnowsUntrustedConnections) {
    const VirtualScreen screen(640, 480);
    const test::Folder keys;
    const std::string file = keys.file("untrusted");
    const auto made = test::shell("DISPLAY=" + screen.display() + " xauth -f " + file +
                                  " generate " + screen.display() + " . untrusted");
    ASSERT_EQ(made.status, 0) << made.out;
    const ProcessResult result = doctor(screen.display(), {}, {{"XAUTHORITY", file}});
    expectOutput(result, 77,
                 {"bad     screen: the X server does not trust this connection",
                  "To fix it: use ssh -Y in place of ssh -X, or run this in the session itself"});
    // The extensions are hidden, not missing, so they are not reported.
    for (const char *extension : {"RANDR", "MIT-SHM", "DAMAGE", "XFIXES"})
        EXPECT_FALSE(contains(result.out, extension));
}

TEST(MirrorctlDoctorServers, KnowsWaylandSessionsWhoseCompositorIsNotNamed) {
    for (const auto &[name, value] :
         {std::pair("WAYLAND_DISPLAY", "wayland-0"), std::pair("XDG_SESSION_TYPE", "wayland")})
        expectOutput(
            doctor("", {}, {{name, value}}), 69,
            {"bad     X server: the variable DISPLAY is not set; this is a Wayland session, but "
             "X11 is asked, since WAYLAND_DISPLAY ",
             "          To fix it: to mirror the session, set WAYLAND_DISPLAY to the name of its "
             "compositor, such as wayland-0, and do not set MIRROR_DISPLAY_SERVER to x11.\n"});
}

TEST(MirrorctlDoctorServers, KnowsXServersInWaylandSessions) {
    const WaylandSession session;
    expectOutput(doctor(session.display(), {}, {{"WAYLAND_DISPLAY", "wayland-0"}}), 77,
                 {"bad     session: this is a Wayland session; the X server has no picture of the "
                  "screen, only of the windows of X programs.\n"
                  "          To fix it: to mirror the session, set WAYLAND_DISPLAY",
                  ": no picture available.\n"
                  "          To fix it: first fix what is bad under System.\n",
                  " good, 0 unsure, 2 bad."});
    // From another machine, where no variable names the Wayland session.
    expectOutput(
        doctor(session.display()), 77,
        {"bad     session: the X server belongs to a Wayland session on the machine that "
         "it runs on, as its output XWAYLAND0 shows; the X server has no picture of the screen",
         "To fix it: choose an X11 session when you log in at that machine's screen"});
}

TEST(MirrorctlDoctorServers, DoesNotTakeAnotherXServerForTheSessions) {
    const VirtualScreen screen(640, 480);
    expectOutput(doctor(screen.display(), {}, {{"WAYLAND_DISPLAY", "wayland-0"}}), 0,
                 {"unsure  session: this is a Wayland session, but the X server is no part of it",
                  "frames arrive"});
}

TEST(MirrorctlDoctorServers, TellsWhyNobodyIsLetIn) {
    const test::Folder keys;
    const std::string right = keys.write("right", anyServersKey('a'));
    setenv("XAUTHORITY", right.c_str(), 1);
    const VirtualScreen screen(640, 480, 24, {"-auth", right});
    unsetenv("XAUTHORITY");
    const std::string name = "\"" + screen.display() + "\"";
    expectOutput(doctor(screen.display(), {}, {{"XAUTHORITY", right}}), 0, {"0 bad."});
    expectOutput(
        doctor(screen.display(), {}, {{"XAUTHORITY", keys.write("wrong", anyServersKey('b'))}}), 69,
        {"bad     X server: " + name +
         " does not let this user in, and says: Invalid "
         "MIT-MAGIC-COOKIE-1 key.\n          To fix it: the key file has an old or "
         "another server's key for it"});
    expectOutput(doctor(screen.display(), {}, {{"XAUTHORITY", keys.file("none")}}), 69,
                 {"bad     X server: " + name +
                  " does not let this user in, and says: "
                  "Authorization required, but no authorization protocol specified.\n"
                  "          To fix it: the key file has no key for it"});
}

TEST(MirrorctlDoctorServers, TellsServersApartThatCannotBeAsked) {
    VirtualScreen screen(640, 480);
    const std::string name = "\"" + screen.display() + "\"";
    kill(screen.pid(), SIGSTOP);
    const ProcessResult hung = doctor(screen.display());
    kill(screen.pid(), SIGCONT);
    expectOutput(hung, 69,
                 {"bad     X server: " + name +
                  " does not answer.\n"
                  "          To fix it: the server hangs, or the connection to it is interrupted"});
    screen.kill();
    expectOutput(doctor(screen.display()), 69,
                 {"bad     X server: the server that DISPLAY names, " + name +
                  ", is not there.\n"
                  "          To fix it: run this in the desktop session, or set DISPLAY"});
    const PlainProxy proxy(screen.display());
    expectOutput(doctor(proxy.display()), 69,
                 {"bad     X server: \"" + proxy.display() +
                  "\" accepts the connection and closes it without an answer.\n"
                  "          To fix it: if DISPLAY was set by ssh, log in with it again"});
    expectOutput(doctor("screen"), 69,
                 {"bad     X server: \"screen\", the value of DISPLAY, is not a server's name.\n"});
}

// Such a server resets when its last client leaves, and drops clients that are just connecting.
TEST(MirrorctlDoctorServers, KeepsServersFromResetting) {
    VirtualScreen screen(640, 480, 24, {"-reset"});
    screen.disconnect();
    for (int i = 0; i < 5; ++i)
        expectOutput(doctor(screen.display()), 0, {"9 good, 0 unsure, 0 bad."});
}

TEST(MirrorctlDoctorServers, SaysThatThereIsNoDisplay) {
    expectOutput(
        doctor(""), 69,
        {"X server: the variable DISPLAY is not set", "displays: there is none to mirror"});
}

// Something that the screen shows anyway must not be taken for the mark.
TEST(MirrorctlDoctorServers, KnowsNothingOfTheScreenBeforeAFrameIsWhole) {
    VirtualScreen screen(640, 480);
    screen.fill(0xFF00FF);
    const test::Variables late = {{"LD_PRELOAD", std::string(UNMAPPED_WINDOWS) + ":" + LATE_FRAMES},
                                  {"LATE_FRAMES", "1000"}};
    expectOutput(doctor(screen.display(), {}, late), 75,
                 {"a picture arrives, but not the mark that was drawn"});
}
