#include "tests/tools/mirrorctl/mirrorSetup.h"

using test::contains;
using test::expectOutput;
using test::LightReceiver;
using test::ProcessResult;

namespace {

class MirrorctlDoctor : public test::ScreenTest {
protected:
    ProcessResult doctor(const std::vector<std::string> &arguments = {},
                         const test::Variables &variables = {},
                         const std::string &input = "") const {
        return test::doctor(screen.variables(), arguments, variables, input);
    }
};

std::string devices(std::uint32_t displayID, const std::vector<std::string> &ips) {
    std::string list;
    for (const auto &ip : ips)
        list += (list.empty() ? "" : ", ") + std::string(R"({"ip": ")") + ip +
                R"(", "controlVersion": 2, "shapeType": 0, "scaleFactor": 1, "panels": []})";
    return R"({"displayID": )" + std::to_string(displayID) + R"(, "mode": 0, "devices": [)" + list +
           "]}";
}

} // namespace

TEST_F(MirrorctlDoctor, FindsAHealthyScreenHealthy) {
    for (const std::uint32_t colour : {0x000000u, 0xFF0000u, 0xFF00FFu}) {
        screen.fill(colour);
        const ProcessResult result = doctor();
        EXPECT_EQ(result.err, "");
        expectOutput(result, 0,
                     {"  good    X server: \":", "  good    screen: ", "  good    RANDR: ",
                      "  good    MIT-SHM: ", "  good    DAMAGE: ", ": 640 x 480.\n",
                      ": frames arrive; a mark drawn on the screen came out ",
                      "9 good, 0 unsure, 0 bad.\n"});
    }
}

TEST_F(MirrorctlDoctor, LeavesNoMarkBehind) {
    screen.fill(0xFF0000);
    ASSERT_EQ(doctor().status, 0);
    std::string text = lights("127.0.58.110");
    text.replace(text.find("\"centroidX\": 100"), 16, "\"centroidX\": 60");
    text.replace(text.find("\"centroidY\": 100"), 16, "\"centroidY\": 60");
    EXPECT_TRUE(contains(run({"snapshot", "-"}, text).out, "  #ff0000\n"));
}

TEST_F(MirrorctlDoctor, TakesNoBlackPictureForAnAnswer) {
    expectOutput(doctor({"--no-mark"}), 0,
                 {"unsure  display ",
                  "nothing but black within 2 s: the screen is black, or it is not seen"});
    screen.fill(0xFF0000);
    EXPECT_TRUE(contains(doctor({"--no-mark"}).out,
                         "a frame arrives; how old it is cannot be told without a mark "
                         "(--no-mark was given).\n"));
}

TEST_F(MirrorctlDoctor, NoticesThatTheMarkDoesNotComeOut) {
    const test::Variables unmapped = {{"LD_PRELOAD", UNMAPPED_WINDOWS}};
    expectOutput(doctor({}, unmapped), 75,
                 {"nothing but black arrives, also where a mark was drawn"});
    screen.fill(0xFF0000);
    expectOutput(doctor({}, unmapped), 75, {"a picture arrives, but not the mark that was drawn"});
}

TEST_F(MirrorctlDoctor, TellsWhyThereIsNoPicture) {
    const std::tuple<const char *, int, const char *> refusals[] = {
        {"setMirrorConfig", 77, "display 5: capturing it was refused.\n"},
        {"startMirror", 71, "display 5: mirroring could not be started.\n"},
        {"Stream start failed!", 75,
         "display 5: mirroring started, but nothing was sent; the library said: Stream "
         "start failed!\n"},
    };
    for (const auto &[function, status, words] : refusals)
        expectOutput(doctor({}, test::refusing(function)), status, {words});
}

TEST_F(MirrorctlDoctor, FindsADisplayWithoutAPictureBadUnlessAnotherIsMeant) {
    expectOutput(doctor({"--no-mark"}, test::refusing("picture")), 77,
                 {"  bad     display 6: no picture available.\n"
                  "          To fix it: is it switched on, and may this program record the "
                  "screen?\n"});
    // This library sends nothing.
    expectOutput(doctor({"-", "--no-mark"}, test::refusing("picture"), devices(5, {})), 75,
                 {"  unsure  display 6: no picture available.\n"});
}

TEST_F(MirrorctlDoctor, TellsWhatTheNetworkSaysOfDevices) {
    screen.fill(0xFF0000);
    LightReceiver light("127.0.58.111", 60222);
    expectOutput(doctor({"-", "--no-mark"}, {}, devices(display, {"127.0.58.111"})), 0,
                 {"  good    127.0.58.111:60222: sent from 127."});
    EXPECT_EQ(light.next(), (test::Datagram{0, 0}));
    EXPECT_FALSE(light.next(std::chrono::milliseconds(0)));

    expectOutput(doctor({"-", "--no-mark"}, {},
                        devices(display, {"127.0.58.111", "127.0.58.112", "a\\u001blamp"})),
                 68,
                 {"  bad     127.0.58.112:60222: the address is in use, but nothing listens on "
                  "this port.\n",
                  "  bad     a\\u001Blamp:60222: expected an IPv4 or IPv6 address"});
}

TEST_F(MirrorctlDoctor, ExaminesTheDocument) {
    screen.fill(0xFF0000);
    expectOutput(doctor({"-", "--no-mark"}, {}, R"({"displayID": 1.5})"), 65,
                 {"standard input: 3 errors, the first: line 1, column 2: /displayID: expected an "
                  "integer"});
    EXPECT_EQ(doctor({"/no/such.json", "--no-mark"}).status, 66);
    expectOutput(doctor({"-"}, {}, devices(display + 1, {})), 69,
                 {"the configuration names it, but it is not there"});
}

TEST_F(MirrorctlDoctor, PrintsForScripts) {
    const ProcessResult result = doctor({"--json"});
    EXPECT_EQ(result.status, 0);
    const auto tree = test::parsed(result.out);
    EXPECT_TRUE(tree["healthy"].GetBool());
    ASSERT_EQ(tree["checks"].Size(), 9u);
    EXPECT_STREQ(tree["checks"][0]["ward"].GetString(), "System");
    for (const auto &check : tree["checks"].GetArray())
        EXPECT_STREQ(check["verdict"].GetString(), "good");
}
