// Runs the example hosts as people would.
#include "tests/support/expectations.h"
#include "tests/support/panelRecords.h"
#include "tests/support/process.h"
#include "tests/support/virtualScreen.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

namespace {

struct Host {
    const char *name;
    std::vector<std::string> command;
    bool linked;                        // to the library; otherwise loads it at run time
    int light;                          // the last digit of its lights' addresses
    int interrupted;                    // exit status after SIGINT, or minus its number
    std::vector<std::string> make = {}; // the command that prepares it, if any
};

void PrintTo(const Host &host, std::ostream *out) {
    *out << host.command.back();
}

std::vector<Host> hosts() {
    std::vector<Host> all{{"C", {HOST_IN_C}, true, 1, -SIGINT},
                          {"Cxx", {HOST_IN_CXX}, true, 2, -SIGINT}};
#ifdef PYTHON
    const std::string made = MADE_HOSTS;
    const auto making = [&](const std::string &language) -> std::vector<std::string> {
        return {MAKE_HOST, language, EXAMPLES "/" + language, made + "/" + language, LIBRARY};
    };
    all.push_back({"Python", {PYTHON, EXAMPLES "/python/mirror_screen.py"}, false, 3, 1});
    all.push_back({"JavaScript",
                   {"/usr/bin/env", "node", made + "/node/mirrorScreen.mjs"},
                   false,
                   4,
                   -SIGINT,
                   making("node")});
    all.push_back({"Go", {made + "/go/mirrorScreen"}, true, 5, -SIGINT, making("go")});
    all.push_back({"Rust", {made + "/rust/mirror_screen"}, true, 6, -SIGINT, making("rust")});
    all.push_back({"Java", {made + "/java/run"}, false, 7, 130, making("java")});
#endif
    return all;
}

void useLibrary(const std::string &file) {
    setenv("LD_LIBRARY_PATH", std::filesystem::path(file).parent_path().c_str(), 1);
    setenv("SCREEN_MIRROR_LIBRARY", file.c_str(), 1);
}

class HostTest : public testing::TestWithParam<Host> {
protected:
    void SetUp() override {
        useLibrary(LIBRARY);
        unsetenv("DISPLAY");
        if (!GetParam().make.empty()) {
            test::Process make(GetParam().make);
            const int status = make.finish().status;
            if (status == 77)
                GTEST_SKIP() << make.out();
            ASSERT_EQ(status, 0) << make.out() << make.err();
        }
    }

    // Each test uses its own light, since several tests run at once.
    static std::string lightOf(const char *beginning) {
        return beginning + std::to_string(GetParam().light);
    }

    static test::Process run(const std::vector<std::string> &arguments,
                             const test::LaunchOptions &options = {}) {
        std::vector<std::string> command = GetParam().command;
        command.insert(command.end(), arguments.begin(), arguments.end());
        return test::Process(command, options);
    }

    // The host's standard error, without the warnings of Java's libjsig about calls of signal().
    static std::string errorsOf(const test::Process &host) {
        return std::regex_replace(host.err(), std::regex("OpenJDK VM warning: .*\n"), "");
    }

    // Runs the host until it ends, and expects exactly one line on standard error. Returns its
    // standard output.
    static std::string expectOneLine(const std::vector<std::string> &arguments,
                                     const std::string &line, int status = 1) {
        const test::ProcessResult result = run(arguments).finish();
        test::expectErrors(result, status, {line});
        expectALine(result.err);
        return result.out;
    }

