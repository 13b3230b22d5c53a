// Compares a run's reports with what the light received.
#include "tests/tools/mirrorctl/mirrorSetup.h"
#include "tools/config/configDocument.h"
#include "tools/mirrorctl/run/frameCounter.h"

#include <csignal>
#include <regex>
#include <sstream>

using test::contains;
using test::LightReceiver;
using test::Process;
using test::ProcessResult;

namespace {

using MirrorctlRunCount = test::ScreenTest;

std::vector<rapidjson::Document> jsonLines(const std::string &out) {
    std::vector<rapidjson::Document> lines;
    std::istringstream stream(out);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(test::parsed(line));
    return lines;
}

// The number of datagrams that have arrived.
std::size_t received(LightReceiver &light) {
    std::size_t count = 0;
    while (light.next(std::chrono::milliseconds(0)))
        ++count;
    return count;
}

} // namespace

TEST_F(MirrorctlRunCount, CountsEveryFrameThatTheLightReceived) {
    LightReceiver light("127.0.58.70", 60222);
    const ProcessResult result =
        run({"run", "-", "--seconds", "2.2", "--json"}, lights("127.0.58.70"));
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const auto lines = jsonLines(result.out);
    ASSERT_GE(lines.size(), 3u) << result.out; // a busy machine may miss a report
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

TEST_F(MirrorctlRunCount, CountsChangesOfColour) {
    screen.fill(0xFF0000);
    LightReceiver light("127.0.58.71", 60222);
    Process program = start({"run", "-", "--mode", "fade"}, {.input = lights("127.0.58.71")});
    ASSERT_TRUE(light.next());
    screen.fill(0x0000FF);
    ASSERT_TRUE(light.next());
    program.signal(SIGINT);
    const ProcessResult result = program.finish();
    const std::size_t frames = 2 + received(light);
    test::expectOutput(result, 0,
                       {"Sent " + std::to_string(frames) + " frames to every device.\n"});
}

TEST_F(MirrorctlRunCount, ShowsSignsOfLifeInPaletteMode) {
    screen.fill(0xFF0000);
    Process program = start({"run", "-", "--json"}, {.input = lights("127.0.58.72", 3)});
    const auto showsSign = [&] {
        return std::regex_search(program.out(), std::regex("\"signsOfLife\":[1-9]"));
    };
    for (int report = 0; report < 30 && !showsSign(); ++report)
        program.waitFor("\"running\"", program.out().size());
    program.signal(SIGINT);
    const auto lines = jsonLines(program.finish().out);
    EXPECT_GE(lines.back()["signsOfLife"].GetUint(), 1u) << program.out();
}

TEST_F(MirrorctlRunCount, HandsOverTheDocumentAsItIsWhenTold) {
    const ProcessResult result =
        run({"run", "-", "--seconds", "0.3", "--no-count"}, lights("127.0.58.73"));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_FALSE(contains(result.out, "Sent"));
}

TEST_F(MirrorctlRunCount, TellsWhatTheLibraryReports) {
    const ProcessResult result =
        test::mirrorctl({"run", "-", "--seconds", "0.1"}, test::refusing("socket not connected"),
                        test::lightsText(5, "127.0.58.74"));
    EXPECT_EQ(result.err, "socket not connected\n");
    test::expectOutput(result, 0,
                       {"The library reported 1 error, the last: socket not connected\n"});
}

TEST_F(MirrorctlRunCount, IsLiveOnATerminal) {
    const std::string file = folder.write("lights.json", lights("127.0.58.75"));
    Process process =
        start({"run", file, "--seconds", "6000"},
              {.variables = {{"TERM", "xterm"}}, .terminal = test::TerminalSize{100, 24}});
    process.waitFor("\r\x1b[K[--------------------]   0 %  ");
    process.waitFor(" of 6000 s  ");
    process.waitFor("/s  jitter ");
    process.waitFor("  no error");
    process.type("\x03");
    ProcessResult result = process.finish();
    // The terminal echoes the key somewhere in the program's output.
    if (const auto echo = result.out.find("^C"); echo != std::string::npos)
        result.out.erase(echo, 2);
    test::expectOutput(result, 0,
                       {"Stopping: Interrupt.\r\nMirrored display ", " frames to every device, "});
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
