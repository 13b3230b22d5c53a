#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

using test::contains;
using test::Ending;
using test::LightReceiver;
using test::LightsFile;
using test::lightsText;
using test::VirtualScreen;

namespace {

Ending doctor(const VirtualScreen &screen, std::vector<std::string> words = {},
              test::Program::Variables variables = {}, const std::string &input = "") {
    words.insert(words.begin(), "doctor");
    variables["DISPLAY"] = screen.display();
    // Whatever session the tests run in.
    variables["WAYLAND_DISPLAY"] = "";
    variables["XDG_SESSION_TYPE"] = "";
    return test::mirrorctl(words, variables, input);
}

std::string devices(std::uint32_t displayID, const std::vector<std::string> &ips) {
    std::string list;
    for (const auto &ip : ips)
        list += (list.empty() ? "" : ", ") + std::string(R"({"ip": ")") + ip +
                R"(", "controlVersion": 2, "shapeType": 0, "scaleFactor": 1, "panels": []})";
    return R"({"displayID": )" + std::to_string(displayID) + R"(, "mode": 0, "devices": [)" + list +
           "]}";
}

} // namespace

TEST(MirrorctlDoctor, FindsAHealthyScreenHealthy) {
    VirtualScreen screen(640, 480);
    for (const std::uint32_t colour : {0x000000u, 0xFF0000u, 0xFF00FFu}) {
        screen.fill(colour);
        const Ending ending = doctor(screen);
        EXPECT_EQ(ending.status, 0) << ending.out << ending.err;
        EXPECT_EQ(ending.err, "");
        for (const char *words :
             {"  good    X server: \":", "  good    screen: ", "  good    RANDR: ",
              "  good    MIT-SHM: ", "  good    DAMAGE: ", ": 640 x 480.\n",
              ": frames arrive; a mark drawn on the screen came out ",
              "9 good, 0 unsure, 0 bad.\n"})
            EXPECT_TRUE(contains(ending.out, words)) << words << " in\n" << ending.out;
    }
}

TEST(MirrorctlDoctor, LeavesNoMarkBehind) {
    VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    ASSERT_EQ(doctor(screen).status, 0);
    std::string text = lightsText(test::onlyDisplay(screen.display()), "127.0.58.90");
    text.replace(text.find("\"centroidX\": 100"), 16, "\"centroidX\": 60");
    text.replace(text.find("\"centroidY\": 100"), 16, "\"centroidY\": 60");
    const Ending ending = test::mirrorctl({"snapshot", "-"}, {{"DISPLAY", screen.display()}}, text);
    EXPECT_TRUE(contains(ending.out, "  #ff0000\n")) << ending.out;
}

TEST(MirrorctlDoctor, TakesNoBlackPictureForAnAnswer) {
    VirtualScreen screen(640, 480);
    const Ending black = doctor(screen, {"--no-mark"});
    EXPECT_EQ(black.status, 0);
    EXPECT_TRUE(contains(black.out, "unsure  display ")) << black.out;
    EXPECT_TRUE(contains(black.out, "nothing but black within 2 s: the screen is black, or it is "
                                    "not seen"))
        << black.out;
    screen.fill(0xFF0000);
    const Ending red = doctor(screen, {"--no-mark"});
    EXPECT_TRUE(contains(red.out, "a frame arrives; how old it is cannot be told without a mark "
                                  "(--no-mark was given).\n"))
        << red.out;
}

TEST(MirrorctlDoctor, NoticesThatTheMarkDoesNotComeOut) {
    VirtualScreen screen(640, 480);
    const Ending black = doctor(screen, {}, {{"LD_PRELOAD", UNMAPPED_WINDOWS}});
    EXPECT_EQ(black.status, 75);
    EXPECT_TRUE(contains(black.out, "nothing but black arrives, also where a mark was drawn"))
        << black.out;
    screen.fill(0xFF0000);
    const Ending old = doctor(screen, {}, {{"LD_PRELOAD", UNMAPPED_WINDOWS}});
    EXPECT_EQ(old.status, 75);
    EXPECT_TRUE(contains(old.out, "a picture arrives, but not the mark that was drawn")) << old.out;
}

TEST(MirrorctlDoctor, TellsWhyThereIsNoPicture) {
    const VirtualScreen screen(640, 480);
    const std::tuple<const char *, int, const char *> refusals[] = {
        {"setMirrorConfig", 77, "display 5: capturing it was refused.\n"},
        {"startMirror", 71, "display 5: mirroring could not be started.\n"},
        {"Stream start failed!", 75,
         "display 5: mirroring started, but nothing was sent; the library said: Stream "
         "start failed!\n"},
    };
    for (const auto &[function, status, words] : refusals) {
        const Ending ending =
            doctor(screen, {}, {{"LD_PRELOAD", REFUSING_LIBRARY}, {"REFUSE", function}});
        EXPECT_EQ(ending.status, status);
        EXPECT_TRUE(contains(ending.out, words)) << ending.out;
    }
}

