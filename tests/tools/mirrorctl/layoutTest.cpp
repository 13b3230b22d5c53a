#include "tests/tools/mirrorctl/mirrorSetup.h"
#include "tools/config/configDocument.h"
#include "tools/config/modes.h"
#include "tools/lights/device.h"
#include "tools/mirrorctl/layout/layoutPlan.h"

using namespace mirrorctl;
using test::contains;
using test::ProcessResult;

namespace {

LayoutPlan plan(const std::string &shape, config::ScreenSize screen = {1920, 1080},
                std::vector<std::string> addresses = {"192.0.2.7"}) {
    LayoutPlan made;
    made.shape = parseShape(shape).value();
    made.screen = screen;
    made.addresses = std::move(addresses);
    return made;
}

using Places = std::vector<std::pair<int, int>>;

Places places(const std::vector<config::DeviceEntry> &devices) {
    Places list;
    for (const auto &device : devices)
        for (const auto &panel : device.panels)
            list.emplace_back(panel.centroidX, panel.centroidY);
    return list;
}

ProcessResult layout(std::vector<std::string> words, const std::string &server = "") {
    words.insert(words.begin(), "layout");
    return test::mirrorctl(words, {{"DISPLAY", server}});
}

} // namespace

TEST(MirrorctlLayout, UnderstandsShapes) {
    EXPECT_EQ(parseShape("4x6")->rows, 4u);
    EXPECT_EQ(parseShape("4x6")->columns, 6u);
    EXPECT_EQ(parseShape("strip:60")->length, 60u);
    EXPECT_EQ(parseShape("strip:60")->panels(), 60u);
    for (const char *text : {"", "x", "4", "4x", "x6", "0x6", "4x0", "4x6x", "-1x6", "4 x 6",
                             "1000x1000", "99999999999999999999x1", "strip", "strip:", "strip:0",
                             "strip:-1", "strip:1x1", "strip:100001"})
        EXPECT_FALSE(parseShape(text)) << text;
}

TEST(MirrorctlLayout, FillsTheScreenWithAGrid) {
    const auto devices = layOut(plan("2x3", {600, 400}));
    const Places rows = {{100, 100}, {300, 100}, {500, 100}, {100, 300}, {300, 300}, {500, 300}};
    EXPECT_EQ(places(devices), rows);
    EXPECT_NEAR(lights::halfSide(devices[0]), 100.0, 0.1);
}

TEST(MirrorctlLayout, GoesAroundTheEdgesClockwise) {
    // Eight squares of side 100 around 300 x 300.
    const auto devices = layOut(plan("strip:8", {300, 300}));
    const Places clockwise = {{100, 50},  {200, 50},  {250, 100}, {250, 200},
                              {200, 250}, {100, 250}, {50, 200},  {50, 100}};
    EXPECT_EQ(places(devices), clockwise);
    EXPECT_NEAR(lights::halfSide(devices[0]), 50.0, 0.1);
}

TEST(MirrorctlLayout, SharesThePanelsOut) {
    const auto devices = layOut(plan("1x8", {800, 100}, {"192.0.2.7", "192.0.2.8", "192.0.2.9"}));
    ASSERT_EQ(devices.size(), 3u);
    std::size_t all = 0;
    for (const auto &device : devices) {
        EXPECT_GE(device.panels.size(), 2u);
        EXPECT_LE(device.panels.size(), 3u);
        EXPECT_EQ(device.panels.front().panelID, 1);
        EXPECT_EQ(device.panels.back().panelID, static_cast<int>(device.panels.size()));
        all += device.panels.size();
    }
    EXPECT_EQ(all, 8u);
    EXPECT_EQ(places(devices).back(), std::pair(750, 50));
}

TEST(MirrorctlLayout, IsWithoutFaultWhateverTheWords) {
    for (const config::ScreenSize screen :
         {config::ScreenSize{1920, 1080}, {640, 480}, {1080, 1920}, {3440, 1440}, {64, 64}})
        for (const char *shape : {"1x1", "2x3", "9x16", "16x9", "1x40", "strip:1", "strip:2",
                                  "strip:3", "strip:7", "strip:60", "strip:255"})
            for (const int version : {1, 2}) {
                LayoutPlan made = plan(shape, screen);
                made.controlVersion = version;
                if (!problemOf(made).empty()) {
                    EXPECT_LT(screen.width * screen.height, 1000u * 1000u) << shape;
                    continue;
                }
                const auto text = config::documentText({5, config::paletteMode, layOut(made)});
                const auto problems = config::review(config::readText(text), screen).problems;
                EXPECT_TRUE(problems.empty())
                    << shape << " on " << screen.width << ": " << problems[0].message;
            }
}

