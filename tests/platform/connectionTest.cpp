// Servers that accept a client only at the second attempt, or never, reached locally and over TCP.
#include "platform/x11/connection.h"
#include "platform/objects/signals.h"
#include "platform/x11/handshake.h"
#include "platform/x11/monitors.h"

#include "tests/platform/processUsage.h"
#include "tests/support/virtualScreen.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using platform::Descriptor;
using platform::x11::Connection;
using test::VirtualScreen;

namespace {

// A peer that hangs up during a request raises SIGPIPE, which must not end the tests.
const platform::SigpipeGuard guard;

// Sets an environment variable for the lifetime of the object.
class Variable {
public:
    Variable(const char *name, const std::string &value) : name(name) {
        setenv(name, value.c_str(), 1);
    }
    ~Variable() { unsetenv(name); }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *name;
};

// An authority file with one cookie, valid for every server.
class AuthorityFile {
public:
    AuthorityFile() {
        std::ofstream file(path, std::ios::binary);
        const auto append = [&file](const std::string &text) {
            file.put(static_cast<char>(text.size() >> 8)).put(static_cast<char>(text.size()));
            file << text;
        };
        file << "\xff\xff"; // any family
        append("");         // any address
        append("");         // any display
        append("MIT-MAGIC-COOKIE-1");
        append("sixteen letters.");
    }
    ~AuthorityFile() { std::remove(path.c_str()); }
    AuthorityFile(const AuthorityFile &) = delete;
    AuthorityFile &operator=(const AuthorityFile &) = delete;