TEST(MirrorctlDoctor, FindsADisplayWithoutAPictureBadUnlessAnotherIsMeant) {
    const VirtualScreen screen(640, 480);
    const test::Program::Variables library = {{"LD_PRELOAD", REFUSING_LIBRARY},
                                              {"REFUSE", "picture"}};
    const Ending all = doctor(screen, {"--no-mark"}, library);
    EXPECT_TRUE(contains(all.out, "  bad     display 6: no picture available.\n"
                                  "          To fix it: is it switched on, and may this program "
                                  "record the screen?\n"))
        << all.out;
    EXPECT_EQ(all.status, 77);
    const Ending other = doctor(screen, {"-", "--no-mark"}, library, devices(5, {}));
    EXPECT_TRUE(contains(other.out, "  unsure  display 6: no picture available.\n")) << other.out;
    EXPECT_EQ(other.status, 75); // this library sends nothing
}

TEST(MirrorctlDoctor, TellsWhatTheNetworkSaysOfDevices) {
    VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    LightReceiver light("127.0.58.91", 60222);
    const auto display = test::onlyDisplay(screen.display());
    const Ending good = doctor(screen, {"-", "--no-mark"}, {}, devices(display, {"127.0.58.91"}));
    EXPECT_EQ(good.status, 0) << good.out;
    EXPECT_TRUE(contains(good.out, "  good    127.0.58.91:60222: sent from 127.")) << good.out;
    EXPECT_EQ(light.next(), (test::Datagram{0, 0}));
    EXPECT_FALSE(light.next(std::chrono::milliseconds(0)));

    const Ending bad = doctor(screen, {"-", "--no-mark"}, {},
                              devices(display, {"127.0.58.91", "127.0.58.92", "a\\u001blamp"}));
    EXPECT_EQ(bad.status, 68) << bad.out;
    EXPECT_TRUE(contains(bad.out, "  bad     127.0.58.92:60222: the address is in use, but "
                                  "nothing listens on this port.\n"))
        << bad.out;
    EXPECT_TRUE(contains(bad.out, "  bad     a\\u001Blamp:60222: expected an IPv4 or IPv6 address"))
        << bad.out;
}

TEST(MirrorctlDoctor, ExaminesTheDocument) {
    VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    const auto display = test::onlyDisplay(screen.display());
    const Ending faulty = doctor(screen, {"-", "--no-mark"}, {}, R"({"displayID": 1.5})");
    EXPECT_EQ(faulty.status, 65);
    EXPECT_TRUE(contains(faulty.out, "standard input: 3 errors, the first: line 1, column 2: "
                                     "/displayID: expected an integer"))
        << faulty.out;
    EXPECT_EQ(doctor(screen, {"/no/such.json", "--no-mark"}).status, 66);
    const Ending other = doctor(screen, {"-"}, {}, devices(display + 1, {}));
    EXPECT_EQ(other.status, 69);
    EXPECT_TRUE(contains(other.out, "the configuration names it, but it is not there"))
        << other.out;
}

TEST(MirrorctlDoctor, SaysThatThereIsNoDisplay) {
    const Ending ending = test::mirrorctl({"doctor"}, {{"DISPLAY", ""}});
    EXPECT_EQ(ending.status, 69);
    EXPECT_TRUE(contains(ending.out, "X server: the variable DISPLAY is not set")) << ending.out;
    EXPECT_TRUE(contains(ending.out, "displays: there is none to mirror")) << ending.out;
}

TEST(MirrorctlDoctor, PrintsForScripts) {
    VirtualScreen screen(640, 480);
    const Ending ending = doctor(screen, {"--json"});
    EXPECT_EQ(ending.status, 0);
    rapidjson::Document tree;
    tree.Parse(ending.out.c_str());
    ASSERT_FALSE(tree.HasParseError()) << ending.out;
    EXPECT_TRUE(tree["healthy"].GetBool());
    ASSERT_EQ(tree["checks"].Size(), 9u);
    EXPECT_STREQ(tree["checks"][0]["ward"].GetString(), "System");
    for (const auto &check : tree["checks"].GetArray())
        EXPECT_STREQ(check["verdict"].GetString(), "good");
}
