// Readers that were written from the protocols' descriptions alone read what outputs and the
// program send.
#include "tests/support/panelRecords.h"
#include "tests/tools/lightbridge/bridgeSetup.h"
#include "tests/tools/lightbridge/ddpReader.h"
#include "tests/tools/lightbridge/packets.h"
#include "tests/tools/lightbridge/wledReader.h"
#include "tools/lightbridge/output.h"

using namespace std::chrono_literals;
using namespace test;
using config::Protocol;
using lightbridge::Colour;
using lightbridge::Output;

namespace {

const lightbridge::Clock::time_point start{std::chrono::hours(5)};

// Colours that differ from their neighbours', from those 480, 489 or 490 pixels away, and from
// those of the next frame.
std::vector<Colour> coloursOf(std::size_t count, std::size_t frame) {
    std::vector<Colour> colours;
    for (std::size_t i = 0; i < count; ++i)
        colours.push_back({static_cast<std::uint8_t>(i % 251 + frame),
                           static_cast<std::uint8_t>(i / 251 + 7 * frame),
                           static_cast<std::uint8_t>(i % 13 * 19)});
    return colours;
}

// A pixel with white has it in place of what its three colours have in common.
WledPixel pixelOf(Colour colour, std::size_t channels) {
    const std::uint8_t white =
        channels == 4 ? std::min({colour.red, colour.green, colour.blue}) : std::uint8_t{0};
    return {static_cast<std::uint8_t>(colour.red - white),
            static_cast<std::uint8_t>(colour.green - white),
            static_cast<std::uint8_t>(colour.blue - white), white};
}

struct Strip {
    std::size_t pixels;
    std::size_t channels;
    std::size_t first; // on the receiver
    std::size_t packets;
};

// The strip as an output of `light`.
config::OutputEntry entryFor(const LightReceiver &light, Protocol protocol, const Strip &strip) {
    config::OutputEntry entry;
    entry.protocol = protocol;
    entry.ip = "127.0.47.40";
    entry.port = light.port();
    entry.firstPixel = static_cast<std::int32_t>(strip.first);
    entry.colourOrder = strip.channels == 4 ? "RGBW" : "RGB";
    return entry;
}

class LightbridgeReadBack : public testing::Test {
protected:
    LightReceiver light{"127.0.47.40", 0};
};

} // namespace

