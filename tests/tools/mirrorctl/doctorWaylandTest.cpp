// mirrorctl doctor in Wayland sessions.
#include "tests/platform/standInCompositor.h"
#include "tests/support/swayServer.h"
#include "tests/support/waylandBrush.h"
#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <csignal>
#include <cstdlib>

using test::contains;
using test::doctor;
using test::expectOutput;
using test::ProcessResult;
using test::StandInCompositor;
using test::SwayServer;

namespace {

const std::string chosen = "  good    session: Wayland, since WAYLAND_DISPLAY names a compositor "
                           "that accepts connections.\n";

class MirrorctlDoctorWayland : public testing::TestWithParam<const char *> {};

} // namespace

TEST_P(MirrorctlDoctorWayland, FindsItsMarkOnEveryScreen) {
    SwayServer server(640, 480, {std::string("output HEADLESS-1 ") + GetParam()});
    server.start();
    test::WaylandBrush brush(server.socket());
    for (const std::uint32_t colour : {0x000000u, 0xFF00FFu}) {
        brush.fillRect(0, 0, 640, 640, colour);
        const ProcessResult result = doctor(server.variables());
        EXPECT_EQ(result.err, "");
        expectOutput(result, 0,
                     {chosen, "  good    compositor: \"" + server.socket() + "\", 1 output.\n",
                      "  good    screen: copied by the compositor, which asks nobody "
                      "(wlr-screencopy).\n",
                      ": frames arrive; a mark drawn on the screen came out ",
                      "5 good, 0 unsure, 0 bad.\n"});
    }
}

INSTANTIATE_TEST_SUITE_P(Screens, MirrorctlDoctorWayland,
                         testing::Values("scale 1", "scale 2", "scale 1.25", "scale 0.5",
                                         "transform 90"));

TEST(MirrorctlDoctorWaylands, FindsItsMarkOnTheSecondOutput) {
    SwayServer server(640, 480, {"output HEADLESS-2 resolution 800x600"});
    server.start();
    ASSERT_EQ(test::Process({"swaymsg", "create_output"}, {.variables = server.variables()})
                  .finish()
                  .status,
              0);
    const ProcessResult result = doctor(server.variables());
    expectOutput(result, 0, {"\", 2 outputs.\n", ": 800 x 600.\n", "7 good, 0 unsure, 0 bad.\n"});
}

TEST(MirrorctlDoctorWaylands, PrintsForScripts) {
    SwayServer server(640, 480, {});
    server.start();
    const ProcessResult result = doctor(server.variables(), {"--json"});
    EXPECT_EQ(result.status, 0);
    const auto tree = test::parsed(result.out);
    EXPECT_TRUE(tree["healthy"].GetBool());
    ASSERT_EQ(tree["checks"].Size(), 5u);
    EXPECT_STREQ(tree["checks"][0]["subject"].GetString(), "session");
}

TEST(MirrorctlDoctorWaylands, TellsWhatTheCompositorLacks) {
    const auto findings = [](const test::StandInPlan &plan) {
        const StandInCompositor compositor(plan);
        return doctor(test::Variables{{"WAYLAND_DISPLAY", std::getenv("WAYLAND_DISPLAY")}});
    };
    expectOutput(findings({.copyVersion = 2}), 77,
                 {chosen, "  good    compositor: ",
                  "  bad     screen: the compositor has no wlr-screencopy of version 3 or later, "
                  "with which programs copy the screen; GNOME and KDE have none.\n",
                  ": no picture available.\n"
                  "          To fix it: first fix what is bad under System.\n"});
    expectOutput(findings({.offers = {}}), 77,
                 {"  bad     screen: the compositor offers no copies of it that the library can "
                  "read.\n"});
    expectOutput(findings({.hasName = false}), 69,
                 {" names no output that could be mirrored.\n"
                  "          To fix it: is a monitor connected and switched on?\n",
                  "  bad     displays: there is none to mirror.\n"});
    // Such a compositor draws no mark.
    expectOutput(findings({.offers = {{.width = 64, .height = 64, .stride = 256}}}), 0,
                 {"cannot be told without a mark (the compositor has no wlr-layer-shell, with "
                  "which programs draw above windows).\n"});
}

TEST(MirrorctlDoctorWaylands, TellsCompositorsApartThatCannotBeAsked) {
    SwayServer server(640, 480, {});
    server.start();
    const std::string name = "\"" + server.socket() + "\"";
    kill(server.pid(), SIGSTOP);
    const ProcessResult hung = doctor(server.variables());
    kill(server.pid(), SIGCONT);
    expectOutput(hung, 69,
                 {chosen, "  bad     compositor: " + name +
                              " accepts the connection, but does not answer.\n"
                              "          To fix it: the compositor hangs: look at its log"});

    // A library that cannot be loaded.
    const test::Folder folder;
    folder.write("libwayland-client.so.0", "");
    expectOutput(doctor(server.variables(), {}, {{"LD_LIBRARY_PATH", folder.file(".")}}), 69,
                 {"  bad     compositor: libwayland-client.so.0, the library to talk to it, is not "
                  "installed, or is older than 1.20.\n"});

    server.kill();
    expectOutput(doctor(server.variables(), {}, {{"MIRROR_DISPLAY_SERVER", "wayland"}}), 69,
                 {"  good    session: Wayland, since MIRROR_DISPLAY_SERVER says so.\n"
                  "  bad     compositor: the compositor that WAYLAND_DISPLAY names, " +
                  name + ", is not there, or does not let this user in.\n"});
    test::Variables wayland = server.variables();
    wayland["MIRROR_DISPLAY_SERVER"] = "wayland";
    test::expectErrors(test::mirrorctl({"displays"}, wayland), 69,
                       {"There is no display to mirror.\n  On Wayland: WAYLAND_DISPLAY is " + name +
                        "; is that compositor running"});
    expectOutput(doctor(test::Variables{{"WAYLAND_DISPLAY", "wayland-0"}}, {},
                        {{"MIRROR_DISPLAY_SERVER", "wayland"}, {"XDG_RUNTIME_DIR", ""}}),
                 69,
                 {"  bad     compositor: the variable XDG_RUNTIME_DIR is not set, so the socket "
                  "\"wayland-0\" cannot be found.\n"});
}

TEST(MirrorctlDoctorWaylands, KnowsNoThirdKindOfSession) {
    const test::Variables third = {{"MIRROR_DISPLAY_SERVER", "mir"}};
    expectOutput(doctor(third), 69,
                 {"  bad     session: neither X11 nor Wayland, since MIRROR_DISPLAY_SERVER is "
                  "neither x11 nor wayland.\n"
                  "          To fix it: set MIRROR_DISPLAY_SERVER to x11 or wayland, or unset "
                  "it.\n"});
    test::expectErrors(test::mirrorctl({"displays"}, third), 69,
                       {"There is no display to mirror.\n  MIRROR_DISPLAY_SERVER is \"mir\"; set "
                        "it to x11 or wayland"});
}
