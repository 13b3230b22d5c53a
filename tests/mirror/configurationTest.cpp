#include "tests/mirror/manager.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <tuple>

namespace {

class Configuration : public ManagerTest {
protected:
    const std::vector<DeviceSetup> oneDevice = {{"127.0.0.2", 2}};
};
class ConfigurationDeathTest : public Configuration {};

TEST_F(Configuration, BecomesDevicesAndPanels) {
    ASSERT_EQ(configure(R"({"displayID":1,"mode":2,"ignored":[{}],"devices":[
        {"ip":"127.0.0.2","controlVersion":1,"shapeType":7,"scaleFactor":1.5,"panels":[
            {"panelID":101,"centroidX":640,"centroidY":-50},
            {"centroidY":6,"centroidX":-50,"panelID":-4,"more":null},
            {"panelID":2147483647,"centroidX":-2147483648,"centroidY":0}]},
        {"ip":"::1","controlVersion":-3,"shapeType":0,"scaleFactor":2,"panels":[]}]})"),
              1);
    EXPECT_EQ(mirrorManager.mode, 2);
    EXPECT_EQ(mirrorManager.displayID, 1u);
    ASSERT_EQ(mirrorManager.devices.size(), 2u);
    const Device &first = mirrorManager.devices[0];
    EXPECT_EQ(first.ip, "127.0.0.2");
    EXPECT_EQ(first.controlVersion, 1);
    EXPECT_EQ(first.shapeType, 7);
    EXPECT_EQ(first.scaleFactor, 1.5);
    EXPECT_EQ(first.numPanels, 3);
    ASSERT_EQ(first.panels.size(), 3u);
    const auto numbersOf = [](const Panel &panel) {
        return std::tuple(panel.panelID, panel.centroidX, panel.centroidY);
    };
    EXPECT_EQ(numbersOf(first.panels[0]), std::tuple(101, 640, -50));
    EXPECT_EQ(numbersOf(first.panels[1]), std::tuple(-4, -50, 6));
    EXPECT_EQ(numbersOf(first.panels[2]), std::tuple(2147483647, -2147483647 - 1, 0));
    EXPECT_EQ(first.panels[0].numSamplePixels, 100);
    EXPECT_EQ(first.screenWidth, 64u);
    EXPECT_EQ(first.screenHeight, 48u);
    EXPECT_EQ(first.bytesPerPixel, 4u);
    const Device &second = mirrorManager.devices[1];
    EXPECT_EQ(second.scaleFactor, 2.0);
    EXPECT_EQ(second.numPanels, 0);
    EXPECT_EQ(second.controlVersion, -3);
}

TEST_F(Configuration, ARunThatCannotBeJoinedIsToldAndTheDocumentApplied) {
#if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the thread sanitizer forgets a thread that tries to join itself";
#endif
    CaptureStdout();
    EXPECT_EQ(onMirroringThread([&] { return setDevices(oneDevice, 3); }), 1);
    EXPECT_EQ(GetCapturedStdout(), "Error stopping mirror\n");
    EXPECT_EQ(mirrorManager.mode, 3);
    EXPECT_EQ(mirrorManager.devices.size(), 1u);
}

TEST_F(Configuration, SamplesAreReadyBeforeTheDeviceIsStored) {
    ASSERT_EQ(setDevices({{"127.0.0.2", 2, {{1, 20, 10}}}}), 1);
    Device expected = mirrorManager.devices[0];
    std::ranges::fill(expected.panels[0].samplePixels, -1);
    expected.calculateSamplePixels();
    EXPECT_TRUE(std::ranges::equal(mirrorManager.devices[0].panels[0].samplePixels,
                                   expected.panels[0].samplePixels));
}

