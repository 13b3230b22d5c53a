// Streams that still run when their code is unloaded.
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/platform/unloadModule.h"
#include "tests/support/virtualScreen.h"

#include <cstdlib>
#include <deque>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using test::StreamProbe;
using test::UsedScreen;

namespace {

// Never released, because their streams and queues are not released either.
ModuleRun &newRun() {
    static auto *runs = new std::deque<ModuleRun>;
    return runs->emplace_back();
}

// Loads the module, streams until a frame arrives, and unloads the module.
void runAndUnload(ModuleRun &run) {
    void *module = dlopen(UNLOAD_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    auto *start = reinterpret_cast<StartInModule *>(dlsym(module, "startInModule"));
    ASSERT_NE(start, nullptr);
    ASSERT_EQ(start(test::onlyDisplay(), &run), kCGErrorSuccess);
    const auto deadline = platform::Clock::now() + std::chrono::seconds(20);
    while (run.frames == 0 && platform::Clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_GT(run.frames, 0);
    ASSERT_EQ(dlclose(module), 0);
    EXPECT_EQ(test::mappings(UNLOAD_MODULE), 0u);
}

} // namespace

TEST(Unload, AStreamThatNobodyStopsIsStopped) {
    UsedScreen screen(64, 48);
    const std::size_t threads = test::threads();
    const std::size_t descriptors = test::openDescriptors();
    for (int round = 0; round < 50; ++round) {
        runAndUnload(newRun());
        ASSERT_TRUE(test::threadsBecome(threads));
        // A thread that still watched the screen would now run unloaded code.
        screen.fill(static_cast<std::uint32_t>(round));
    }
    EXPECT_TRUE(test::openDescriptorsBecome(descriptors));
}

TEST(Unload, DestructorsOfTheLibraryComeFirstAndFindTheStreamRunning) {
    UsedScreen screen(64, 48);
    const std::size_t threads = test::threads();
    for (int round = 0; round < 50; ++round) {
        ModuleRun &run = newRun();
        run.stopInDestructor = true;
        runAndUnload(run);
        EXPECT_EQ(run.stopResult, kCGErrorSuccess);
        ASSERT_TRUE(test::threadsBecome(threads));
    }
}

class ExitTest : public testing::Test {
protected:
    ExitTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ExitTest, OfTheProcessWhileAStreamRuns) {
    EXPECT_EXIT(
        {
            const UsedScreen screen(64, 48);
            auto *stream = new StreamProbe(test::onlyDisplay(), 64, 48);
            if (stream->start() == kCGErrorSuccess && stream->waitForCalls(1))
                exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(ExitTest, CalledByTheHandlerItself) {
    EXPECT_EXIT(
        {
            const UsedScreen screen(64, 48);
            auto *stream = new StreamProbe(test::onlyDisplay(), 64, 48);
            stream->onCall = [](const test::HandlerCall &) { exit(8); };
            if (stream->start() == kCGErrorSuccess)
                stream->waitForCount(kCGDisplayStreamFrameStatusStopped, 1);
        },
        testing::ExitedWithCode(8), "");
}

TEST_F(ExitTest, OfAForkedChildLeavesTheParentsStreamAlone) {
    UsedScreen screen(64, 48);
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    ASSERT_TRUE(stream.startAndWait());
    const pid_t child = fork();
    if (child == 0)
        exit(0);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    screen.fill(0xaabbcc);
    EXPECT_TRUE(stream.waitForPixel(3, 3, 0xaabbcc));
}
