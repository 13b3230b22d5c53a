// Shared memory refused in every way that a system can: this program replaces the C library's calls
// that create, fill and map memory for frames.
#include "tests/faults/faultRun.h"
#include "tests/platform/processUsage.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

enum class Refusal {
    MakeFile,    // memfd_create
    ProtectFile, // fchmod
    FillFile,    // posix_fallocate
    FillInPeace, // posix_fallocate, interrupted by an alarm unless the thread blocks it
    MapFrame,    // mmap of as much memory as a frame of 640 x 480 takes
};

constexpr int none = -1;
std::atomic<int> refusedKind = none;
std::atomic<int> refusals = 0;

bool isRefused(Refusal kind) {
    if (refusedKind != static_cast<int>(kind))
        return false;
    ++refusals;
    return true;
}

// While a Refused exists, one kind of call fails. At most one object at a time.
class Refused {
public:
    explicit Refused(Refusal what) {
        refusals = 0;
        refusedKind = static_cast<int>(what);
    }
    ~Refused() { refusedKind = none; }
    Refused(const Refused &) = delete;
    Refused &operator=(const Refused &) = delete;

    // How often it has been refused.
    static int times() { return refusals; }
};

} // namespace

extern "C" {

int memfd_create(const char *name, unsigned flags) noexcept {
    if (isRefused(Refusal::MakeFile)) {
        errno = ENFILE;
        return -1;
    }
    return static_cast<int>(syscall(SYS_memfd_create, name, flags));
}

int fchmod(int fd, mode_t mode) noexcept {
    if (isRefused(Refusal::ProtectFile)) {
        errno = EPERM;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fchmod, fd, mode));
}

int posix_fallocate(int fd, off_t offset, off_t length) {
    if (isRefused(Refusal::FillFile))
        return ENOSPC;
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    if (sigismember(&blocked, SIGALRM) == 0 && isRefused(Refusal::FillInPeace))
        return EINTR;
    return syscall(SYS_fallocate, fd, 0, offset, length) == 0 ? 0 : errno;
}

void *mmap(void *wanted, std::size_t length, int protection, int flags, int fd,
           off_t offset) noexcept {
    const bool isFrame = length >= std::size_t{640} * 480 * 4;
    if (isFrame && isRefused(Refusal::MapFrame)) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return reinterpret_cast<void *>(
        syscall(SYS_mmap, wanted, length, protection, flags, fd, offset));
}
}

namespace {

class SharedMemory : public test::FaultRun {
protected:
    SharedMemory() : FaultRun(640, 480) {}

    // Whether a frame lies in memory that is shared with the server.
    static bool isShared() { return test::mappings("screen pixels") > 0; }
};

// Frames are then sent over the connection to the server; a light sees no difference.
class Unshared : public SharedMemory, public testing::WithParamInterface<Refusal> {};

TEST_P(Unshared, FramesAreTheSame) {
    {
        const Refused refused(GetParam());
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

// Allocating a large frame takes longer than the interval between a busy host's alarms.
TEST_F(SharedMemory, AlarmsDoNotKeepItFromBeingMade) {
    const Refused refused(Refusal::FillInPeace);
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
    EXPECT_TRUE(isShared());
}

// Without even private memory for a frame, there is no image of the display and no stream.
TEST_F(SharedMemory, NoMemoryForAFrameAtAll) {
    const std::string text = document();
    CaptureStdout();
    int configured = -1;
    {
        const Refused refused(Refusal::MapFrame);
        configured = configure(text);
        EXPECT_GT(refused.times(), 0);
    }
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\n");
    EXPECT_EQ(configured, 0);

    ASSERT_EQ(configure(text), 1);
    CaptureStdout();
    {
        const Refused refused(Refusal::MapFrame);
        EXPECT_EQ(startMirror(), 1);
        EXPECT_EQ(stopMirror(), 1);
    }
    EXPECT_EQ(GetCapturedStdout(), "Stream start failed!\n");
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
}

// Growing a file beyond the process's limit raises a signal that ends the process.
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
