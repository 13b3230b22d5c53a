// What a run tells about itself, held against what the light received.
#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"
#include "tools/config/configDocument.h"
#include "tools/mirrorctl/run/frameCounter.h"

#include <csignal>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <sstream>

using test::contains;
using test::Ending;
using test::LightReceiver;
using test::LightsFile;
using test::lightsText;
using test::Program;

namespace {

std::vector<rapidjson::Document> jsonLines(const std::string &out) {
    std::vector<rapidjson::Document> lines;
    std::istringstream stream(out);
    for (std::string line; std::getline(stream, line);) {
        lines.emplace_back();
        lines.back().Parse(line.c_str());
        EXPECT_FALSE(lines.back().HasParseError()) << line;
    }
    return lines;
}

// How many datagrams have arrived.
std::size_t received(LightReceiver &light) {
    std::size_t count = 0;
    while (light.next(std::chrono::milliseconds(0)))
        ++count;
    return count;
}

} // namespace

TEST(MirrorctlRunCount, CountsEveryFrameThatTheLightReceived) {
    test::VirtualScreen screen(640, 480);
    LightReceiver light("127.0.58.70", 60222);
    const auto display = test::onlyDisplay(screen.display());
    const Ending ending =
        test::mirrorctl({"run", "-", "--seconds", "2.2", "--json"}, {{"DISPLAY", screen.display()}},
                        lightsText(display, "127.0.58.70"));
    ASSERT_EQ(ending.status, 0) << ending.err;
    EXPECT_EQ(ending.err, "");
    const auto lines = jsonLines(ending.out);
    ASSERT_GE(lines.size(), 3u) << ending.out; // a busy machine may be late for a second's report
    EXPECT_STREQ(lines[0]["event"].GetString(), "started");
    EXPECT_STREQ(lines[1]["event"].GetString(), "running");
    const auto &end = lines.back();
    EXPECT_STREQ(end["event"].GetString(), "stopped");
    EXPECT_EQ(end["frames"].GetUint(), received(light));
    EXPECT_GT(end["frames"].GetUint(), 10u);
    EXPECT_GT(end["rate"].GetDouble(), 5.0);
    EXPECT_LT(end["rate"].GetDouble(), 24.0);
    EXPECT_GE(end["jitterMs"].GetDouble(), 0.0);
    EXPECT_EQ(end["errors"].GetUint(), 0u);
}

TEST(MirrorctlRunCount, CountsChangesOfColour) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    LightReceiver light("127.0.58.71", 60222);
    const auto display = test::onlyDisplay(screen.display());
    Program program({"run", "-", "--mode", "fade"}, {{"DISPLAY", screen.display()}},
                    lightsText(display, "127.0.58.71"));
    ASSERT_TRUE(light.next());
    screen.fill(0x0000FF);
    ASSERT_TRUE(light.next());
    program.signal(SIGINT);
    const Ending ending = program.finish();
    EXPECT_EQ(ending.status, 0) << ending.err;
    const std::size_t frames = 2 + received(light);
    EXPECT_TRUE(
        contains(ending.out, "Sent " + std::to_string(frames) + " frames to every device.\n"))
        << ending.out;
}

TEST(MirrorctlRunCount, ShowsSignsOfLifeInPaletteMode) {
    test::VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    const auto display = test::onlyDisplay(screen.display());
    const Ending ending =
        test::mirrorctl({"run", "-", "--seconds", "0.5", "--json"}, {{"DISPLAY", screen.display()}},
                        lightsText(display, "127.0.58.72", 3));
    const auto lines = jsonLines(ending.out);
    ASSERT_FALSE(lines.empty());
    EXPECT_GE(lines.back()["signsOfLife"].GetUint(), 1u) << ending.out;
}

TEST(MirrorctlRunCount, HandsOverTheDocumentAsItIsWhenTold) {
    test::VirtualScreen screen(640, 480);
    const auto display = test::onlyDisplay(screen.display());
    const Ending ending =
        test::mirrorctl({"run", "-", "--seconds", "0.3", "--no-count"},
                        {{"DISPLAY", screen.display()}}, lightsText(display, "127.0.58.73"));
    EXPECT_EQ(ending.status, 0) << ending.err;
    EXPECT_FALSE(contains(ending.out, "Sent")) << ending.out;
}

TEST(MirrorctlRunCount, TellsWhatTheLibraryReports) {
    const Ending ending =
        test::mirrorctl({"run", "-", "--seconds", "0.1"},
                        {{"LD_PRELOAD", REFUSING_LIBRARY}, {"REFUSE", "socket not connected"}},
                        lightsText(5, "127.0.58.74"));
    EXPECT_EQ(ending.status, 0);
    EXPECT_EQ(ending.err, "socket not connected\n");
    EXPECT_TRUE(contains(ending.out, "The library reported 1 error, the last: socket not "
                                     "connected\n"))
        << ending.out;
}

TEST(MirrorctlRunCount, IsLiveOnATerminal) {
    test::VirtualScreen screen(640, 480);
    screen.use();
    const LightsFile file(lightsText(test::onlyDisplay(screen.display()), "127.0.58.75"));
    test::Process process(
        {"/usr/bin/env", "TERM=xterm", MIRRORCTL, "run", file.path(), "--seconds", "60"},
        {.terminal = test::TerminalSize{100, 24}});
    process.waitFor("\r\x1b[K[--------------------]   0 %  0 of 60 s  ");
    process.waitFor("/s  jitter ");
    process.waitFor("  no error");
    process.type("\x03");
    Ending ending = process.finish();
    EXPECT_EQ(ending.status, 0) << ending.out;
    // The terminal echoes the key somewhere in what the program says then.
    if (const auto echo = ending.out.find("^C"); echo != std::string::npos)
        ending.out.erase(echo, 2);
    EXPECT_TRUE(contains(ending.out, "Stopping: Interrupt.\r\nMirrored display ")) << ending.out;
    EXPECT_TRUE(contains(ending.out, " frames to every device, ")) << ending.out;
}

TEST(MirrorctlFrameCounter, IsAnotherDeviceOfTheDocument) {
    config::Document document{5, 2, {{"127.0.58.76", 1, 0, 0.1, {}}}};
    const mirrorctl::FrameCounter counter(document);
    ASSERT_EQ(counter.reason(), "");
    const config::DeviceEntry device = counter.device();
    EXPECT_TRUE(device.ip.starts_with("127."));
    EXPECT_NE(device.ip, "127.0.58.76");
    EXPECT_TRUE(device.panels.empty());
    document.mode = 3;
    EXPECT_EQ(mirrorctl::FrameCounter(document).device().panels.size(), 1u);

    document.devices.push_back(device);
    const auto reading = config::readText(config::documentText(document));
    ASSERT_TRUE(reading.problems.empty()) << reading.problems[0].message;
    ASSERT_EQ(reading.document.devices.size(), 2u);
    EXPECT_EQ(reading.document.devices[0].ip, "127.0.58.76");
    EXPECT_EQ(reading.document.devices[0].scaleFactor, 0.1);
    EXPECT_EQ(reading.document.devices[1].ip, device.ip);
}
