// The machine's local addresses.
#include "net/udpSocket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

// Compares the result with the machine's interfaces as the test reads them.
TEST(UdpSocket, LocalAddresses) {
    std::string first, last, printed4, printed6, text6;
    ifaddrs *list = nullptr;
    ASSERT_EQ(getifaddrs(&list), 0);
    for (const ifaddrs *entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr)
            continue;
        char text[INET6_ADDRSTRLEN] = "";
        const std::string name = entry->ifa_name;
        if (entry->ifa_addr->sa_family == AF_INET && first.empty()) {
            const in_addr address = reinterpret_cast<sockaddr_in *>(entry->ifa_addr)->sin_addr;
            inet_ntop(AF_INET, &address, text, sizeof text);
            printed4 += "'" + name + "': \nip : " + std::to_string(ntohl(address.s_addr)) + "\n";
            if (std::string(text) != "127.0.0.1")
                first = text;
        }
        if (entry->ifa_addr->sa_family == AF_INET6) {
            printed6 += "'" + name + "': " + last + "\n";
            inet_ntop(AF_INET6, &reinterpret_cast<sockaddr_in6 *>(entry->ifa_addr)->sin6_addr, text,
                      sizeof text);
            last = text;
        }
    }
    freeifaddrs(list);

    UdpSocket socket;
    CaptureStdout();
    EXPECT_EQ(socket.getLocalIp(), first);
    EXPECT_EQ(GetCapturedStdout(), printed4);
    CaptureStdout();
    EXPECT_EQ(socket.getLocalIpv6(), last);
    EXPECT_EQ(GetCapturedStdout(), printed6);
}

// Moves this process, which has one thread, to a network namespace with nothing but 127.0.0.1.
// False, with errno set, when the system refuses.
bool becomeLoopbackHost() {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return false;
    ifreq request{.ifr_ifrn = {"lo"}, .ifr_ifru = {}};
    request.ifr_flags = IFF_UP;
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const bool up = fd >= 0 && ioctl(fd, SIOCSIFFLAGS, &request) == 0;
    close(fd);
    return up;
}

TEST(UdpSocket, OnAHostWithOnlyLoopbackThereIsNoLocalIp) {
    constexpr int refused = 100; // errno is added
    CaptureStdout();
    fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        if (!becomeLoopbackHost())
            _exit(refused + errno);
        UdpSocket socket;
        const bool none = socket.getLocalIp().empty();
        fflush(stdout);
        _exit(none ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const std::string printed = GetCapturedStdout();
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) > refused)
        GTEST_SKIP() << "no network namespace here: "
                     << std::strerror(WEXITSTATUS(status) - refused);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(printed, "'lo': \nip : 2130706433\n");
}

} // namespace
