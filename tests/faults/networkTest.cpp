// A network that goes down and comes back, and a full send queue.
#include "tests/faults/faultRun.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <net/if.h>
#include <netinet/in.h>
#include <optional>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr in_addr_t nobody = 0;

std::mutex attemptsMutex;
std::vector<Clock::time_point> attempts;
test::Datagram lastTried;
std::atomic<in_addr_t> refusedAddress = nobody;

std::vector<Clock::time_point> attemptsSince(Clock::time_point when) {
    const std::lock_guard lock(attemptsMutex);
    return {std::lower_bound(attempts.begin(), attempts.end(), when), attempts.end()};
}

bool lastTriedIs(const test::Datagram &wanted) {
    const std::lock_guard lock(attemptsMutex);
    return lastTried == wanted;
}

// Waits for `number` more attempts to send; unless `wanted` is empty, the last must be of these
// bytes.
testing::AssertionResult awaitAttempts(std::size_t number, const test::Datagram &wanted = {}) {
    const auto begin = Clock::now();
    while (attemptsSince(begin).size() < number || (!wanted.empty() && !lastTriedIs(wanted))) {
        if (Clock::now() > begin + 10s)
            return testing::AssertionFailure() << "nothing is sent any more";
        std::this_thread::sleep_for(1ms);
    }
    return testing::AssertionSuccess();
}

} // namespace

// Replaces the C library's function for the whole program, including the library.
extern "C" ssize_t sendto(int fd, const void *bytes, std::size_t length, int flags,
                          const sockaddr *address, socklen_t addressLength) {
    sockaddr_in ipv4{};
    std::memcpy(&ipv4, address, std::min<std::size_t>(addressLength, sizeof ipv4));
    {
        const std::lock_guard lock(attemptsMutex);
        attempts.push_back(Clock::now());
        const auto *from = static_cast<const std::uint8_t *>(bytes);
        lastTried.assign(from, from + length);
    }
    if (refusedAddress != nobody && ipv4.sin_addr.s_addr == refusedAddress) {
        errno = ENOBUFS;
        return -1;
    }
    return syscall(SYS_sendto, fd, bytes, length, flags, address, addressLength);
}