TEST_F(Configuration, MeasuresTheDisplayAndMakesABlackBuffer) {
    fake::platform().displays = {{9, 10, 10}, {77, 33, 22, 64}};
    ASSERT_EQ(setDevices({}, 0, 77), 1);
    EXPECT_EQ(mirrorManager.screenWidth, 33u);
    EXPECT_EQ(mirrorManager.screenHeight, 22u);
    EXPECT_EQ(mirrorManager.bytesPerPixel, 8u);
    ASSERT_NE(mirrorManager.frameBuffer, nullptr);
    for (int i = 0; i < 33 * 22 * 4; ++i)
        ASSERT_EQ(mirrorManager.frameBuffer[i], 0);
    EXPECT_EQ(fake::platform().imagesAlive, 0);
}

TEST_F(Configuration, AsksForTheStreamThatItNeeds) {
    ASSERT_EQ(setDevices({}), 1);
    const fake::StreamRequest &request = fake::platform().request;
    EXPECT_EQ(request.display, 1u);
    EXPECT_EQ(request.width, 64u);
    EXPECT_EQ(request.height, 48u);
    EXPECT_EQ(request.pixelFormat, 0x42475241);
    EXPECT_EQ(request.minimumFrameTime, 0.03);
    EXPECT_FALSE(request.showsCursor);
    EXPECT_EQ(request.optionCount, 2);
    EXPECT_EQ(request.queueLabel, "queue for dispatch");
    EXPECT_TRUE(request.serialQueue);
    EXPECT_EQ(fake::platform().calls,
              (std::vector<std::string>{"CGDisplayCreateImage", "CGImageRelease",
                                        "CGDisplayStreamCreateWithDispatchQueue"}));
}

TEST_F(Configuration, TheStreamsFrameTimeIsTheFields) {
    mirrorManager.minimumFrameTime = 0.5;
    ASSERT_EQ(setDevices({}), 1);
    EXPECT_EQ(fake::platform().request.minimumFrameTime, 0.5);
}

TEST_F(Configuration, KeepsTheIpUpToItsFirstNul) {
    ASSERT_EQ(setDevices({{"10.0.0.1\\u0000junk", 2}}), 1);
    EXPECT_EQ(mirrorManager.devices[0].ip, "10.0.0.1");
}

TEST_F(Configuration, TwiceGivesTheSameDevices) {
    const std::string text = document({{"127.0.0.2", 2, {{1, 1, 1}}}, {"127.0.0.3", 1}});
    ASSERT_EQ(configure(text), 1);
    unsigned char *first = mirrorManager.frameBuffer;
    ASSERT_EQ(configure(text), 1);
    EXPECT_EQ(mirrorManager.devices.size(), 2u);
    EXPECT_EQ(mirrorManager.devices[0].panels.size(), 1u);
    EXPECT_NE(mirrorManager.frameBuffer, first); // the earlier buffer is neither freed nor reused
    delete[] first;
}

TEST_F(Configuration, EmptyDeviceListIsAccepted) {
    ASSERT_EQ(setDevices(oneDevice), 1);
    EXPECT_EQ(setDevices({}), 1);
    EXPECT_TRUE(mirrorManager.devices.empty());
}

TEST_F(Configuration, UnparsableTextChangesNothing) {
    ASSERT_EQ(setDevices(oneDevice, 3), 1);
    unsigned char *buffer = mirrorManager.frameBuffer;
    for (const char *text : {"{", "", "{\"displayID\":1,}", "nothing", "{}{}", "{\"a\":01}"}) {
        CaptureStdout();
        EXPECT_EQ(configure(text), 0) << text;
        EXPECT_EQ(GetCapturedStdout(), "Bad json!\n");
        EXPECT_EQ(mirrorManager.devices.size(), 1u);
        EXPECT_EQ(mirrorManager.mode, 3);
        EXPECT_EQ(mirrorManager.frameBuffer, buffer);
    }
}

