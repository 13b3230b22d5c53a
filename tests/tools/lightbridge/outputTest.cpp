// One output and a receiver on this machine. Times are made up, except where packets travel.
#include "tools/lightbridge/output.h"
#include "tests/support/expectations.h"
#include "tests/tools/lightbridge/packets.h"

#include <gtest/gtest.h>
#include <memory>

using namespace std::chrono_literals;
using namespace test;
using config::Protocol;
using lightbridge::Clock;
using lightbridge::Colour;
using lightbridge::Output;

namespace {

using Panels = std::vector<Colour>;

const Clock::time_point start{std::chrono::hours(5)};

config::OutputEntry entryFor(const LightReceiver &light, Protocol protocol = Protocol::Ddp) {
    config::OutputEntry entry;
    entry.protocol = protocol;
    entry.ip = "127.0.47.1";
    entry.port = light.port();
    return entry;
}

class LightbridgeOutput : public testing::Test {
protected:
    // The pixels of the next DDP packet; none if nothing has arrived.
    Datagram next() {
        const auto packet = light.next(0ms);
        return packet ? part(*packet, 10, packet->size() - 10) : Datagram();
    }

    LightReceiver light{"127.0.47.1", 0};
};

} // namespace

TEST_F(LightbridgeOutput, SendsWhatIsNewAtOnceAndTheRestOnceASecond) {
    Output output(entryFor(light), {});
    output.show(Panels{{1, 2, 3}, {4, 5, 6}}, start);
    EXPECT_EQ(next(), bytes("01 02 03 04 05 06"));
    output.show(Panels{{1, 2, 3}, {4, 5, 6}}, start + 20ms);
    EXPECT_EQ(next(), Datagram());
    output.show(Panels{{1, 2, 3}, {4, 5, 7}}, start + 40ms);
    EXPECT_EQ(next(), bytes("01 02 03 04 05 07"));
    EXPECT_LE(output.repeatDue(), start + 40ms + 1s);
    output.show(Panels{{1, 2, 3}, {4, 5, 7}}, output.repeatDue() - 1ms);
    EXPECT_EQ(next(), Datagram());
    output.show(Panels{{1, 2, 3}, {4, 5, 7}}, output.repeatDue());
    EXPECT_EQ(next(), bytes("01 02 03 04 05 07"));
    EXPECT_EQ(output.frames(), 3u);
    EXPECT_EQ(output.packets(), 3u);
    EXPECT_EQ(output.failures(), 0u);
}

TEST_F(LightbridgeOutput, SmoothsChanges) {
    config::OutputEntry entry = entryFor(light);
    entry.smoothing = 100;
    Output output(entry, {});
    auto now = start;
    output.show(Panels{{0, 0, 0}}, now);
    EXPECT_FALSE(output.isSmoothing());
    EXPECT_EQ(next(), bytes("00 00 00"));

    // After a long pause the change begins slowly all the same.
    now += 10s;
    output.show(Panels{{200, 0, 0}}, now);
    EXPECT_TRUE(output.isSmoothing());
    EXPECT_LT(next().at(0), 50);
    std::uint8_t last = 0;
    for (int i = 1; i < 5; ++i) {
        output.show(Panels{{200, 0, 0}}, now += 20ms);
        const std::uint8_t red = next().at(0);
        EXPECT_GT(red, last);
        last = red;
    }
    EXPECT_NEAR(last, 126, 2); // 1 - 1/e of it
    for (int i = 0; i < 100 && output.isSmoothing(); ++i)
        output.show(Panels{{200, 0, 0}}, now += 20ms);
    EXPECT_FALSE(output.isSmoothing());
    for (Datagram packet = next(); !packet.empty(); packet = next())
        last = packet[0];
    EXPECT_EQ(last, 200);
    output.finish(Panels{{0, 0, 0}}, false, now);
    EXPECT_EQ(next(), bytes("00 00 00"));
}

