#include "mirror/sharedFlag.h"
#include "tests/mirror/manager.h"
#include "tests/mirror/scriptedSystem.h"
#include "tests/support/lightReceiver.h"

#include <memory>
#include <thread>
#include <utility>

namespace {

using test::Datagram;
using test::LightReceiver;

// Match mode alone, over sockets that the test aims.
class MatchMode : public ManagerTest {
protected:
    void aim(int deviceCount, const std::string &ip) {
        for (int i = 0; i < deviceCount; ++i) {
            lights.push_back(std::make_unique<LightReceiver>(ip, 0));
            sockets[i].setRemote(ip, lights.back()->port());
        }
    }

    // Runs the mode on a thread of its own until `during` returns.
    template <class During> void run(int deviceCount, During during) {
        mirrorManager.running = true;
        std::thread mode([&] { mirrorManager.mirrorModeMatch(deviceCount, sockets); });
        during();
        writeFlag(mirrorManager.running, false);
        mode.join();
    }

    UdpSocket sockets[4];
    std::vector<std::unique_ptr<LightReceiver>> lights;
};

TEST_F(MatchMode, SendsEachPanelsOwnColour) {
    ASSERT_EQ(configure(document(
                  "[" + device("-", 1, "[" + panel(3, 10, 10) + "," + panel(300, 50, 40) + "]") +
                  "," + device("-", 2, "[" + panel(258, 10, 10) + "]") + "," +
                  device("-", 1, "[]") + "," + device("-", 2, "[]") + "]")),
              1);
    std::vector<std::uint32_t> screen(64 * 48, 0xff0000);
    for (std::size_t i = 0; i < screen.size(); ++i)
        if (i % 64 >= 32)
            screen[i] = 0x0a141e;
    fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &screen);
    aim(4, "127.0.52.1");
    run(4, [&] {
        for (int frame = 0; frame < 3; ++frame) {
            EXPECT_EQ(lights[0]->next(),
                      (Datagram{2, 3, 1, 255, 0, 0, 0, 1, 44, 1, 10, 20, 30, 0, 1}));
            EXPECT_EQ(lights[1]->next(), (Datagram{0, 1, 1, 2, 255, 0, 0, 0, 0, 1}));
            EXPECT_EQ(lights[2]->next(), Datagram{0});
            EXPECT_EQ(lights[3]->next(), (Datagram{0, 0}));
        }
    });
}

// Samples that were made for a larger screen, of one panel among others.
TEST_F(MatchMode, SamplesOffTheFrameAreBlackAndChangeNoOtherPanel) {
    const std::string panels = "[" + panel(1, 10, 10) + "," + panel(2, 30, 30) + "]";
    ASSERT_EQ(configure(document("[" + device("-", 1, panels) + "]")), 1);
    std::vector<std::uint32_t> screen(64 * 48, 0x64c832);
    fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &screen);
    aim(1, "127.0.52.9");
    for (std::int32_t &index : mirrorManager.devices[0].panels[1].samplePixels)
        index += index % 2 == 0 ? 1 << 30 : -(1 << 30);
    run(1, [&] {
        EXPECT_EQ(lights[0]->next(), (Datagram{2, 1, 1, 100, 200, 50, 0, 1, 2, 1, 0, 0, 0, 0, 1}));
    });
}

TEST_F(MatchMode, WithoutAFrameBufferEveryPanelIsBlack) {
    ASSERT_EQ(configure(document("[" + device("-", 1, "[" + panel(1, 10, 10) + "]") + "]")), 1);
    aim(1, "127.0.52.10");
    unsigned char *const buffer = std::exchange(mirrorManager.frameBuffer, nullptr);
    run(1, [&] { EXPECT_EQ(lights[0]->next(), (Datagram{1, 1, 1, 0, 0, 0, 0, 1})); });
    mirrorManager.frameBuffer = buffer;
}

TEST_F(MatchMode, TheTransitionTimeIsTheFields) {
    const std::string panels = "[" + panel(7, 10, 10) + "]";
    ASSERT_EQ(
        configure(document("[" + device("-", 1, panels) + "," + device("-", 2, panels) + "]")), 1);
    aim(2, "127.0.52.8");
    mirrorManager.matchTransitionTime = 300; // 1, 44
    run(2, [&] {
        EXPECT_EQ(lights[0]->next(), (Datagram{1, 7, 1, 0, 0, 0, 0, 44}));
        EXPECT_EQ(lights[1]->next(), (Datagram{0, 1, 0, 7, 0, 0, 0, 0, 1, 44}));
    });
}