// The stack that parsing needs does not grow with the nesting depth.
TEST_F(Configuration, DeepNestingDoesNotEndTheProcess) {
    constexpr std::size_t deep = 1'000'000;
    for (const char *opening : {"[", "{\"a\":"}) {
        std::string text;
        for (std::size_t i = 0; i < deep; ++i)
            text += opening;
        CaptureStdout();
        EXPECT_EQ(configure(text), 0);
        EXPECT_EQ(GetCapturedStdout(), "Bad json!\n");
    }
    const std::string nest = std::string(deep, '[') + std::string(deep, ']');
    EXPECT_EQ(configure("{\"ignored\":" + nest + "," + document({}, 2).substr(1)), 1);
    EXPECT_EQ(mirrorManager.mode, 2);
}

TEST_F(Configuration, RefusedStreamKeepsModeAndDevices) {
    ASSERT_EQ(setDevices(oneDevice, 3), 1);
    unsigned char *buffer = mirrorManager.frameBuffer;
    fake::platform().displays = {{5, 20, 10}};
    fake::platform().refuseStreams = true;
    CaptureStdout();
    EXPECT_EQ(setDevices({}, 1, 5), 0);
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\n");
    EXPECT_EQ(mirrorManager.displayStream, nullptr);
    EXPECT_EQ(mirrorManager.displayID, 5u);
    EXPECT_EQ(mirrorManager.screenWidth, 20u);
    EXPECT_EQ(mirrorManager.screenHeight, 10u);
    EXPECT_NE(mirrorManager.frameBuffer, buffer);
    EXPECT_EQ(mirrorManager.mode, 3);
    EXPECT_EQ(mirrorManager.devices.size(), 1u);
    delete[] buffer;
}

TEST_F(Configuration, DisplayThatIsNotThereHasNoSize) {
    fake::platform().refuseStreams = true;
    CaptureStdout();
    EXPECT_EQ(setDevices({}, 0, 4711), 0);
    GetCapturedStdout();
    EXPECT_EQ(mirrorManager.screenWidth, 0u);
    EXPECT_EQ(mirrorManager.screenHeight, 0u);
    EXPECT_EQ(mirrorManager.bytesPerPixel, 0u);
    EXPECT_NE(mirrorManager.frameBuffer, nullptr);
    EXPECT_EQ(mirrorManager.grabPixel(0).r, 0);
}

TEST_F(Configuration, ExceptionOfTheStreamCountsAsSuccess) {
    fake::platform().throwOnCreate = true;
    CaptureStdout();
    EXPECT_EQ(setDevices(oneDevice, 2), 1);
    EXPECT_EQ(GetCapturedStdout(), "CGDisplayStream Initialization failed!\n");
    EXPECT_EQ(mirrorManager.devices.size(), 1u);
    CaptureStdout();
    EXPECT_EQ(mirrorManager.initDisplayStream(), -1);
    GetCapturedStdout();
}

TEST_F(Configuration, FailedAllocationIsBadConfig) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers' operator new ends the process instead of throwing";
#endif
    ASSERT_EQ(setDevices(oneDevice, 3), 1);
    mirrorManager.deInitScreen();
    for (const std::size_t side : {std::size_t{1} << 40, std::size_t{1} << 23}) {
        fake::platform().displays = {{5, side, side}};
        CaptureStdout();
        EXPECT_EQ(setDevices({}, 1, 5), 0);
        EXPECT_EQ(GetCapturedStdout(), "Bad config!\n");
        EXPECT_EQ(mirrorManager.screenWidth, side);
        EXPECT_EQ(mirrorManager.frameBuffer, nullptr);
        EXPECT_EQ(mirrorManager.mode, 3);
        EXPECT_EQ(mirrorManager.devices.size(), 1u);
    }
}

TEST_F(Configuration, EndsARunningMirrorFirst) {
    ASSERT_EQ(setDevices({{"127.0.51.1", 2}}), 1);
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    CaptureStdout();
    EXPECT_EQ(configure("{"), 0);
    EXPECT_EQ(GetCapturedStdout(), "Bad json!\n");
    EXPECT_FALSE(mirrorManager.running);
    EXPECT_FALSE(mirrorManager.mirrorThread.joinable());
    EXPECT_EQ(fake::platform().calls.back(), "CGDisplayStreamStop");
}