    static void expectALine(const std::string &text) {
        EXPECT_TRUE(text.ends_with("\n")) << text;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    }
};

// Red on the left, blue on the right, four panels that are a quarter of the width each. There is
// slightly more red, so red comes first in the palette.
constexpr int width = 480;
constexpr int height = 300;

// Long enough to draw, capture and send, even on a busy machine.
constexpr const char *runSeconds = "4";

void drawHalves(test::VirtualScreen &screen) {
    screen.fill(0xff0000);
    screen.fillRect(245, 0, width - 245, height, 0x0000ff);
}

// Waits until the light receives these colours for the left and the right half.
bool shows(test::LightReceiver &light, std::uint32_t left, std::uint32_t right) {
    const auto wanted =
        test::encode(2, {{1, left, 0, 1}, {2, left, 0, 1}, {3, right, 0, 1}, {4, right, 0, 1}});
    auto got = light.next();
    while (got && got != wanted)
        got = light.next();
    return got.has_value();
}

TEST_P(HostTest, MirrorsTheFirstDisplay) {
    test::VirtualScreen screen(width, height);
    screen.fill(0x00ff00);
    screen.use();
    const std::string address = lightOf("127.0.76.");
    test::LightReceiver light(address, 60222);
    test::Process host = run({address, runSeconds});
    host.waitFor(" onto " + address + "\n");
    EXPECT_TRUE(test::contains(host.out(), ": 480 x 300\n"));

    // The light shows the screen and follows it.
    EXPECT_TRUE(shows(light, 0x00ff00, 0x00ff00));
    drawHalves(screen);
    EXPECT_TRUE(shows(light, 0xff0000, 0x0000ff));

    EXPECT_EQ(host.finish().status, 0) << host.err();
    EXPECT_EQ(errorsOf(host), "");
    const std::string animData =
        "4 1 1 255 0 0 0 5 2 1 255 0 0 0 5 3 1 0 0 255 0 5 4 1 0 0 255 0 5";
    EXPECT_TRUE(test::contains(host.out(), animData));
    EXPECT_TRUE(test::contains(host.out(), "palette: #ff0000 #"));
}

// The library's SIGPIPE handler would end the host.
TEST_P(HostTest, GoesOnWhenAPipeBreaksInMidRun) {
    test::VirtualScreen screen(width, height);
    screen.use();
    const std::string address = lightOf("127.0.76.1");
    test::LightReceiver light(address, 60222);
    test::Process host = run({address, runSeconds});
    host.waitFor(" onto " + address + "\n");
    host.closeOutput();
    drawHalves(screen);
    EXPECT_TRUE(shows(light, 0xff0000, 0x0000ff));
    EXPECT_EQ(host.finish().status, 1);
    const std::string errors = errorsOf(host);
    EXPECT_TRUE(errors.ends_with(": standard output cannot be written\n")) << errors;
    expectALine(errors);
}

// The host ends as it would without the library, whose handlers are no longer installed.
TEST_P(HostTest, EndsOnAnInterruptInItsOwnWay) {
    test::VirtualScreen screen(width, height);
    screen.use();
    test::Process host = run({lightOf("127.0.76.2"), "600"});
    host.waitFor(" onto ");
    host.signal(SIGINT);
    EXPECT_EQ(host.finish().status, GetParam().interrupted) << host.err();
}

TEST_P(HostTest, ShowsThePaletteInColourOnATerminal) {
    test::VirtualScreen screen(width, height);
    drawHalves(screen);
    screen.use();
    test::Process host = run({"::ffff:127.0.76.3", "1"}, {.terminal = test::TerminalSize{}});
    test::expectOutput(host.finish(), 0,
                       {"palette: \x1b[48;2;255;0;0m  \x1b[0m #ff0000 \x1b[48;2;"});
}

TEST_P(HostTest, SaysThatAnAddressDoesNotParse) {
    for (const char *address : {"lamp.local", "127.0.76", "fe80::1%lo"})
        expectOneLine({address, "0"}, std::string("not an IPv4 or IPv6 address: ") + address);
}

TEST_P(HostTest, SaysThatThereIsNoScreen) {
    expectOneLine({"127.0.0.1", "0"}, "there is no display to mirror");
}

TEST_P(HostTest, SaysThatTheLibraryIsMissing) {
    useLibrary("/nonexistent/libscreenMirrorMac.so.1");
    // A linked host does not even start: the loader prints the message.
    expectOneLine({"127.0.0.1", "0"}, "libscreenMirrorMac.so.1: ", GetParam().linked ? 127 : 1);
    expectOneLine({"127.0.0.1", "0"}, "cannot open shared object file",
                  GetParam().linked ? 127 : 1);
}

TEST_P(HostTest, TellsEachFailureAndStopsWhatItStarted) {
    useLibrary(FAILING_LIBRARY);
    struct Failure {
        const char *function;
        const char *result;
        const char *line;
        bool started;
    };
    const Failure failures[] = {
        {"getDisplays", "-1", "the displays cannot be listed", false},
        {"getDisplays", "full", "the list of displays is cut", false},
        {"getDisplays", "none", "there is no display to mirror", false},
        {"setMirrorConfig", "0", "the configuration was not applied", false},
        {"startMirror", "0", "a run exists already or there is no device", false},
        {"startMirror", "-1", "no thread could be made", false},
        {"captureCurrentStreamFrames", "-1", "nothing was sent within a second", true},
        {"getSizeOfStreamFrameJson", "0", "no frame was captured", true},
        {"getSizeOfStreamFrameJson", "-1", "the snapshot could not be made", true},
        {"getStreamFrameJson", "-1", "the snapshot could not be fetched", true},
        {"getPalette", "-1", "the palette could not be made", true},
        {"getPalette", "full", "the palette is cut", true},
        {"stopMirror", "-1", "mirroring could not be stopped", true},
    };
    for (const Failure &failure : failures) {
        SCOPED_TRACE(std::string(failure.function) + " returns " + failure.result);
        setenv("FAIL", failure.function, 1);
        setenv("FAIL_WITH", failure.result, 1);
        const std::string out = expectOneLine({"127.0.0.1", "0"}, failure.line);
        EXPECT_EQ(out.find("stopped\n") != std::string::npos, failure.started) << out;
    }
}

INSTANTIATE_TEST_SUITE_P(, HostTest, testing::ValuesIn(hosts()),
                         [](const testing::TestParamInfo<Host> &info) { return info.param.name; });

} // namespace