TEST(MirrorctlLayout, ObjectsToWhatCannotBe) {
    EXPECT_EQ(problemOf(plan("1x2", {64, 64}, {"192.0.2.7", "192.0.2.8", "192.0.2.9"})),
              "there are more addresses than panels");
    LayoutPlan narrow = plan("16x16");
    EXPECT_EQ(problemOf(narrow), "");
    narrow.controlVersion = 1;
    EXPECT_EQ(problemOf(narrow), "a device of this control version takes 255 panels at most; for "
                                 "256 name 2 addresses");
    EXPECT_EQ(problemOf(plan("1x64", {64, 64})), "panels would be smaller than 4 pixels");
}

TEST(MirrorctlLayout, UnderstandsLightsWithOtherProtocols) {
    struct Case {
        const char *url;
        config::Protocol protocol;
        const char *ip;
        int port;
        int universe;
    };
    using enum config::Protocol;
    for (const Case &one : {Case{"ddp://192.0.2.40", Ddp, "192.0.2.40", 4048, 0},
                            {"wled://192.0.2.40:7", Wled, "192.0.2.40", 7, 0},
                            {"artnet://192.0.2.40/3", ArtNet, "192.0.2.40", 6454, 3},
                            {"artnet://192.0.2.40/0", ArtNet, "192.0.2.40", 6454, 0},
                            {"e131://[2001:db8::7]:65535/63999", E131, "2001:db8::7", 65535, 63999},
                            {"ddp://[2001:db8::7]", Ddp, "2001:db8::7", 4048, 0},
                            {"e131://multicast", E131, "multicast", 5568, 1}}) {
        LayoutPlan made = plan("1x2", {1920, 1080}, {"127.0.0.1"});
        ASSERT_TRUE(addBridge(made, one.url)) << one.url;
        EXPECT_EQ(made.addresses, (std::vector<std::string>{"127.0.0.1", "127.0.0.2"}));
        const config::OutputEntry &output = made.outputs.at(0);
        EXPECT_EQ(output.protocol, one.protocol) << one.url;
        EXPECT_EQ(output.ip, one.ip);
        EXPECT_EQ(output.port, one.port) << one.url;
        EXPECT_EQ(output.universe, one.universe) << one.url;
        EXPECT_EQ(output.device, 1);
    }
    for (const char *url :
         {"", "ddp", "ddp:", "ddp://", "ddp://lamp", "192.0.2.40", "dpd://192.0.2.40",
          "ddp://192.0.2.40/1", "ddp://192.0.2.40:0", "ddp://192.0.2.40:65536", "ddp://192.0.2.40:",
          "e131://192.0.2.40/0", "e131://192.0.2.40/64000", "e131://192.0.2.40/", "ddp://multicast",
          "artnet://192.0.2.40/-1", "artnet://192.0.2.40/32768", "DDP://192.0.2.40"}) {
        LayoutPlan made = plan("1x2");
        EXPECT_FALSE(addBridge(made, url)) << url;
        EXPECT_EQ(made.addresses.size(), 1u);
        EXPECT_TRUE(made.outputs.empty());
    }
}