TEST_F(MatchMode, AlreadyStoppedSendsNothingButRebuildsTheGrid) {
    ASSERT_EQ(configure(document("[" + device("-", 1, "[]") + "]")), 1);
    aim(1, "127.0.52.2");
    mirrorManager.running = false;
    mirrorManager.mirrorModeMatch(1, sockets);
    EXPECT_FALSE(lights[0]->next(std::chrono::milliseconds(0)));
    EXPECT_EQ(mirrorManager.samplePixels[0], 4 * 64 + 6);
}

TEST_F(MatchMode, StopsAfterTheSleepWithoutAFurtherFrame) {
    ASSERT_EQ(configure(document("[" + device("-", 1, "[]") + "]")), 1);
    aim(1, "127.0.52.3");
    mirrorManager.matchFrameDelay = 300;
    run(1, [&] { EXPECT_TRUE(lights[0]->next()); });
    EXPECT_FALSE(lights[0]->next(std::chrono::milliseconds(0)));
}

TEST_F(MatchMode, WithoutADelayItSendsOnAndOn) {
    ASSERT_EQ(configure(document("[" + device("-", 1, "[]") + "]")), 1);
    aim(1, "127.0.52.4");
    for (const int delay : {0, -5}) {
        mirrorManager.matchFrameDelay = delay;
        run(1, [&] {
            for (int i = 0; i < 100; ++i)
                ASSERT_TRUE(lights[0]->next());
        });
        lights[0]->drain();
    }
}

TEST_F(MatchMode, FramesFollowEachOtherAfterTheDelay) {
    ASSERT_EQ(configure(document("[" + device("-", 1, "[]") + "]")), 1);
    aim(1, "127.0.52.5");
    run(1, [&] {
        ASSERT_TRUE(lights[0]->next());
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 5; ++i)
            ASSERT_TRUE(lights[0]->next());
        // Never sooner; how much later the machine decides.
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4 * 42));
    });
}

TEST_F(MatchMode, ACaptureTakesOneFrameOfEveryDevice) {
    ASSERT_EQ(configure(document("[" + device("-", 1, "[" + panel(5, 1, 1) + "]") + "," +
                                 device("-", 2, "[]") + "]")),
              1);
    aim(2, "127.0.52.6");
    run(2, [&] {
        EXPECT_EQ(mirrorManager.captureCurrentStreamFrames(), 0);
        EXPECT_FALSE(readFlag(mirrorManager.captureRequested));
    });
    EXPECT_EQ(mirrorManager.streamFrames, (std::vector<std::string>{"1 5 1 0 0 0 0 5", "0 "}));
}

TEST_F(MatchMode, WithoutDevicesItKeepsItsPace) {
    ASSERT_EQ(configure(document("[]")), 1);
    test::ScriptedSystem system;
    system.atSleep = [&] { writeFlag(mirrorManager.running, system.sleeps.size() < 20); };
    mirrorManager.running = true;
    mirrorManager.mirrorModeMatch(0, sockets);
    EXPECT_EQ(system.sleeps,
              std::vector<std::chrono::nanoseconds>(20, std::chrono::milliseconds(42)));
}

TEST_F(MatchMode, WithoutDevicesACaptureIsStillConsumed) {
    ASSERT_EQ(configure(document("[]")), 1);
    run(0, [&] { EXPECT_EQ(mirrorManager.captureCurrentStreamFrames(), 0); });
    EXPECT_TRUE(mirrorManager.streamFrames.empty());
}

TEST_F(MatchMode, ADeadSocketDoesNotHoldUpTheOthers) {
    ASSERT_EQ(configure(document("[" + device("-", 1, "[]") + "," + device("-", 1, "[]") + "]")),
              1);
    aim(2, "127.0.52.7");
    sockets[0].setRemote("255.255.255.255", 60221); // broadcasts are refused: every send fails
    run(2, [&] {
        EXPECT_TRUE(lights[1]->next());
        EXPECT_TRUE(lights[1]->next());
    });
}

} // namespace
