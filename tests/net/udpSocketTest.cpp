#include "net/udpSocket.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/noDescriptors.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

sockaddr_in ipv4Of(const sockaddr_storage &address) {
    sockaddr_in result;
    std::memcpy(&result, &address, sizeof result);
    return result;
}

sockaddr_in6 ipv6Of(const sockaddr_storage &address) {
    sockaddr_in6 result;
    std::memcpy(&result, &address, sizeof result);
    return result;
}

bool isOpen(int fd) {
    return fcntl(fd, F_GETFD) != -1;
}

int optionOf(int fd, int option) {
    int value = 0;
    socklen_t length = sizeof value;
    getsockopt(fd, SOL_SOCKET, option, &value, &length);
    return value;
}

int boundPort(const UdpSocket &socket) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    getsockname(socket.socketFd, reinterpret_cast<sockaddr *>(&address), &length);
    return ntohs(address.sin_port);
}

TEST(UdpSocket, FamilyFollowsTheColon) {
    UdpSocket socket;
    EXPECT_EQ(socket.getSinFamilyFromIp("10.0.0.5"), AF_INET);
    EXPECT_EQ(socket.getSinFamilyFromIp(""), AF_INET);
    EXPECT_EQ(socket.getSinFamilyFromIp("fe80::1"), AF_INET6);
    EXPECT_EQ(socket.getSinFamilyFromIp("::1"), AF_INET6);
    EXPECT_EQ(socket.getSinFamilyFromIp("10.0.0.5:60222"), AF_INET6);
}

TEST(UdpSocket, DefaultConstructorOpensIpv4) {
    int fd;
    {
        UdpSocket socket;
        fd = socket.socketFd;
        EXPECT_TRUE(socket.connected);
        EXPECT_EQ(socket.port, 0);
        EXPECT_EQ(socket.getIpAddr(), "");
        EXPECT_EQ(socket.spareIpAddr, "");
        EXPECT_EQ(socket.timeout.tv_sec, 0);
        EXPECT_EQ(socket.timeout.tv_usec, 0);
        EXPECT_EQ(optionOf(fd, SO_DOMAIN), AF_INET);
        EXPECT_EQ(optionOf(fd, SO_TYPE), SOCK_DGRAM);
    }
    EXPECT_FALSE(isOpen(fd));
}

TEST(UdpSocket, SendsOverIpv4) {
    test::LightReceiver light("127.0.50.1", 0);
    UdpSocket socket;
    EXPECT_EQ(socket.setRemote("127.0.50.1", light.port()), 1);
    char bytes[] = {1, 2, 3};
    EXPECT_EQ(socket.send(bytes, 3), 3);
    EXPECT_EQ(light.next(), (test::Datagram{1, 2, 3}));
}

TEST(UdpSocket, Ipv6TakesANewDescriptorAndKeepsTheOld) {
    test::LightReceiver light("::1", 0);
    UdpSocket socket;
    const int before = socket.socketFd;
    EXPECT_EQ(socket.setRemote("::1", light.port()), 1);
    EXPECT_NE(socket.socketFd, before);
    EXPECT_TRUE(isOpen(before));
    EXPECT_EQ(socket.remoteAddr.ss_family, AF_INET6);
    char bytes[] = {9};
    EXPECT_EQ(socket.send(bytes, 1), 1);
    EXPECT_EQ(light.next(), (test::Datagram{9}));
    close(before);
}