TEST(MirrorctlLayout, WritesWhatLightbridgeNeeds) {
    const ProcessResult made =
        layout({"strip:120", "--bridge", "ddp://192.0.2.40", "--bridge", "e131://192.0.2.41/5",
                "--display", "7", "--screen", "1920x1080", "--mode", "palette"});
    ASSERT_EQ(made.status, 0) << made.err;
    const config::Reading reading = config::readText(made.out);
    ASSERT_TRUE(reading.problems.empty());
    ASSERT_EQ(reading.document.devices.size(), 2u);
    EXPECT_EQ(reading.document.devices[0].ip, "127.0.0.1");
    EXPECT_EQ(reading.document.devices[1].ip, "127.0.0.2");
    EXPECT_EQ(reading.document.devices[1].panels.size(), 60u);
    const auto &outputs = reading.document.bridge.value().outputs;
    ASSERT_EQ(outputs.size(), 2u);
    EXPECT_EQ(config::nameOutput(outputs[0]), "output 0 (DDP to 192.0.2.40:4048)");
    EXPECT_EQ(outputs[0].device, 0);
    EXPECT_EQ(config::nameOutput(outputs[1]), "output 1 (E1.31 to 192.0.2.41:5568)");
    EXPECT_EQ(outputs[1].universe, 5);
    EXPECT_EQ(outputs[1].device, 1);
    EXPECT_EQ(test::mirrorctl({"check", "-", "--screen", "1920x1080", "--strict"},
                              {{"DISPLAY", ""}}, made.out),
              (ProcessResult{0, "standard input: fine.\n", ""}));
}

using MirrorctlLayoutOnScreen = test::ScreenTest;

TEST_F(MirrorctlLayoutOnScreen, MakesWhatCheckAccepts) {
    for (const char *shape : {"4x6", "strip:60"}) {
        const ProcessResult made =
            run({"layout", shape, "127.0.58.61", "::1", "--mode", "palette"});
        ASSERT_EQ(made.status, 0) << made.err;
        EXPECT_TRUE(contains(made.err, " panels on 2 devices, each coloured by "));
        EXPECT_EQ(run({"check", "-", "--strict"}, made.out),
                  (ProcessResult{0, "standard input: fine.\n", ""}));
    }
}

TEST(MirrorctlLayout, NeedsNoDisplayWhenAllIsSaid) {
    const ProcessResult made = layout({"1x2", "127.0.58.61", "--display", "7", "--screen",
                                       "200x100", "--control-version", "1", "--mode", "1"});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(made.out, "{\n"
                        "  \"displayID\": 7,\n"
                        "  \"mode\": 1,\n"
                        "  \"devices\": [\n"
                        "    {\n"
                        "      \"ip\": \"127.0.58.61\",\n"
                        "      \"controlVersion\": 1,\n"
                        "      \"shapeType\": 0,\n"
                        "      \"scaleFactor\": 1.0,\n"
                        "      \"panels\": [\n"
                        "        {\"panelID\": 1, \"centroidX\": 50, \"centroidY\": 50},\n"
                        "        {\"panelID\": 2, \"centroidX\": 150, \"centroidY\": 50}\n"
                        "      ]\n"
                        "    }\n"
                        "  ]\n"
                        "}\n");
}

TEST(MirrorctlLayout, GuessesNoDisplay) {
    test::expectErrors(layout({"4x6", "127.0.58.61"}), 69, {"There is no display here."});
    const test::VirtualScreen screen(1440, 600);
    screen.run({"xrandr", "--setmonitor", "LEFT", "800/200x600/150+0+0", screen.output()});
    screen.run({"xrandr", "--setmonitor", "RIGHT", "640/160x480/120+800+0", "none"});
    test::expectErrors(layout({"4x6", "127.0.58.61"}, screen.display()), 69,
                       {"There are several displays; name one with --display:\n", "(640 x 480)\n"});
    test::expectErrors(layout({"4x6", "127.0.58.61", "--display", "3"}, screen.display()), 69,
                       {"There is no such display here. There are:\n"});
}

TEST(MirrorctlLayout, RefusesWordsThatItDoesNotUnderstand) {
    const std::vector<std::string> wrong[] = {
        {},
        {"4x6"},
        {"4x6", "a lamp"},
        {"4x6", "--bridge", "192.0.2.40"},
        {"4", "127.0.58.61"},
        {"4x6", "127.0.58.61", "--control-version", "x"},
        {"4x6", "127.0.58.61", "--display", "9999999999"},
        {"300x1", "127.0.58.61", "--display", "1", "--screen", "1920x1080", "--control-version",
         "1"},
    };
    for (const auto &words : wrong) {
        const ProcessResult result = layout(words);
        EXPECT_EQ(result.status, 64) << result.err;
        EXPECT_EQ(result.out, "");
    }
}
