// Access to the memory into which the server writes the screen.
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/shm.h>

using test::StreamProbe;
using test::UsedScreen;

namespace {

// The files shared with the server: their number and the status of the last one.
struct Shared {
    int count = 0;
    struct stat file {};
};
Shared shared;

} // namespace

// Replaces the real function through a linker option.
extern "C" xcb_void_cookie_t __real_xcb_shm_attach_fd_checked(xcb_connection_t *connection,
                                                              xcb_shm_seg_t segment,
                                                              std::int32_t fd,
                                                              std::uint8_t readOnly);
extern "C" xcb_void_cookie_t __wrap_xcb_shm_attach_fd_checked(xcb_connection_t *connection,
                                                              xcb_shm_seg_t segment,
                                                              std::int32_t fd,
                                                              std::uint8_t readOnly) {
    ++shared.count;
    fstat(fd, &shared.file);
    return __real_xcb_shm_attach_fd_checked(connection, segment, fd, readOnly);
}

namespace {

// The number of a process's mappings of screen memory.
std::size_t pixelMappings(pid_t process) {
    return test::mappings("screen pixels", process);
}

// Shared memory that has a name and outlives processes: files, and System V segments.
std::set<std::string> namedMemory() {
    std::set<std::string> names;
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator("/dev/shm", ignored))
        names.insert(entry.path());
    std::ifstream stream("/proc/sysvipc/shm");
    for (std::string line; std::getline(stream, line);)
        names.insert(line.substr(0, 22)); // key and identifier
    return names;
}

// The number of this process's descriptors for files with `name` in their path.
int descriptorsOf(const std::string &name) {
    int count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        count +=
            std::filesystem::read_symlink(entry, ignored).string().find(name) != std::string::npos
                ? 1
                : 0;
    }
    return count;
}

} // namespace

TEST(PixelPrivacy, ScreenMemoryIsNobodyElses) {
    const UsedScreen screen(64, 48);
    const auto before = namedMemory();
    shared = {};
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    ASSERT_TRUE(stream.startAndWait());
    ASSERT_GE(shared.count, 1);
    EXPECT_EQ(shared.file.st_mode & 0777, 0600u);
    EXPECT_EQ(shared.file.st_uid, geteuid());
    EXPECT_EQ(shared.file.st_nlink, 0u); // it has no name
    EXPECT_GE(pixelMappings(getpid()), 1u);
    EXPECT_EQ(descriptorsOf("screen pixels"), 0); // no descriptor is left to reopen it
    EXPECT_EQ(test::systemSharedSegments(), 0u);
    EXPECT_EQ(namedMemory(), before);
}

TEST(PixelPrivacy, NothingOutlivesACrash) {
    const UsedScreen screen(64, 48);
    const auto before = namedMemory();
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        StreamProbe stream(test::onlyDisplay(), 64, 48);
        const char good = stream.start() == kCGErrorSuccess &&
                                  stream.waitForCount(kCGDisplayStreamFrameStatusFrameComplete, 1)
                              ? 1
                              : 0;
        [[maybe_unused]] const ssize_t written = write(ready[1], &good, 1);
        for (;;)
            pause();
    }
    char good = 0;
    EXPECT_EQ(read(ready[0], &good, 1), 1);
    EXPECT_EQ(good, 1);
    EXPECT_EQ(namedMemory(), before);
    EXPECT_GE(pixelMappings(child), 1u);
    EXPECT_GE(pixelMappings(screen.pid()), 1u);
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    // The server unmaps the memory once it has noticed the end of the connection.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (pixelMappings(screen.pid()) > 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_EQ(pixelMappings(screen.pid()), 0u);
    EXPECT_EQ(namedMemory(), before);
    close(ready[0]);
    close(ready[1]);
}
