// Shared memory refused, in each of the ways in which a system can.
#include "tests/faults/faultRun.h"
#include "tests/faults/systemRefusals.h"
#include "tests/platform/processUsage.h"

#include <csignal>
#include <sys/resource.h>

namespace {

using test::Refusal;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

class SharedMemory : public test::FaultRun {
protected:
    SharedMemory() : FaultRun(640, 480) {}

    // Whether a frame lies in memory that is shared with the server.
    static bool isShared() { return test::mappings("screen pixels") > 0; }
};

// A frame then travels over the connection to the server, and nothing is different to a light.
class Unshared : public SharedMemory, public testing::WithParamInterface<Refusal> {};

TEST_P(Unshared, FramesAreTheSame) {
    {
        const test::Refused refused(GetParam());
        start();
        EXPECT_TRUE(showsPlain(0x00ff00));
        screen.fill(0x0000ff);
        EXPECT_TRUE(showsPlain(0x0000ff));
        EXPECT_FALSE(isShared());
        EXPECT_EQ(stopMirror(), 1);
        EXPECT_GT(refused.times(), 0);
    }
    start();
    EXPECT_TRUE(showsPlain(0x0000ff));
    EXPECT_TRUE(isShared());
}

INSTANTIATE_TEST_SUITE_P(All, Unshared,
                         testing::Values(Refusal::MakeFile, Refusal::ProtectFile,
                                         Refusal::FillFile));

// The memory of a large frame takes longer to come by than a busy host is left in peace.
TEST_F(SharedMemory, AlarmsDoNotKeepItFromBeingMade) {
    const test::Refused refused(Refusal::FillInPeace);
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
    EXPECT_TRUE(isShared());
}

// Not even private memory for a frame: there is no image of the display and no stream.
TEST_F(SharedMemory, NoMemoryForAFrameAtAll) {
    const std::string text = document();
    CaptureStdout();
    int configured = -1;
    {
        const test::Refused refused(Refusal::MapFrame);
        configured = configure(text);
        EXPECT_GT(refused.times(), 0);
    }
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\n");
    EXPECT_EQ(configured, 0);

    ASSERT_EQ(configure(text), 1);
    CaptureStdout();
    {
        const test::Refused refused(Refusal::MapFrame);
        EXPECT_EQ(startMirror(), 1);
        EXPECT_EQ(stopMirror(), 1);
    }
    EXPECT_EQ(GetCapturedStdout(), "Stream start failed!\n");
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
}

// A file that would become larger than the process may make one costs it a signal that ends it.
TEST_F(SharedMemory, ALimitOnTheSizeOfFilesEndsNobody) {
    std::signal(SIGXFSZ, SIG_DFL);
    rlimit before;
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 100000;
    setrlimit(RLIMIT_FSIZE, &small);
    start();
    const auto shown = showsPlain(0x00ff00);
    EXPECT_FALSE(isShared());
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_TRUE(shown);
}

} // namespace
