#include "tests/support/lightReceiver.h"
#include "tools/lights/address.h"
#include "tools/wall/receiver.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace panelwall;

TEST(PanelwallDroppedDatagrams, AreThoseThatFoundTheQueueFull) {
    EXPECT_EQ(droppedDatagrams(-1), std::nullopt);
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const auto endpoint = lights::parseEndpoint("127.0.71.20", 60222);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr *>(&endpoint->address), endpoint->length),
              0);
    EXPECT_EQ(droppedDatagrams(fd), 0u);
    const int small = 1;
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    for (int i = 0; i < 20; ++i)
        test::sendTo("127.0.71.20", 60222, std::vector<std::uint8_t>(1000, 1));
    std::size_t kept = 0;
    char bytes[1000];
    while (recv(fd, bytes, sizeof bytes, MSG_DONTWAIT) > 0)
        ++kept;
    EXPECT_LT(kept, 20u);
    EXPECT_EQ(droppedDatagrams(fd), 20 - kept);
    close(fd);
}
