// Runs the demo on a terminal, as a person would.
#include "tests/support/files.h"
#include "tests/support/process.h"
#include "tests/support/virtualScreen.h"
#include "tests/tools/panelwall/web/httpClient.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace test;

// The variable that every process of this test's demo has in its environment.
static std::string mark() {
    return "DEMO_TEST=" + std::to_string(getpid());
}

// The command lines of all processes that the demo started and that still run.
static std::vector<std::string> running() {
    std::vector<std::string> commands;
    std::error_code gone;
    for (const auto &process : std::filesystem::directory_iterator("/proc", gone)) {
        const std::string name = process.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos ||
            name == std::to_string(getpid()))
            continue;
        // A zero byte separates the variables; put one before the first as well.
        const std::string variables = '\0' + fileText(process.path() / "environ");
        const std::string wanted = '\0' + mark() + '\0';
        if (variables.find(wanted) != std::string::npos)
            commands.push_back(fileText(process.path() / "cmdline"));
    }
    return commands;
}

class Demo : public testing::Test {
protected:
    void SetUp() override {
        setenv("DEMO_TEST", std::to_string(getpid()).c_str(), 1);
        setenv("DEMO_SECONDS", "60", 1);
        unsetenv("DISPLAY");
    }

    // Makes the demo find this shell script in place of the program `name`.
    static void findFirst(const Folder &folder, const std::string &name, const std::string &lines) {
        chmod(folder.write(name, "#!/bin/sh\n" + lines + "\n").c_str(), 0755);
        setenv("PATH", (folder.file("") + ":" + std::getenv("PATH")).c_str(), 1);
    }

    // Presses Ctrl-C and expects that no process is left.
    static void interrupt(Process &demo) {
        EXPECT_GE(running().size(), 5u); // screen, player, mirror, photographer, wall
        demo.type("\x03");
        EXPECT_EQ(demo.finish().status, 130);
        // The system may take a moment to remove ended processes.
        for (int tries = 0; tries < 500 && !running().empty(); ++tries)
            poll(nullptr, 0, 10);
        EXPECT_EQ(running(), std::vector<std::string>());
    }
};

TEST_F(Demo, ShowsThePagesAddressAndLeavesNothingRunningOnCtrlC) {
    Process demo({"/bin/sh", DEMO, "match"}, {.terminal = test::TerminalSize{100, 40}});
    demo.waitFor("15/15 lit");
    const PageAddress page = addressIn(demo.out());
    EXPECT_EQ(statusOf(get(page.port, page.root)), 200) << demo.out();
    interrupt(demo);
    EXPECT_THROW(HttpClient(page.port), std::runtime_error);
}

TEST_F(Demo, OpensThePageWhereThereIsADesktop) {
    const Folder folder;
    const auto asked = folder.file("asked");
    findFirst(folder, "xdg-open", "printf '%s\\n' \"$1\" >" + asked);
    const VirtualScreen screen(640, 360);
    screen.use();
    Process demo({"/bin/sh", DEMO, "match"}, {.terminal = test::TerminalSize{100, 40}});
    demo.waitFor("15/15 lit");
    for (int tries = 0; tries < 1000 && fileText(asked).empty(); ++tries)
        poll(nullptr, 0, 10);
    // Other users can see the arguments of xdg-open, so its argument is a file that holds the
    // address.
    const std::string link = fileText(asked);
    const PageAddress page = addressIn(fileText(link.substr(0, link.find('\n'))));
    EXPECT_EQ(statusOf(get(page.port, page.root)), 200) << link;
    EXPECT_EQ(link.find(page.root), std::string::npos) << link;
    demo.type("\x03");
    EXPECT_EQ(demo.finish().status, 130);
}

// A player that is told to end while it draws may deadlock.
TEST_F(Demo, EndsEvenIfItsPlayerDoesNotWhenAsked) {
    const Folder folder;
    findFirst(folder, "ffplay", "trap '' TERM INT\nexec sleep 1000");
    Process demo({"/bin/sh", DEMO, "match"}, {.terminal = test::TerminalSize{100, 40}});
    demo.waitFor("15/15 lit");
    interrupt(demo);
}
