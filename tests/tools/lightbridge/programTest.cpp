#include "tests/support/panelRecords.h"
#include "tests/tools/lightbridge/bridgeSetup.h"

using namespace std::chrono_literals;
using namespace test;

namespace {

class LightbridgeProgram : public BridgeTest {
protected:
    // The pixels of the next DDP packet.
    static Datagram pixels(LightReceiver &from) {
        const Datagram packet = from.next().value();
        return {packet.begin() + 10, packet.end()};
    }

    // Reads packets up to one with these pixels.
    static void waitForPixels(LightReceiver &from, const Datagram &wanted) {
        for (Datagram found; found != wanted;)
            ASSERT_FALSE((found = pixels(from)).empty());
    }

    static void show(const std::string &ip, const std::vector<Record> &records) {
        sendTo(ip, 60222, encode(2, records));
    }

    LightReceiver light{"127.0.47.1", 0};
};

// How an output ended.
std::string last(const LightReceiver &light) {
    return "ended: output 0 (DDP to 127.0.47.1:" + std::to_string(light.port()) + "): ";
}

} // namespace

TEST_F(LightbridgeProgram, SendsTheColoursAndEndsInBlack) {
    Process bridge = start({writeConfig("127.0.47.10", 2, {ddp(light)}), "--transition-unit", "0"});
    bridge.waitFor("listening: device 0 at \"127.0.47.10\", UDP port 60222, 2 panels\n");
    bridge.waitFor("driving: output 0 (DDP to 127.0.47.1:" + std::to_string(light.port()) +
                   "), 2 pixels in 1 packet of at most 480\n");
    show("127.0.47.10", {{1, 0x0a141e, 0, 5}, {2, 0xff8000, 0, 5}});
    EXPECT_EQ(pixels(light), (Datagram{10, 20, 30, 255, 128, 0}));
    // Panels without a record keep their colour.
    show("127.0.47.10", {{2, 0x010203, 0, 5}});
    EXPECT_EQ(pixels(light), (Datagram{10, 20, 30, 1, 2, 3}));
    end(bridge);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(pixels(light), Datagram(6));
    EXPECT_FALSE(light.next(0ms));
    EXPECT_TRUE(
        contains(bridge.out(), last(light) + "6 frames in 6 packets, 0 of them not sent\n"));
    EXPECT_EQ(bridge.err(), "");
}

TEST_F(LightbridgeProgram, MulticastsOnItsInterface) {
    LightReceiver group("239.255.18.52", 0);
    group.join("127.0.0.1");
    const std::string output = R"("protocol": "e131", "ip": "multicast", "device": 0, "universe": )"
                               R"(4660, "interface": "127.0.0.1", "port": )" +
                               std::to_string(group.port());
    Process bridge = start({writeConfig("127.0.47.23", 1, {output}), "--transition-unit", "0"});
    bridge.waitFor("driving: output 0 (E1.31 to multicast), 1 pixel in universe 4660 of at most ");
    show("127.0.47.23", {{1, 0x070809, 0, 5}});
    const Datagram packet = group.next().value();
    EXPECT_EQ(Datagram(packet.begin() + 113, packet.begin() + 115), (Datagram{0x12, 0x34}));
    EXPECT_EQ(Datagram(packet.begin() + 126, packet.begin() + 129), (Datagram{7, 8, 9}));
    end(bridge);
}

TEST_F(LightbridgeProgram, SendsNothingBeforeTheFirstDatagram) {
    Process bridge = start({writeConfig("127.0.47.11", 1, {ddp(light)})});
    bridge.waitFor("driving: ");
    end(bridge, SIGINT);
    EXPECT_FALSE(light.next(0ms));
    EXPECT_TRUE(contains(bridge.out(), last(light) + "0 frames in 0 packets"));
}

TEST_F(LightbridgeProgram, EndsAsAsked) {
    const std::pair<std::string, Datagram> ends[] = {{"hold", {7, 8, 9}},
                                                     {"#102030", {16, 32, 48}}};
    for (const auto &[word, pixel] : ends) {
        Process bridge =
            start({writeConfig("127.0.47.12", 1, {ddp(light)}, R"(, "atEnd": ")" + word + '"'),
                   "--transition-unit", "0"});
        bridge.waitFor("driving: ");
        show("127.0.47.12", {{1, 0x070809, 0, 5}});
        EXPECT_EQ(pixels(light), (Datagram{7, 8, 9}));
        end(bridge, SIGHUP);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(pixels(light), pixel) << word;
    }
}

