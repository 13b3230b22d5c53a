// The choice between X11 and Wayland.
#include "platform/objects/descriptor.h"
#include "platform/wayland/source.h"
#include "platform/x11/source.h"
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/files.h"
#include "tests/support/virtualScreen.h"

#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace {

using platform::sessionSource;
const platform::Source *const x11 = &platform::x11::displaySource;
const platform::Source *const wayland = &platform::wayland::displaySource;

sockaddr_un addressOf(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

// Accepts connections, and never answers.
platform::Descriptor listenOn(const std::string &path) {
    const sockaddr_un address = addressOf(path);
    platform::Descriptor fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    EXPECT_EQ(listen(fd.get(), 1), 0);
    return fd;
}

// Connects until no more connections are accepted.
std::vector<platform::Descriptor> fillQueueOf(const std::string &path) {
    const sockaddr_un address = addressOf(path);
    std::vector<platform::Descriptor> clients;
    do
        clients.emplace_back(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    while (connect(clients.back().get(), reinterpret_cast<const sockaddr *>(&address),
                   sizeof address) == 0);
    EXPECT_EQ(errno, EAGAIN);
    return clients;
}

class SessionSource : public testing::Test {
protected:
    SessionSource() {
        for (const char *variable : {"WAYLAND_DISPLAY", "MIRROR_DISPLAY_SERVER"})
            unsetenv(variable);
        setenv("XDG_RUNTIME_DIR", folder.file("").c_str(), 1);
    }

    const test::Folder folder;
};

} // namespace

TEST_F(SessionSource, IsX11WithoutACompositor) {
    EXPECT_EQ(&sessionSource(), x11);
    const std::string tooLong(200, 'x');
    for (const std::string &name : {std::string("wayland-1"), folder.file("nowhere"), tooLong}) {
        setenv("WAYLAND_DISPLAY", name.c_str(), 1);
        EXPECT_EQ(&sessionSource(), x11) << name;
    }
    // What remains of a compositor that was killed.
    listenOn(folder.file("wayland-1"));
    setenv("WAYLAND_DISPLAY", "wayland-1", 1);
    EXPECT_EQ(&sessionSource(), x11);
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(&sessionSource(), x11);
}

TEST_F(SessionSource, IsWaylandFromTheFirstConnectionOnWhileTheVariableIsSet) {
    setenv("WAYLAND_DISPLAY", "wayland-1", 1);
    const std::size_t descriptors = test::openDescriptors();
    {
        const platform::Descriptor compositor = listenOn(folder.file("wayland-1"));
        EXPECT_EQ(&sessionSource(), wayland);
    }
    EXPECT_EQ(test::openDescriptors(), descriptors);
    unlink(folder.file("wayland-1").c_str());
    EXPECT_EQ(&sessionSource(), wayland);
    setenv("WAYLAND_DISPLAY", "", 1);
    EXPECT_EQ(&sessionSource(), x11);
    unsetenv("WAYLAND_DISPLAY");
    EXPECT_EQ(&sessionSource(), x11);
}

TEST_F(SessionSource, IsWaylandWhenTheCompositorsQueueIsFull) {
    setenv("WAYLAND_DISPLAY", "wayland-1", 1);
    const platform::Descriptor compositor = listenOn(folder.file("wayland-1"));
    const auto clients = fillQueueOf(folder.file("wayland-1"));
    EXPECT_EQ(&sessionSource(), wayland);
    std::uint32_t count = 7;
    EXPECT_NE(CGGetActiveDisplayList(10, nullptr, &count), kCGErrorSuccess);
}

TEST_F(SessionSource, IsWhatTheVariableSays) {
    const test::VirtualScreen screen(64, 48);
    setenv("DISPLAY", screen.display().c_str(), 1);
    const platform::Descriptor compositor = listenOn(folder.file("wayland-0"));
    setenv("MIRROR_DISPLAY_SERVER", "wayland", 1);
    EXPECT_EQ(&sessionSource(), wayland);
    EXPECT_EQ(test::onlyDisplay(), 0u);
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    setenv("MIRROR_DISPLAY_SERVER", "x11", 1);
    EXPECT_EQ(&sessionSource(), x11);
    const CGDirectDisplayID display = test::onlyDisplay();
    EXPECT_NE(display, 0u);
    setenv("MIRROR_DISPLAY_SERVER", "", 1);
    EXPECT_EQ(&sessionSource(), wayland);
    setenv("MIRROR_DISPLAY_SERVER", "X11", 1);
    std::uint32_t count = 7;
    EXPECT_NE(CGGetActiveDisplayList(10, nullptr, &count), kCGErrorSuccess);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(CGDisplayCreateImage(display), nullptr);
    EXPECT_EQ(test::StreamProbe(display, 64, 48).get(), nullptr);
}

// The screen is an X server's while the stream is created, and a compositor's afterwards.
TEST_F(SessionSource, OfAStreamStaysTheSame) {
    test::UsedScreen screen(64, 48);
    test::StreamProbe stream(test::onlyDisplay(), 64, 48);
    const platform::Descriptor compositor = listenOn(folder.file("wayland-1"));
    setenv("WAYLAND_DISPLAY", "wayland-1", 1);
    EXPECT_EQ(&sessionSource(), wayland);
    ASSERT_TRUE(stream.startAndWait());
    screen.fill(0x123456);
    EXPECT_TRUE(stream.waitForPixel(5, 5, 0x123456));
}