TEST_F(LightbridgeReadBack, OfDdpGivesThePixels) {
    for (const Strip &strip :
         {Strip{1, 3, 0, 1}, Strip{170, 3, 0, 1}, Strip{480, 3, 0, 1}, Strip{481, 3, 0, 2},
          Strip{489, 3, 0, 2}, Strip{490, 3, 0, 2}, Strip{491, 3, 0, 2}, Strip{1500, 3, 0, 4},
          Strip{10'000, 3, 0, 21}, Strip{481, 3, 70'000, 2}, Strip{1, 4, 0, 1}, Strip{360, 4, 0, 1},
          Strip{361, 4, 0, 2}, Strip{10'000, 4, 0, 28}, Strip{9, 4, 1001, 1}}) {
        SCOPED_TRACE(testing::Message() << strip.pixels << " pixels of " << strip.channels);
        Output output(entryFor(light, Protocol::Ddp, strip), {});
        DdpReader reader(static_cast<std::uint32_t>(strip.first * strip.channels));
        // More packets than there are sequence numbers.
        for (std::size_t frame = 0; frame < 20; ++frame) {
            const std::vector<Colour> colours = coloursOf(strip.pixels, frame);
            Datagram expected;
            for (const Colour &colour : colours) {
                const WledPixel pixel = pixelOf(colour, strip.channels);
                expected.insert(expected.end(), pixel.begin(), pixel.begin() + strip.channels);
            }
            if (frame < 16)
                output.show(colours, start + frame * 20ms);
            else
                output.finish(colours, frame > 16, start + frame * 20ms);
            for (std::size_t packet = 1; packet <= strip.packets; ++packet) {
                const auto reading = reader.read(light.next().value());
                ASSERT_EQ(reading.malformed, "") << frame << ", packet " << packet;
                ASSERT_EQ(reading.frame.has_value(), packet == strip.packets);
                if (!reading.frame)
                    continue;
                EXPECT_EQ(reading.frame->channels, strip.channels);
                ASSERT_EQ(reading.frame->bytes, expected) << frame;
            }
        }
        EXPECT_FALSE(light.next(0ms));
    }
}

TEST_F(LightbridgeReadBack, OfWledRealtimeGivesThePixels) {
    struct Case {
        Strip strip;
        int form;
    };
    for (const auto &[strip, form] :
         {Case{{1, 3, 0, 1}, 2}, Case{{170, 3, 0, 1}, 2}, Case{{480, 3, 0, 1}, 2},
          Case{{481, 3, 0, 1}, 2}, Case{{489, 3, 0, 1}, 2}, Case{{490, 3, 0, 1}, 2},
          Case{{491, 3, 0, 2}, 4}, Case{{1500, 3, 0, 4}, 4}, Case{{10'000, 3, 0, 21}, 4},
          Case{{489, 3, 1, 1}, 4}, Case{{490, 3, 1, 2}, 4}, Case{{500, 3, 65'036, 2}, 4},
          Case{{1, 4, 0, 1}, 3}, Case{{170, 4, 0, 1}, 3}, Case{{367, 4, 0, 1}, 3}}) {
        SCOPED_TRACE(testing::Message() << strip.pixels << " pixels of " << strip.channels);
        Output output(entryFor(light, Protocol::Wled, strip), {});
        WledReader reader(strip.first + strip.pixels);
        std::vector<WledPixel> expected(strip.first + strip.pixels);
        for (std::size_t frame = 0; frame < 4; ++frame) {
            const std::vector<Colour> colours = coloursOf(strip.pixels, frame);
            for (std::size_t i = 0; i < strip.pixels; ++i)
                expected[strip.first + i] = pixelOf(colours[i], strip.channels);
            if (frame < 2)
                output.show(colours, start + frame * 20ms);
            else
                output.finish(colours, frame > 2, start + frame * 20ms);
            std::size_t written = 0;
            for (std::size_t packet = 0; packet < strip.packets; ++packet) {
                const auto reading = reader.read(light.next().value());
                ASSERT_EQ(reading.malformed, "") << frame << ", packet " << packet;
                EXPECT_EQ(reading.protocol, form);
                EXPECT_EQ(reading.timeout, frame > 2 ? 255 : 2);
                EXPECT_EQ(reading.first, strip.first + written);
                written += reading.count;
            }
            EXPECT_EQ(written, strip.pixels);
            ASSERT_EQ(reader.pixels(), expected) << frame;
        }
        EXPECT_FALSE(light.next(0ms));
    }
}

namespace {

using LightbridgeProgramReadBack = BridgeTest;

} // namespace

// Two receivers of the same 1500 pixels, from the first datagram through a transition to the end.
TEST_F(LightbridgeProgramReadBack, FindsNoFaultFromTheFirstFrameToTheLast) {
    constexpr int panels = 500;
    constexpr std::size_t pixels = 3 * panels;
    LightReceiver ddpLight("127.0.47.41", 0);
    LightReceiver wledLight("127.0.47.42", 0);
    const auto output = [](const char *protocol, const char *ip, const LightReceiver &light) {
        return std::string(R"("protocol": ")") + protocol + R"(", "ip": ")" + ip +
               R"(", "port": )" + std::to_string(light.port()) +
               R"(, "device": 0, "pixelsPerPanel": 3)";
    };
    Process bridge = start({writeConfig(
        "127.0.47.43", panels,
        {output("ddp", "127.0.47.41", ddpLight), output("wled", "127.0.47.42", wledLight)},
        R"(, "atEnd": "hold")")});
    bridge.waitFor("1500 pixels in 4 packets of at most 489\n");
    std::vector<Record> records;
    Datagram shown;
    std::vector<WledPixel> lit;
    for (int i = 0; i < panels; ++i) {
        const std::uint8_t red = i % 251;
        const std::uint8_t green = 255 - i / 251;
        records.push_back({i + 1, static_cast<std::uint32_t>(red << 16 | green << 8 | 77), 0, 2});
        for (int pixel = 0; pixel < 3; ++pixel) {
            shown.insert(shown.end(), {red, green, 77});
            lit.push_back({red, green, 77, 0});
        }
    }
    sendTo("127.0.47.43", 60222, encode(2, records));

    DdpReader ddp;
    WledReader wled(pixels);
    Datagram lastFrame;
    const auto readDdp = [&] {
        const auto reading = ddp.read(ddpLight.next().value());
        EXPECT_EQ(reading.malformed, "");
        if (reading.frame)
            lastFrame = reading.frame->bytes;
    };
    const auto readWled = [&] {
        const auto reading = wled.read(wledLight.next().value());
        EXPECT_EQ(reading.malformed, "");
        return reading;
    };
    while (lastFrame != shown && !HasFailure())
        readDdp();
    while (wled.pixels() != lit && !HasFailure())
        readWled();
    end(bridge);
    for (auto packet = ddpLight.next(0ms); packet; packet = ddpLight.next(0ms))
        EXPECT_EQ(ddp.read(*packet).malformed, "");
    EXPECT_EQ(ddp.unshown(), 0u);
    EXPECT_EQ(lastFrame, shown);
    WledReader::Reading last;
    for (auto packet = wledLight.next(0ms); packet; packet = wledLight.next(0ms))
        EXPECT_EQ((last = wled.read(*packet)).malformed, "");
    EXPECT_EQ(last.timeout, 255);
    EXPECT_EQ(wled.pixels(), lit);
}
