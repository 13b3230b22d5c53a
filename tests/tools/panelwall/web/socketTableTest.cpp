#include "tools/panelwall/web/socketTable.h"
#include "tests/tools/panelwall/wallSetup.h"
#include "tools/lights/loopbackAddress.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace panelwall;

static std::string textOf(const in6_addr &address) {
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(AF_INET6, &address, text, sizeof text);
    return text;
}

TEST(PanelwallSocketTable, ReadsTheKernelsLines) {
    const auto rows = readSocketTable(
        "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  "
        "timeout inode\n"
        "   0: 0100007F:1F90 0200007F:0050 01 00000000:00000000 00:00000000 00000000  1000        "
        "0 4711 1 0000000000000000 100 0 0 10 0\n"
        "nonsense\n"
        "   1: 00000000000000000000000001000000:EB3E 00000000000000000000000000000000:0000 07 "
        "00000000:00000000 00:00000000 00000000     0        0 99 2 0000000000000000 12\n");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(textOf(rows[0].localAddress), "::ffff:127.0.0.1");
    EXPECT_EQ(rows[0].localPort, 8080);
    EXPECT_EQ(textOf(rows[0].remoteAddress), "::ffff:127.0.0.2");
    EXPECT_EQ(rows[0].remotePort, 80);
    EXPECT_EQ(rows[0].state, 1);
    EXPECT_EQ(rows[0].user, 1000u);
    EXPECT_EQ(rows[0].inode, 4711u);
    EXPECT_EQ(textOf(rows[1].localAddress), "::1");
    EXPECT_EQ(rows[1].drops, 12u);
}

TEST(PanelwallSocketTable, CountsDatagramsThatFoundTheQueueFull) {
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const auto endpoint = parseEndpoint("127.0.71.20", 60222);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr *>(&endpoint->address), endpoint->length),
              0);
    EXPECT_EQ(droppedDatagrams({fd, -1}),
              (std::vector<std::optional<std::uint64_t>>{0, std::nullopt}));
    const int small = 1;
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    for (int i = 0; i < 20; ++i)
        test::sendTo("127.0.71.20", 60222, std::vector<std::uint8_t>(1000, 1));
    std::size_t kept = 0;
    char bytes[1000];
    while (recv(fd, bytes, sizeof bytes, MSG_DONTWAIT) > 0)
        ++kept;
    EXPECT_LT(kept, 20u);
    EXPECT_EQ(droppedDatagrams({fd})[0], 20 - kept);
    close(fd);
}

TEST(PanelwallSocketTable, OnlyAnOpenEndTellsItsUser) {
    const auto rows = readSocketTable(
        "head\n"
        "   0: 0100007F:1F90 0100007F:1F7C 01 00000000:00000000 00:00000000 00000000  1000        "
        "0 1 1 0 100\n"
        "   1: 0100007F:1F91 0100007F:1F7C 06 00000000:00000000 00:00000000 00000000     0        "
        "0 0 1 0 100\n");
    const auto wall = parseEndpoint("127.0.0.1", 8060)->address;
    EXPECT_EQ(connectionUser(rows, parseEndpoint("127.0.0.1", 8080)->address, wall), 1000u);
    EXPECT_EQ(connectionUser(rows, parseEndpoint("127.0.0.1", 8081)->address, wall), std::nullopt);
    EXPECT_EQ(connectionUser(rows, parseEndpoint("127.0.0.2", 8080)->address, wall), std::nullopt);
    EXPECT_EQ(connectionUser(rows, parseEndpoint("127.0.0.1", 8080)->address,
                             parseEndpoint("127.0.0.1", 8059)->address),
              std::nullopt);
}