namespace {

class Queue : public test::FaultRun {};

// No frame is sent twice, no frame for another light is lost, and the first frame after the queue
// has room shows the current screen.
TEST_F(Queue, ThatIsFullCostsItsOwnFramesOnly) {
    screen.fill(0xff0000);
    test::LightSetup other = light;
    other.ip = "127.0.62.2";
    test::LightReceiver otherReceiver(other.ip, 60221);
    start(test::documentOf(test::displayIDs().at(0), 0, {light, other}));
    ASSERT_TRUE(showsPlain(0xff0000));

    refusedAddress = htonl(0x7f003e01); // the first light's
    screen.fill(0x00ff00);
    const auto green = test::matchDatagram(other, test::plain(100, 100, 0x00ff00));
    ASSERT_TRUE(test::arrives(otherReceiver, green));
    const auto begin = Clock::now();
    ASSERT_TRUE(awaitAttempts(20));
    const auto tried = attemptsSince(begin);
    EXPECT_GE(tried.back() - tried.front(), 8 * 42ms); // two lights: ten frames
    receiver.drain();
    EXPECT_FALSE(receiver.next(200ms));
    otherReceiver.drain();
    EXPECT_EQ(otherReceiver.next(), green);
    refusedAddress = nobody;
    EXPECT_EQ(receiver.next(), plainDatagram(0x00ff00));
}

// Two network namespaces joined by a virtual cable: the library is in `here`, the light in `there`.
// Child processes inherit the namespace of their thread. The X server is started before that: a
// server looks for a free display number only in its own namespace, and would take the number of
// another test's server.
class Network : public test::FaultRun {
protected:
    void SetUp() override {
        home = namespaceOfThisThread();
        if (unshare(CLONE_NEWNET) != 0)
            GTEST_SKIP() << "**** SKIPPED: THE NETWORK CANNOT BE TAKEN AWAY WITHOUT ROOT ****";
        here = namespaceOfThisThread();
        // Root of a user namespace has no way back to a network outside of it.
        if (setns(home, CLONE_NEWNET) != 0)
            ASSERT_EQ(dup2(here, home), home);
        ASSERT_EQ(unshare(CLONE_NEWNET), 0);
        there = namespaceOfThisThread();
        ASSERT_EQ(setns(here, CLONE_NEWNET), 0);
        screen.run({"ip", "link", "add", "mirror0", "type", "veth", "peer", "name", "light0",
                    "netns", "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(there)});
        screen.run({"ip", "address", "add", "192.0.2.1/24", "dev", "mirror0"});
        hereControl = socket(AF_INET, SOCK_DGRAM, 0);
        ASSERT_EQ(setns(there, CLONE_NEWNET), 0);
        screen.run({"ip", "address", "add", "192.0.2.2/24", "dev", "light0"});
        thereControl = socket(AF_INET, SOCK_DGRAM, 0);
        switchLink(thereControl, "light0", true);
        far.emplace("192.0.2.2", 60221);
        ASSERT_EQ(setns(here, CLONE_NEWNET), 0);
        switchLink(hereControl, "mirror0", true);
        light.ip = "192.0.2.2";
    }
    void TearDown() override {
        FaultRun::TearDown();
        if (home >= 0)
            EXPECT_EQ(setns(home, CLONE_NEWNET), 0);
        for (const int fd : {home, here, there, hereControl, thereControl})
            if (fd >= 0)
                close(fd);
    }

    static int namespaceOfThisThread() { return open("/proc/thread-self/ns/net", O_RDONLY); }

    static void switchLink(int control, const char *name, bool on) {
        ifreq request{};
        std::strncpy(request.ifr_name, name, IFNAMSIZ - 1);
        ASSERT_EQ(ioctl(control, SIOCGIFFLAGS, &request), 0);
        request.ifr_flags =
            static_cast<short>(on ? request.ifr_flags | IFF_UP : request.ifr_flags & ~IFF_UP);
        ASSERT_EQ(ioctl(control, SIOCSIFFLAGS, &request), 0);
    }

    int home = -1, here = -1, there = -1;
    int hereControl = -1, thereControl = -1;
    std::optional<test::LightReceiver> far;
};

TEST_F(Network, GoneAndBackLosesNoFrameAfterItsReturn) {
    screen.fill(0xff0000);
    start();
    ASSERT_TRUE(far->next());
    std::vector<double> delays;
    std::vector<double> onTheWay;
    std::uint32_t colour = 0x102030;
    const int rounds = test::fullFaults() ? 100 : 9;
    for (int round = 0; round < rounds; ++round) {
        switchLink(hereControl, "mirror0", false);
        far->drain();
        screen.fill(colour);
        // Sending continues, although nothing is received.
        ASSERT_TRUE(awaitAttempts(6, plainDatagram(colour)));
        EXPECT_FALSE(far->next(0ms));
        switchLink(hereControl, "mirror0", true);
        const auto back = Clock::now();
        const auto backByStamp = std::chrono::system_clock::now();
        EXPECT_EQ(far->next(), plainDatagram(colour));
        // The stamp does not depend on when this thread reads the datagram.
        using Milliseconds = std::chrono::duration<double, std::milli>;
        delays.push_back(Milliseconds(far->arrival() - backByStamp).count());
        const auto since = attemptsSince(back);
        if (!since.empty()) // otherwise it was sent just before this thread read the clock
            onTheWay.push_back(delays.back() - Milliseconds(since[0] - back).count());

        // Every datagram from the first attempt on must arrive.
        ASSERT_TRUE(awaitAttempts(3));
        std::size_t arrived = 1;
        const std::size_t made = attemptsSince(back).size();
        while (arrived < made && far->next(1s))
            ++arrived;
        EXPECT_GE(arrived, made) << round;
        colour += 0x0b0d11;
    }
    std::sort(delays.begin(), delays.end());
    const double median = delays[delays.size() / 2];
    std::sort(onTheWay.begin(), onTheWay.end());
    ASSERT_FALSE(onTheWay.empty());
    EXPECT_LE(onTheWay[onTheWay.size() / 2], 8); // milliseconds: the very first attempt arrives
    test::printMeasurement("network back: first datagram after " + std::to_string(median) +
                           " ms in the median, " + std::to_string(delays.back()) +
                           " ms at most, of " + std::to_string(rounds) + " times");
}

} // namespace