TEST_F(LightbridgeOutput, EndsAnE131Stream) {
    Output output(entryFor(light, Protocol::E131), lightbridge::senderFor("a"));
    output.show(Panels{{1, 2, 3}}, start);
    output.finish(Panels{{0, 0, 0}}, false, start + 20ms);
    for (int i = 2; i < 5; ++i)
        output.finish(Panels{{0, 0, 0}}, true, start + i * 20ms);
    for (int i = 0; i < 5; ++i) {
        const auto packet = light.next();
        ASSERT_TRUE(packet && packet->size() == 132);
        EXPECT_EQ((*packet)[111], i);
        EXPECT_EQ((*packet)[112], i < 2 ? 0 : 0x40);
        EXPECT_EQ(part(*packet, 126, 3), i == 0 ? bytes("01 02 03") : bytes("00 00 00"));
    }
}

TEST_F(LightbridgeOutput, FindsAReceiverAgain) {
    const config::OutputEntry entry = entryFor(light);
    auto gone = std::make_unique<LightReceiver>("127.0.47.2", entry.port);
    config::OutputEntry other = entry;
    other.ip = "127.0.47.2";
    Output output(other, {});
    output.show(Panels{{1, 2, 3}}, start);
    EXPECT_TRUE(gone->next());
    EXPECT_EQ(output.news(start), "");

    // The system reports the refusal with the next packet.
    gone.reset();
    output.show(Panels{{2, 2, 3}}, start + 1s);
    output.show(Panels{{3, 2, 3}}, start + 2s);
    EXPECT_EQ(output.news(start + 2s),
              "cannot be reached: Connection refused; check its address and that it is switched "
              "on; each frame is tried again");
    output.show(Panels{{4, 2, 3}}, start + 3s);
    EXPECT_EQ(output.news(start + 3s), "");

    gone = std::make_unique<LightReceiver>("127.0.47.2", entry.port);
    output.show(Panels{{5, 2, 3}}, start + 4s);
    EXPECT_EQ(gone->next().value(), bytes("41 05 0b 01 00 00 00 00 00 03 05 02 03"));
    for (int i = 5; i < 10; ++i) {
        output.show(Panels{{6, 2, 3}}, start + i * 1s);
        EXPECT_EQ(output.news(start + i * 1s), i < 9 ? "" : "can be reached again") << i;
    }
    EXPECT_EQ(output.news(start + 20s), "");
}

TEST_F(LightbridgeOutput, WithoutItsInterfaceSendsNothing) {
    config::OutputEntry entry = entryFor(light, Protocol::E131);
    entry.ip = "multicast";
    entry.interface = "192.0.2.1"; // an address for documents, which this machine does not have
    Output output(entry, {});
    output.show(Panels{{1, 2, 3}}, start);
    EXPECT_EQ(output.failures(), 1u);
    EXPECT_TRUE(contains(output.news(start), "cannot be reached: "));
}

TEST_F(LightbridgeOutput, MulticastsEachUniverseToItsGroup) {
    config::OutputEntry entry = entryFor(light, Protocol::E131);
    entry.ip = "multicast";
    entry.interface = "127.0.0.1";
    entry.universe = 0x1234;
    LightReceiver group("239.255.18.53", entry.port);
    group.join("127.0.0.1");
    Output output(entry, {});
    output.show(Panels(171, Colour{1, 2, 3}), start);
    EXPECT_EQ(output.failures(), 0u);
    const auto packet = group.next();
    ASSERT_TRUE(packet);
    EXPECT_EQ(part(*packet, 113, 2), bytes("12 35"));
}

TEST(LightbridgeSender, IsTheSameForTheSameText) {
    const auto id = lightbridge::senderFor("a host").id;
    EXPECT_EQ(lightbridge::senderFor("a host").id, id);
    EXPECT_NE(lightbridge::senderFor("another host").id, id);
    EXPECT_EQ(id[6] >> 4, 8);
    EXPECT_EQ(id[8] >> 6, 2);
}