TEST(UdpSocket, SetRemoteWritesOnlyFamilyPortAndAddress) {
    UdpSocket socket;
    std::memset(&socket.remoteAddr, 0x5a, sizeof socket.remoteAddr);
    EXPECT_EQ(socket.setRemote("10.1.2.3", 60221), 1);
    const auto *bytes = reinterpret_cast<const unsigned char *>(&socket.remoteAddr);
    EXPECT_EQ(ipv4Of(socket.remoteAddr).sin_port, htons(60221));
    EXPECT_EQ(ipv4Of(socket.remoteAddr).sin_addr.s_addr, inet_addr("10.1.2.3"));
    for (std::size_t i = 8; i < sizeof socket.remoteAddr; ++i)
        EXPECT_EQ(bytes[i], 0x5a) << i;

    const int first = socket.socketFd;
    EXPECT_EQ(socket.setRemote("fe80::2", 60222), 1);
    EXPECT_EQ(ipv6Of(socket.remoteAddr).sin6_flowinfo, inet_addr("10.1.2.3"));
    EXPECT_EQ(ipv6Of(socket.remoteAddr).sin6_scope_id, 0x5a5a5a5au);
    close(first);
}

TEST(UdpSocket, SetRemoteTellsAnAddressFromNone) {
    UdpSocket socket;
    EXPECT_EQ(socket.setRemote("nonsense", 60222), 0);
    EXPECT_EQ(socket.setRemote("", 60222), 0);
    const int first = socket.socketFd;
    EXPECT_EQ(socket.setRemote("10.0.0.5:60222", 60222), 0);
    EXPECT_NE(socket.socketFd, first); // it made an IPv6 socket nevertheless
    close(first);
}

TEST(UdpSocket, TwoArgumentConstructorBinds) {
    const int port = test::LightReceiver("127.0.50.2", 0).port(); // free again
    UdpSocket socket("127.0.50.2", port);
    EXPECT_TRUE(socket.connected);
    EXPECT_EQ(socket.getIpAddr(), "127.0.50.2");
    EXPECT_EQ(socket.port, port);
    EXPECT_EQ(socket.sinFamily, AF_INET);
    EXPECT_EQ(socket.getPort(), port);
    EXPECT_EQ(boundPort(socket), port);
    EXPECT_NE(optionOf(socket.socketFd, SO_BROADCAST), 0);
}

TEST(UdpSocket, TwoArgumentConstructorBindsIpv6) {
    UdpSocket socket("::1", 0);
    EXPECT_EQ(socket.sinFamily, AF_INET6);
    EXPECT_EQ(socket.localAddr.ss_family, AF_INET6);
    EXPECT_NE(boundPort(socket), 0);
}

TEST(UdpSocket, BindsToThePortOfTheDocument) {
    UdpSocket socket;
    EXPECT_EQ(socket.bindTo("127.0.50.3", 60221), 0);
    EXPECT_EQ(socket.getPort(), 60221);
}

TEST(UdpSocket, BindAfterAnIpv4RemoteStillBinds) {
    UdpSocket socket;
    socket.setRemote("127.0.0.1", 9);
    EXPECT_EQ(socket.bindTo("127.0.50.4", 0), 0);
}

// The length of the remote's IPv4 address is too short for the IPv6 address to bind.
TEST(UdpSocket, BindTakesTheLengthOfTheRemotesFamily) {
    UdpSocket socket;
    const int first = socket.socketFd;
    socket.setRemote("::1", 9);
    close(first);
    socket.setRemote("127.0.0.1", 9);
    CaptureStdout();
    EXPECT_EQ(socket.bindTo("::1", 0), -1);
    EXPECT_EQ(GetCapturedStdout(),
              std::string("cannot bind socket : ") + std::strerror(EINVAL) + "\n");
    EXPECT_EQ(boundPort(socket), 0);
}

TEST(UdpSocket, FailedBindSaysWhyAndStaysConnected) {
    test::LightReceiver taken("127.0.50.5", 0);
    CaptureStdout();
    UdpSocket socket("127.0.50.5", taken.port());
    const std::string expected =
        std::string("cannot bind socket : ") + std::strerror(EADDRINUSE) + "\n";
    EXPECT_EQ(GetCapturedStdout(), expected);
    EXPECT_TRUE(socket.connected);
    CaptureStdout();
    EXPECT_EQ(socket.bindTo("127.0.50.5", taken.port()), -1);
    EXPECT_EQ(GetCapturedStdout(), expected);
    EXPECT_EQ(socket.getPort(), taken.port());
}

