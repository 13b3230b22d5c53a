// Tests the library's sockets with the shims from both sides: the memory layout of macOS, and this
// system's descriptors.
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/test/macSocket.h"
#include "tests/support/lightReceiver.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <netinet/in.h>

namespace macho {

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using Bytes = std::vector<std::uint8_t>;

Bytes firstBytes(const std::uint8_t *bytes, std::size_t count) {
    return Bytes(bytes, bytes + count);
}

int optionOf(int fd, int option) {
    int value = 0;
    socklen_t length = sizeof value;
    EXPECT_EQ(getsockopt(fd, SOL_SOCKET, option, &value, &length), 0);
    return value;
}

int boundPort(int fd) {
    sockaddr_in6 address = {};
    socklen_t length = sizeof address;
    EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr *>(&address), &length), 0);
    return ntohs(address.sin6_port); // at the same place in both families
}

TEST_F(SocketTest, SendsOverIpv4) {
    test::LightReceiver light("127.0.61.2", 0);
    Socket socket(*this);
    EXPECT_TRUE(socket->connected);
    EXPECT_EQ(optionOf(socket->fd, SO_DOMAIN), AF_INET);
    EXPECT_EQ(optionOf(socket->fd, SO_TYPE), SOCK_DGRAM);
    EXPECT_EQ(socket.setRemote("127.0.61.2", light.port()), 1);
    const auto port = static_cast<std::uint16_t>(light.port());
    EXPECT_EQ(firstBytes(socket->remote, 8),
              (Bytes{0, 2, static_cast<std::uint8_t>(port >> 8), static_cast<std::uint8_t>(port),
                     127, 0, 61, 2}));
    EXPECT_EQ(socket.send("abc"), 3);
    EXPECT_EQ(light.next(), (test::Datagram{'a', 'b', 'c'}));
}

TEST_F(SocketTest, SendsOverIpv6) {
    test::LightReceiver light("::1", 0);
    Socket socket(*this);
    EXPECT_EQ(socket.setRemote("::1", light.port()), 1);
    EXPECT_EQ(optionOf(socket->fd, SO_DOMAIN), AF_INET6);
    EXPECT_EQ(socket->remote[0], 0);
    EXPECT_EQ(socket->remote[1], 30);
    EXPECT_EQ(socket->remote[8 + 15], 1);
    EXPECT_EQ(socket.send("abc"), 3);
    EXPECT_EQ(light.next(), (test::Datagram{'a', 'b', 'c'}));
}

TEST_F(SocketTest, RefusesToSendToNowhere) {
    Socket socket(*this);
    EXPECT_EQ(socket.setRemote("not an address", 60221), 0);
    Socket six(*this);
    EXPECT_EQ(six.setRemote("not:an:address", 60221), 0);
}

TEST_F(SocketTest, BindsOnceTheRemoteFamilyIsKnown) {
    Socket socket(*this);
    socket.setRemote("127.0.0.1", 1);
    EXPECT_EQ(socket.bindTo("127.0.61.3", 60231), 0);
    EXPECT_EQ(boundPort(socket->fd), 60231);
    EXPECT_EQ(socket.getPort(), 60231);
    EXPECT_EQ(firstBytes(socket->local, 2), (Bytes{0, 2}));
    EXPECT_EQ(optionOf(socket->fd, SO_BROADCAST), 1);
    Socket six(*this, "::1", 60232);
    EXPECT_EQ(six->family, 30);
    EXPECT_EQ(boundPort(six->fd), 60232);
}

TEST_F(SocketTest, BindingFailsInTheWordsOfMacOS) {
    const std::string says = "cannot bind socket : ";
    CaptureStdout();
    Socket unknown(*this, "127.0.61.3", 60231); // passes 28 bytes for an address of 16
    EXPECT_TRUE(unknown->connected);
    Socket foreign(*this);
    foreign.setRemote("127.0.0.1", 1);
    EXPECT_EQ(foreign.bindTo("192.0.2.1", 60231), -1);
    Socket first(*this);
    first.setRemote("127.0.0.1", 1);
    EXPECT_EQ(first.bindTo("127.0.61.3", 60231), 0);
    EXPECT_EQ(first.bindTo("127.0.61.3", 60233), -1);
    Socket second(*this);
    second.setRemote("127.0.0.1", 1);
    EXPECT_EQ(second.bindTo("127.0.61.3", 60231), -1);
    EXPECT_EQ(GetCapturedStdout(), says + "Invalid argument\n" + says +
                                       "Can't assign requested address\n" + says +
                                       "Invalid argument\n" + says + "Address already in use\n");
}