    const std::string path =
        testing::TempDir() + "connectionTest." + std::to_string(getpid()) + ".authority";
};

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// Accepts connections on a free port and passes each to `onConnection`.
class Listener {
public:
    explicit Listener(std::function<void(Descriptor)> onConnection) {
        sockaddr_in address = loopback(0);
        socklen_t length = sizeof address;
        if (bind(fd.get(), reinterpret_cast<sockaddr *>(&address), length) != 0 ||
            listen(fd.get(), 16) != 0 ||
            getsockname(fd.get(), reinterpret_cast<sockaddr *>(&address), &length) != 0)
            ADD_FAILURE() << "no port";
        display = "127.0.0.1:" + std::to_string(ntohs(address.sin_port) - 6000);
        thread = std::thread([this, onConnection] {
            for (;;) {
                Descriptor connection(accept(fd.get(), nullptr, nullptr));
                if (!connection.valid())
                    return;
                onConnection(std::move(connection));
            }
        });
    }
    ~Listener() {
        shutdown(fd.get(), SHUT_RDWR);
        thread.join();
    }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    std::string display;

private:
    Descriptor fd{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::thread thread;
};

// Forwards bytes in both directions until one side ends, the server's with a delay.
void relay(int client, int server, std::chrono::milliseconds delay) {
    pollfd ends[] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
    while (poll(ends, 2, -1) > 0)
        for (const pollfd &end : ends) {
            if (end.revents == 0)
                continue;
            if (end.fd == server)
                std::this_thread::sleep_for(delay);
            char bytes[65536];
            const ssize_t size = recv(end.fd, bytes, sizeof bytes, 0);
            const int other = end.fd == server ? client : server;
            if (size <= 0 || send(other, bytes, static_cast<std::size_t>(size), MSG_NOSIGNAL) < 0)
                return;
        }
}

bool hasIpv6Loopback() {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    const Descriptor fd(socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return fd.valid() &&
           bind(fd.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
}

// The parameter stands before the server's display name.
class Reached : public testing::TestWithParam<const char *> {};

} // namespace

// Each connection is the server's only one, so closing it resets the server.
TEST_P(Reached, AServerThatResetsLetsEveryClientIn) {
    const AuthorityFile authority;
    const Variable cookie("XAUTHORITY", authority.path);
    VirtualScreen screen(64, 48, 24, {"-reset", "-listen", "tcp", "-auth", authority.path});
    screen.disconnect();
    const Variable display("DISPLAY", GetParam() + screen.display());
    const std::size_t descriptors = test::openDescriptors();
    const std::size_t threads = test::threads();
    for (int round = 0; round < 30; ++round) {
        const auto connection = Connection::open();
        ASSERT_TRUE(connection) << "round " << round;
        EXPECT_TRUE(connection->rootArea()) << "round " << round;
    }
    EXPECT_TRUE(test::threadsBecome(threads));
    EXPECT_EQ(test::openDescriptors(), descriptors);
}

INSTANTIATE_TEST_SUITE_P(Connection, Reached, testing::Values("", "127.0.0.1"),
                         [](const testing::TestParamInfo<const char *> &info) {
                             return *info.param == '\0' ? "Locally" : "OverTcp";
                         });

TEST(Connection, ARefusalIsNotWaitedFor) {
    const AuthorityFile authority;
    for (const char *reset : {"-noreset", "-reset"}) {
        VirtualScreen screen = [&] {
            const Variable cookie("XAUTHORITY", authority.path);
            return VirtualScreen(64, 48, 24, {reset, "-auth", authority.path});
        }();
        screen.disconnect();
        screen.use();
        const Variable noCookie("XAUTHORITY", "/dev/null");
        const auto before = platform::Clock::now();
        EXPECT_FALSE(Connection::open());
        EXPECT_LT(platform::Clock::now() - before, platform::serverPatience);
    }
}

TEST(Connection, AServerThatAlwaysHangsUpCostsSecondsAndLittleWork) {
    std::atomic<int> attempts = 0;
    const Listener server([&attempts](Descriptor) { ++attempts; });
    const Variable display("DISPLAY", server.display);
    const std::size_t descriptors = test::openDescriptors();
    const auto before = platform::Clock::now();
    EXPECT_FALSE(Connection::open());
    EXPECT_LT(platform::Clock::now() - before, 2 * platform::serverPatience);
    EXPECT_GT(attempts, 2);
    EXPECT_LE(attempts, 2 + platform::serverPatience / 10ms);
    EXPECT_EQ(test::openDescriptors(), descriptors);
}

// The deadline cuts the last attempt short, so its silence says nothing about the server.
TEST(Connection, AServerThatHungUpIsNotCalledSilent) {
    Descriptor last;
    int attempts = 0;
    const Listener server([&](Descriptor client) {
        if (++attempts > 1)
            last = std::move(client);
    });
    const Variable display("DISPLAY", server.display);
    const auto handshake = platform::x11::shakeHands(platform::Clock::now() + 1s);
    EXPECT_EQ(handshake.answer, platform::x11::Answer::HangUp);
}

// All replies together take longer than the limit for one.
TEST(Connection, AServerThatAnswersSlowlyIsWaitedFor) {
    const VirtualScreen screen(64, 48, 24, {"-listen", "tcp"});
    const Listener slow([&screen](Descriptor client) {
        sockaddr_in address = loopback(6000 + std::stoi(screen.display().substr(1)));
        const Descriptor server(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(connect(server.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        relay(client.get(), server.get(), 700ms);
    });
    const Variable display("DISPLAY", slow.display);
    const auto connection = Connection::open();
    ASSERT_TRUE(connection);
    EXPECT_TRUE(platform::x11::listMonitors(*connection));
    EXPECT_TRUE(connection->rootArea());
}

TEST(Connection, AnAddressMayStandInBrackets) {
    if (!hasIpv6Loopback())
        GTEST_SKIP() << "this machine has no ::1";
    const VirtualScreen screen(64, 48, 24, {"-listen", "tcp"});
    for (const char *host : {"[::1]", "::1", "localhost"}) {
        const Variable display("DISPLAY", host + screen.display());
        EXPECT_TRUE(Connection::open()) << host;
    }
}

TEST(Connection, AScreenThatTheServerLacksIsRefused) {
    const VirtualScreen screen(64, 48);
    const Variable display("DISPLAY", screen.display() + ".1");
    EXPECT_FALSE(Connection::open());
}