TEST_F(LightbridgeProgram, RepeatsTheLastColoursOnceASecond) {
    Process bridge = start({writeConfig("127.0.47.13", 1, {ddp(light)}), "--transition-unit", "0"});
    bridge.waitFor("driving: ");
    show("127.0.47.13", {{1, 0x070809, 0, 5}});
    EXPECT_EQ(pixels(light), (Datagram{7, 8, 9}));
    auto before = light.arrival();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(pixels(light), (Datagram{7, 8, 9}));
        // Sent after 0.9 s; a busy machine may be late.
        EXPECT_GT(light.arrival() - before, 850ms);
        before = light.arrival();
    }
    end(bridge);
    EXPECT_TRUE(contains(bridge.out(), last(light) + "7 frames"));
}

// The first transition begins with black and takes a second, in which up to 50 frames are sent.
TEST_F(LightbridgeProgram, PlaysTransitionsAtTheRateAskedFor) {
    Process bridge =
        start({writeConfig("127.0.47.14", 1, {ddp(light)}, R"(, "framesPerSecond": 20)")});
    bridge.waitFor("driving: ");
    show("127.0.47.14", {{1, 0xff0000, 0, 10}});
    int frames = 0;
    Datagram shown{0, 0, 0};
    std::optional<LightReceiver::Arrival> first;
    while (shown[0] < 255) {
        const Datagram next = pixels(light);
        EXPECT_GE(next[0], shown[0]);
        shown = next;
        if (!first)
            first = light.arrival();
        ++frames;
    }
    EXPECT_GT(light.arrival() - *first, 900ms);
    EXPECT_GE(frames, 10); // a busy machine may send fewer
    EXPECT_LE(frames, 23);
    end(bridge);
}

TEST_F(LightbridgeProgram, StopsWhenMirroringHasStoppedAndGoesOnWithIt) {
    Process bridge = start({writeConfig("127.0.47.15", 1, {ddp(light)}, R"(, "stopAfter": 1)"),
                            "--transition-unit", "0"});
    bridge.waitFor("driving: ");
    show("127.0.47.15", {{1, 0x070809, 0, 5}});
    waitForPixels(light, {7, 8, 9});
    bridge.waitFor("stopped: nothing has arrived for 1 second\n");
    waitForPixels(light, {0, 0, 0});
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(pixels(light), Datagram(3));
    show("127.0.47.15", {{1, 0x040506, 0, 5}});
    EXPECT_EQ(pixels(light), (Datagram{4, 5, 6}));
    end(bridge);
}

TEST_F(LightbridgeProgram, MissesNothingBesideFaultyOutputs) {
    const std::string good = ddp(light);
    const LightReceiver other("127.0.47.1", 0);
    std::string path = writeConfig(
        "127.0.47.16", 1,
        {R"("protocol": "ddp", "ip": "lamp", "device": 0)", good, good,
         R"("protocol": "e131", "ip": "127.0.47.1", "device": 0, "universe": 63999, "pixelsPerPanel": 171)"});
    Process bridge = start({path, "--transition-unit", "0"});
    bridge.waitFor("driving: output 1 ");
    show("127.0.47.16", {{1, 0x070809, 0, 5}});
    EXPECT_EQ(pixels(light), (Datagram{7, 8, 9}));
    end(bridge);
    for (const char *part :
         {"line 1, column 232: /lightbridge/outputs/0/ip: expected an IPv4 or IPv6 address",
          "/lightbridge/outputs/2/firstPixel: found pixel 0 again, which output 1 to the same",
          "/lightbridge/outputs/3/pixelsPerPanel: expected at most 170 pixels for E1.31, found "
          "171"})
        EXPECT_TRUE(contains(bridge.err(), part));
    EXPECT_EQ(std::count(bridge.err().begin(), bridge.err().end(), '\n'), 3);
}

TEST_F(LightbridgeProgram, TellsOfReceiversThatAreNotThere) {
    auto gone = std::make_unique<LightReceiver>("127.0.47.1", 0);
    const std::string path = writeConfig("127.0.47.17", 1, {ddp(*gone), ddp(light)});
    gone.reset();
    Process bridge = start({path, "--transition-unit", "0"});
    bridge.waitFor("driving: output 1 ");
    for (int red = 1; red < 4; ++red) {
        show("127.0.47.17", {{1, static_cast<std::uint32_t>(red) << 16, 0, 5}});
        EXPECT_EQ(pixels(light)[0], red);
    }
    bridge.waitFor(") cannot be reached: Connection refused; check its address and");
    end(bridge);
    EXPECT_EQ(bridge.out().find("cannot be reached"), bridge.out().rfind("cannot be reached"));
}