TEST_F(SocketTest, ReceivesAndAnswersTheSender) {
    for (const std::string ip : {"127.0.61.4", "::1"}) {
        Socket asking(*this);
        asking.setRemote(ip, 60234);
        Socket answering(*this);
        answering.setRemote(ip, 1);
        ASSERT_EQ(answering.bindTo(ip, 60234), 0);
        ASSERT_EQ(asking.send("question"), 8);
        EXPECT_EQ(answering.receive(), "question");
        const bool six = ip == "::1";
        EXPECT_EQ(firstBytes(answering->remote, 2), (six ? Bytes{28, 30} : Bytes{16, 2}));
        EXPECT_EQ(answering.send("answer"), 6);
        EXPECT_EQ(asking.receive(), "answer");
    }
}

TEST_F(SocketTest, WaitsAsLongAsTheTimeoutSays) {
    Socket socket(*this);
    EXPECT_EQ(socket.setTimeout(1500), 0);
    EXPECT_EQ(socket->timeoutSeconds, 1);
    EXPECT_EQ(socket->timeoutMicroseconds, 500000);
    timeval host = {};
    socklen_t length = sizeof host;
    EXPECT_EQ(getsockopt(socket->fd, SOL_SOCKET, SO_RCVTIMEO, &host, &length), 0);
    EXPECT_EQ(host.tv_sec, 1);
    EXPECT_EQ(host.tv_usec, 500000);
    EXPECT_EQ(socket.setTimeout(-1500), 0); // the system refuses this value
    EXPECT_EQ(socket->timeoutSeconds, -1);
    EXPECT_EQ(socket->timeoutMicroseconds, -500000);
    EXPECT_EQ(*darwinErrno(), 33);
    EXPECT_EQ(socket.setTimeout(20), 0);
    EXPECT_EQ(socket.receive(), "-1");
    EXPECT_EQ(*darwinErrno(), 35);
}

TEST_F(SocketTest, BecomesNonBlockingUnlessItIsConnected) {
    Socket socket(*this);
    CaptureStdout();
    EXPECT_EQ(socket.enableNonBlockingMode(), -1);
    socket->connected = false;
    EXPECT_EQ(socket.enableNonBlockingMode(), 0);
    EXPECT_EQ(GetCapturedStdout(), "Socket is already connected, cannot make changes now\n");
    EXPECT_EQ(fcntl(socket->fd, F_GETFL) & O_NONBLOCK, O_NONBLOCK);
    socket->connected = true;
    EXPECT_EQ(socket.receive(), "-1");
    EXPECT_EQ(*darwinErrno(), 35);
}

TEST_F(SocketTest, FindsTheMachinesAddresses) {
    std::string lastIpv6;
    std::string firstIpv4;
    ifaddrs *list = nullptr;
    ASSERT_EQ(getifaddrs(&list), 0);
    for (const ifaddrs *entry = list; entry != nullptr; entry = entry->ifa_next) {
        char text[INET6_ADDRSTRLEN] = "";
        if (entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET6) {
            inet_ntop(AF_INET6, &reinterpret_cast<sockaddr_in6 *>(entry->ifa_addr)->sin6_addr, text,
                      sizeof text);
            lastIpv6 = text;
        } else if (entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET) {
            inet_ntop(AF_INET, &reinterpret_cast<sockaddr_in *>(entry->ifa_addr)->sin_addr, text,
                      sizeof text);
            if (firstIpv4.empty() && std::string(text) != "127.0.0.1")
                firstIpv4 = text;
        }
    }
    freeifaddrs(list);
    Socket socket(*this);
    CaptureStdout();
    EXPECT_EQ(socket.getLocalIp(), firstIpv4);
    EXPECT_EQ(socket.getLocalIpv6(), lastIpv6);
    // The loopback interface is called lo0 on macOS.
    EXPECT_EQ(GetCapturedStdout().rfind("'lo0': \nip : 2130706433\n", 0), 0u);
}

} // namespace

} // namespace macho