// The process stops in the JSON library's own assertion.
TEST_F(ConfigurationDeathTest, MissingOrMistypedMembersStopTheProcess) {
    GTEST_FLAG_SET(death_test_style, "fast");
    const std::vector<PanelSetup> panels = {{1, 2, 3}};
    const std::vector<DeviceSetup> devices = {{"127.0.0.2", 2, panels}};
    const auto with = [&](const std::string &from, const std::string &to) {
        std::string changed = document(devices);
        const std::size_t at = changed.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return changed.replace(at, from.size(), to);
    };
    const std::string texts[] = {
        "{}",
        "[]",
        "1",
        "\"text\"",
        "null",
        with("\"displayID\":1", "\"displayid\":1"),
        with("\"displayID\":1", "\"displayID\":\"1\""),
        with("\"displayID\":1", "\"displayID\":2147483648"),
        with("\"displayID\":1", "\"displayID\":1.0"),
        with("\"mode\":0", "\"mode\":null"),
        with("\"mode\":0", "\"m\":0"),
        with("\"devices\":" + textOf(devices), "\"devices\":{}"),
        with("\"devices\":" + textOf(devices), "\"devices\":[1]"),
        with("\"devices\":" + textOf(devices), "\"d\":[]"),
        with("\"ip\":\"127.0.0.2\"", "\"ip\":127"),
        with("\"ip\":\"127.0.0.2\"", "\"IP\":\"127.0.0.2\""),
        with("\"controlVersion\":2", "\"controlVersion\":2.5"),
        with("\"controlVersion\":2", "\"c\":2"),
        with("\"shapeType\":0", "\"shapeType\":true"),
        with("\"shapeType\":0", "\"s\":0"),
        with("\"scaleFactor\":0.1", "\"scaleFactor\":\"1\""),
        with("\"scaleFactor\":0.1", "\"f\":1"),
        with("\"panels\":" + textOf(panels), "\"panels\":null"),
        with("\"panels\":" + textOf(panels), "\"panels\":[[]]"),
        with("\"panels\":" + textOf(panels), "\"p\":[]"),
        with("\"panelID\":1", "\"panelID\":2.5"),
        with("\"panelID\":1", "\"id\":1"),
        with("\"centroidX\":2", "\"centroidX\":-2147483649"),
        with("\"centroidX\":2", "\"x\":2"),
        with("\"centroidY\":3", "\"centroidY\":false"),
        with("\"centroidY\":3", "\"y\":3"),
    };
    for (const std::string &text : texts)
        EXPECT_EXIT(configure(text), testing::KilledBySignal(SIGABRT), "Assertion") << text;
}

const MirrorManager *aborted;
const unsigned char *earlierBuffer;

void printAbortedManager(int) {
    const MirrorManager &m = *aborted;
    std::fprintf(stderr, "calls %zu display %u size %lux%lux%lu mode %d devices %zu %s %s\n",
                 fake::platform().calls.size(), m.displayID, m.screenWidth, m.screenHeight,
                 m.bytesPerPixel, m.mode, m.devices.size(),
                 m.frameBuffer == earlierBuffer ? "same buffer" : "new buffer",
                 m.displayStream != nullptr ? "same stream" : "no stream");
    std::_Exit(3);
}

TEST_F(ConfigurationDeathTest, AnEmptyObjectStopsTheProcessBeforeAnythingChanges) {
    GTEST_FLAG_SET(death_test_style, "fast");
    fake::platform().displays = {{42, 20, 10}};
    ASSERT_EQ(setDevices(oneDevice, 3, 42), 1);
    fake::forgetCalls();
    aborted = &mirrorManager;
    earlierBuffer = mirrorManager.frameBuffer;
    EXPECT_EXIT(
        {
            std::signal(SIGABRT, printAbortedManager);
            configure("{}");
        },
        testing::ExitedWithCode(3),
        "calls 0 display 42 size 20x10x4 mode 3 devices 1 same buffer same stream");
}

} // namespace