TEST_F(LightbridgeProgram, IgnoresMalformedDatagrams) {
    Process bridge = start({writeConfig("127.0.47.18", 1, {ddp(light)}), "--transition-unit", "0"});
    bridge.waitFor("driving: ");
    sendTo("127.0.47.18", 60222, {0, 1, 0, 9, 1, 2, 3, 0, 0, 5});
    sendTo("127.0.47.18", 60222, {0, 1});
    bridge.waitFor("device 0 at \"127.0.47.18\", UDP port 60222: a datagram is malformed: record "
                   "0: panel id 9 is unknown to this device; malformed ones are ignored");
    show("127.0.47.18", {{1, 0x070809, 0, 5}});
    EXPECT_EQ(pixels(light), (Datagram{7, 8, 9}));
    end(bridge);
    EXPECT_EQ(bridge.out().find("malformed:"), bridge.out().rfind("malformed:"));
}

TEST_F(LightbridgeProgram, HoldsFlashesBackUnlessAskedNotTo) {
    const std::string path = writeConfig("127.0.47.22", 1, {ddp(light)});
    const auto flash = [&](const std::vector<std::string> &options) {
        std::vector<std::string> arguments{path, "--transition-unit", "0"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Process bridge = start(arguments);
        bridge.waitFor("driving: ");
        int changes = 0;
        Datagram last(3);
        for (int i = 0; i < 16; ++i) {
            show("127.0.47.22", {{1, i % 2 == 0 ? 0xffffffu : 0u, 0, 5}});
            while (const auto packet = light.next(45ms)) {
                const Datagram now(packet->begin() + 10, packet->end());
                changes += now == last ? 0 : 1;
                last = now;
            }
        }
        end(bridge);
        light.drain();
        EXPECT_EQ(bridge.out().find("limited: the colours would flash") == std::string::npos,
                  !options.empty());
        return changes;
    };
    EXPECT_GE(flash({"--no-flash-limit"}), 15);
    EXPECT_LE(flash({}), 7); // 720 ms, or a second on a busy machine
}

TEST_F(LightbridgeProgram, IdentifiesPanelsAndPixels) {
    const std::string path =
        writeConfig("127.0.47.19", 2, {ddp(light, R"(, "pixelsPerPanel": 2, "brightness": 40)")});
    Process panel = start({"identify", path, "2"});
    EXPECT_EQ(pixels(light), (Datagram{0, 0, 0, 0, 0, 0, 102, 102, 102, 102, 102, 102}));
    end(panel);
    light.drain();
    Process pixel = start({"identify", path, "1", "--pixel"});
    EXPECT_EQ(pixels(light), (Datagram{0, 0, 0, 102, 102, 102, 0, 0, 0, 0, 0, 0}));
    end(pixel);
    expectErrors(run({"identify", path, "3"}), 2, {"no output has the panel 3\n"});
    expectErrors(run({"identify", path, "4", "--pixel"}), 2, {"no output has the pixel 4\n"});
}

TEST_F(LightbridgeProgram, PlaysTestColoursThoughSomebodyListens) {
    const std::string path = writeConfig("127.0.47.20", 1, {ddp(light)});
    Process bridge = start({path});
    bridge.waitFor("listening: ");
    Process test = start({"test", path, "--seconds", "1.2"});
    waitForPixels(light, {255, 0, 0});
    waitForPixels(light, {0, 0, 0});
    EXPECT_EQ(test.finish().status, 0);
    end(bridge);
}

TEST_F(LightbridgeProgram, RefusesWhatCannotBe) {
    expectErrors(run({}), 2, {"CONFIG is required"});
    expectErrors(run({folder.file("none.json")}), 3, {"none.json: cannot be read: No such file"});
    expectErrors(run({"-"}, {.input = "{}"}), 4, {"-: line 1, column 1: /displayID: expected"});
    expectErrors(run({"-"}, {.input = R"({"displayID": 1, "mode": 0, "devices": []})"}), 4,
                 {"/lightbridge: expected an object with the outputs, found no member"});
    expectErrors(run({writeConfig("127.0.47.21", 1, {})}), 4,
                 {"/lightbridge/outputs: there is no output that can be driven"});
    expectErrors(run({writeConfig("192.0.2.7", 1, {ddp(light)})}), 5, {"not a loopback address"});
    const LightReceiver taken("127.0.47.21", 60222);
    expectErrors(run({writeConfig("127.0.47.21", 1, {ddp(light)})}), 6, {"the port is in use"});
    expectErrors(run({"-", "--seconds", "nan"}), 2, {"not a number"});
}