TEST(UdpSocket, ReceiveAnswersTheSender) {
    UdpSocket light("127.0.50.6", 0);
    UdpSocket host;
    host.setRemote("127.0.50.6", boundPort(light));
    char bytes[] = "ping";
    ASSERT_EQ(host.send(bytes, 4), 4);
    char got[16];
    ASSERT_EQ(light.receive(got, sizeof got), 4);
    EXPECT_EQ(std::string(got, 4), "ping");
    EXPECT_EQ(light.remoteAddr.ss_family, AF_INET);
    char answer[] = "pong!";
    EXPECT_EQ(light.send(answer, 5), 5);
    EXPECT_EQ(host.receive(got, sizeof got), 5);
    EXPECT_EQ(std::string(got, 5), "pong!");
}

TEST(UdpSocket, TimeoutSplitsTowardsZero) {
    UdpSocket socket("127.0.50.7", 0);
    EXPECT_EQ(socket.setTimeout(1500), 0);
    EXPECT_EQ(socket.timeout.tv_sec, 1);
    EXPECT_EQ(socket.timeout.tv_usec, 500000);
    EXPECT_EQ(socket.setTimeout(-1500), 0);
    EXPECT_EQ(socket.timeout.tv_sec, -1);
    EXPECT_EQ(socket.timeout.tv_usec, -500000);
    EXPECT_EQ(socket.setTimeout(20), 0);
    char got[4];
    EXPECT_EQ(socket.receive(got, sizeof got), -1);
}

TEST(UdpSocket, NonBlockingModeIsRefusedOnAnOpenSocket) {
    UdpSocket socket;
    fcntl(socket.socketFd, F_SETFL, O_APPEND);
    const int flags = fcntl(socket.socketFd, F_GETFL);
    ASSERT_NE(flags & O_APPEND, 0);
    CaptureStdout();
    EXPECT_EQ(socket.enableNonBlockingMode(), -1);
    EXPECT_EQ(GetCapturedStdout(), "Socket is already connected, cannot make changes now\n");
    EXPECT_EQ(fcntl(socket.socketFd, F_GETFL), flags);

    socket.connected = false;
    EXPECT_EQ(socket.enableNonBlockingMode(), 0);
    EXPECT_EQ(fcntl(socket.socketFd, F_GETFL), O_RDWR | O_NONBLOCK); // and no other flags
}

TEST(UdpSocket, WithoutADescriptorEveryTransferFails) {
    CaptureStdout();
    {
        const test::NoDescriptors none;
        UdpSocket socket;
        EXPECT_LT(socket.socketFd, 0);
        EXPECT_FALSE(socket.connected);
        char byte = 0;
        EXPECT_EQ(socket.send(&byte, 1), -1);
        EXPECT_EQ(socket.receive(&byte, 1), -1);
        EXPECT_EQ(socket.enableNonBlockingMode(), -1);
        UdpSocket bound("127.0.50.8", 0);
        EXPECT_FALSE(bound.connected);
        EXPECT_EQ(bound.getIpAddr(), "127.0.50.8");
    }
    EXPECT_EQ(GetCapturedStdout(), "cannot open socket\n"
                                   "socket not connected\n"
                                   "socket not connected\n"
                                   "Error while setting socket non blocking\n"
                                   "cannot open socket\n");
}

TEST(UdpSocket, SendFailureIsSilent) {
    UdpSocket socket;
    socket.setRemote("127.0.0.1", 9);
    std::vector<char> tooLong(70000);
    CaptureStdout();
    EXPECT_EQ(socket.send(tooLong.data(), static_cast<int>(tooLong.size())), -1);
    EXPECT_EQ(GetCapturedStdout(), "");
}

} // namespace
