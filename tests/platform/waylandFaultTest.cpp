// Compositors that lack something, lie, hang or go away at any step: the failure value in bounded
// time, and nothing left behind.
#include "tests/platform/processUsage.h"
#include "tests/platform/standInCompositor.h"
#include "tests/platform/streamProbe.h"

#include <CoreGraphics/CoreGraphics.h>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

using test::Frame;
using test::StandInCompositor;
using test::StandInPlan;
using test::StreamProbe;
using Step = StandInPlan::Step;
using Copies = StandInPlan::Copies;
using namespace std::chrono_literals;

namespace {

constexpr auto complete = kCGDisplayStreamFrameStatusFrameComplete;
constexpr auto blank = kCGDisplayStreamFrameStatusFrameBlank;
constexpr std::int32_t halfTurn = 2;

// The identifier of HEADLESS-1.
CGDirectDisplayID theDisplay() {
    const StandInCompositor compositor{{}};
    return test::onlyDisplay();
}

Frame imageOf(CGDirectDisplayID display) {
    CGImageRef image = CGDisplayCreateImage(display);
    if (image == nullptr)
        return {};
    CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    const Frame frame =
        test::frameOf(CFDataGetBytePtr(data), static_cast<int>(CGImageGetWidth(image)),
                      static_cast<int>(CGImageGetHeight(image)));
    CFRelease(data);
    CGImageRelease(image);
    return frame;
}

struct Fault {
    const char *name;
    StandInPlan plan;
    bool lists;
    bool creates; // a stream
};

class Faulty : public testing::TestWithParam<Fault> {};

StandInPlan offering(const StandInPlan::Offer &offer) {
    return {.offers = {offer}};
}

const std::vector<Fault> faults = {
    {"HangsUpWhileConnecting", {.hangsUpAt = Step::Connecting}, false, false},
    {"HangsUpWhileNaming", {.hangsUpAt = Step::Naming}, false, false},
    {"HangsUpWhileOffering", {.hangsUpAt = Step::Offering}, true, false},
    {"HangsUpWhileCopying", {.hangsUpAt = Step::Copying}, true, true},
    {"SilentWhileConnecting", {.silentFrom = Step::Connecting}, false, false},
    {"SilentWhileNaming", {.silentFrom = Step::Naming}, false, false},
    {"SilentWhileOffering", {.silentFrom = Step::Offering}, true, false},
    {"SilentWhileCopying", {.silentFrom = Step::Copying}, true, true},
    {"NoSharedMemory", {.hasMemory = false}, true, false},
    {"NoCopies", {.copyVersion = 0}, true, false},
    {"OldCopies", {.copyVersion = 2}, true, false},
    {"NoOffer", {.offers = {}}, true, false},
    {"NoWidth", offering({.width = 0, .stride = 0}), true, false},
    {"NoHeight", offering({.height = 0}), true, false},
    {"TooWide", offering({.width = 65536, .stride = 262144}), true, false},
    {"TooLarge", offering({.width = 65535, .height = 65535, .stride = 262140}), true, false},
    {"RowsTooShort", offering({.stride = 15}), true, false},
    {"RowsTooLong", offering({.stride = 0xffffffff}), true, false},
    {"WidthTimesBytesOverflows", offering({.width = 0x40000000, .stride = 16}), true, false},
    {"UnknownFormat", offering({.format = 0x20203843}), true, false},
    {"RefusesToCopy", {.copies = Copies::Refused}, true, true},
    {"NeverCopies", {.copies = Copies::Never}, true, true},
    {"CopiesWithoutRequest", {.copies = Copies::WithoutRequest}, true, false},
};

} // namespace

TEST_P(Faulty, CostsSecondsAndLeavesNothing) {
    signal(SIGPIPE, SIG_DFL);
    const CGDirectDisplayID display = theDisplay();
    const std::size_t threadsBefore = test::threads();
    const std::size_t descriptorsBefore = test::openDescriptors();
    {
        const auto begin = platform::Clock::now();
        const StandInCompositor compositor(GetParam().plan);
        EXPECT_EQ(test::activeDisplays().size(), GetParam().lists ? 1u : 0u);
        StreamProbe stream(display, 4, 3);
        EXPECT_EQ(stream.get() != nullptr, GetParam().creates);
        if (GetParam().creates) {
            EXPECT_EQ(stream.start(), kCGErrorSuccess);
            EXPECT_FALSE(stream.waitForCount(complete, 1, 700ms));
            EXPECT_EQ(stream.stop(), kCGErrorSuccess);
        }
        EXPECT_EQ(CGDisplayCreateImage(display), nullptr);
        EXPECT_LT(platform::Clock::now() - begin, 10s);
        EXPECT_LT(compositor.copies(), 30);
    }
    EXPECT_TRUE(test::threadsBecome(threadsBefore));
    EXPECT_TRUE(test::openDescriptorsBecome(descriptorsBefore));
}

INSTANTIATE_TEST_SUITE_P(WaylandFault, Faulty, testing::ValuesIn(faults),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(WaylandFault, AnOutputWithoutANameIsNotListed) {
    for (const int version : {2, 3, 4}) {
        const StandInCompositor compositor({.outputVersion = version, .hasName = false});
        EXPECT_EQ(test::activeDisplays().size(), 0u) << version;
    }
}

TEST(WaylandFault, TheNameMayComeFromTheDetails) {
    const CGDirectDisplayID display = theDisplay();
    for (const int version : {2, 3}) {
        const StandInCompositor compositor({.outputVersion = version});
        EXPECT_EQ(test::onlyDisplay(), display) << version;
        EXPECT_EQ(imageOf(display).at(0, 0), 0x020100u);
    }
}

TEST(WaylandFault, TheFirstOfferThatCanBeReadIsTaken) {
    const StandInCompositor compositor(
        {.offers = {{.format = 0x20203843}, {.stride = 3}, {.stride = 20}, {.stride = 16}}});
    const Frame image = imageOf(test::onlyDisplay());
    ASSERT_EQ(image.width, 4);
    EXPECT_EQ(image.at(0, 1), 0x161514u); // bytes 20 to 22: the padding is left out
}

TEST(WaylandFault, APictureUpsideDownIsTurnedOver) {
    const StandInCompositor compositor({.flags = 1});
    const CGDirectDisplayID display = test::onlyDisplay();
    const Frame image = imageOf(display);
    EXPECT_EQ(image.at(0, 0), 0x222120u);
    EXPECT_EQ(image.at(0, 1), 0x121110u);
    EXPECT_EQ(image.at(3, 2), 0x0e0d0cu);
    StreamProbe stream(display, 4, 3);
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_TRUE(stream.latestFrame() == image);
}

TEST(WaylandFault, ACompositorThatCountsNoChangeAtFirstIsAskedToCopyAtOnce) {
    StandInCompositor compositor({.copies = Copies::OnlyAtOnce});
    StreamProbe stream(test::onlyDisplay(), 4, 3);
    ASSERT_TRUE(stream.startAndWait());
    EXPECT_EQ(compositor.copies(), 1);
    EXPECT_EQ(stream.latestFrame().at(0, 0), 0x020100u);
}

TEST(WaylandFault, WhatIsDrawnAnewButLooksTheSameIsNoFrame) {
    StandInCompositor compositor{{}};
    StreamProbe stream(test::onlyDisplay(), 4, 3, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    for (int i = 0; i < 20; ++i) {
        compositor.draw();
        EXPECT_FALSE(stream.waitForCalls(2, 20ms));
    }
    EXPECT_GT(compositor.copies(), 10);
}

TEST(WaylandFault, WhatIsDrawnWhileTheHandlerReadsIsPaintedAfterwards) {
    std::atomic<std::uint8_t> value = 1;
    StandInCompositor compositor({.paint = [&value](std::uint8_t *pixels, std::size_t bytes) {
        std::fill_n(pixels, bytes, value.load());
    }});
    std::atomic<bool> held = false;
    StreamProbe stream(test::onlyDisplay(), 4, 3);
    stream.onCall = [&](const test::HandlerCall &) { held.wait(true); };
    ASSERT_TRUE(stream.startAndWait());
    // After copies without a change, the next request is made early.
    for (int i = 0; i < 2; ++i) {
        const int copies = compositor.copies();
        compositor.draw();
        while (compositor.copies() == copies)
            std::this_thread::yield();
        EXPECT_FALSE(stream.waitForCalls(2, 50ms));
    }
    held = true;
    for (const std::uint8_t next : {2, 3}) {
        value = next;
        compositor.draw();
        ASSERT_TRUE(stream.waitForCalls(2));
        EXPECT_FALSE(stream.waitForCalls(3, 50ms));
    }
    EXPECT_EQ(stream.latestFrame().at(0, 0), 0x020202u);
    value = 4;
    held = false;
    held.notify_all();
    ASSERT_TRUE(stream.waitForCalls(3));
    EXPECT_EQ(stream.latestFrame().at(0, 0), 0x040404u);
    EXPECT_FALSE(stream.waitForCalls(4, 100ms));
}

TEST(WaylandFault, AScreenGivenToOneWindowStaysStill) {
    const StandInCompositor compositor({.copies = Copies::GivesScreenAway});
    StreamProbe stream(test::onlyDisplay(), 4, 3, 0.03);
    ASSERT_TRUE(stream.startAndWait());
    // Without any request in time, there would be a copy every 30 ms for ever.
    int copies = 0;
    const auto deadline = platform::Clock::now() + 20s;
    do {
        copies = compositor.copies();
        EXPECT_FALSE(stream.waitForCalls(2, 500ms));
    } while (compositor.copies() != copies && platform::Clock::now() < deadline);
    EXPECT_EQ(compositor.copies(), copies);
    EXPECT_GT(copies, 1);
}

TEST(WaylandFault, AnOutputGoesBlankWhenItIsUnpluggedAndIsShownAgainWhenItIsBack) {
    StandInCompositor compositor{{}};
    StreamProbe stream(test::onlyDisplay(), 4, 3, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    const std::size_t descriptors = test::openDescriptors();
    for (std::size_t round = 1; round <= 30; ++round) {
        compositor.unplug();
        ASSERT_TRUE(stream.waitForCount(blank, round));
        EXPECT_EQ(test::activeDisplays().size(), 0u);
        compositor.plugIn();
        compositor.draw();
        ASSERT_TRUE(stream.waitForCount(complete, round + 1));
    }
    EXPECT_EQ(stream.count(blank), 30u);
    EXPECT_TRUE(test::openDescriptorsBecome(descriptors));
}

TEST(WaylandFault, WhileATurnIsReportedInPartNoFrameArrives) {
    StandInCompositor compositor{{}};
    StreamProbe stream(test::onlyDisplay(), 4, 3, 0.01);
    ASSERT_TRUE(stream.startAndWait());
    compositor.turn(halfTurn, false);
    compositor.draw();
    EXPECT_FALSE(stream.waitForCalls(2, 500ms));
    EXPECT_LT(compositor.copies(), 10);
    compositor.turn(halfTurn, true);
    compositor.draw();
    ASSERT_TRUE(stream.waitForCalls(2));
    EXPECT_EQ(stream.latestFrame().at(0, 0), 0x2e2d2cu);
}

TEST(WaylandFault, WhatWasOfferedBeforeAChangeOfTheOutputIsNotCopied) {
    StandInCompositor compositor{{}};
    StreamProbe stream(test::onlyDisplay(), 4, 3, 0.4);
    ASSERT_TRUE(stream.startAndWait());
    // The next copy has been offered when a frame is handed over, and begins 0.3 s later.
    compositor.turn(0, true);
    compositor.draw();
    const auto deadline = platform::Clock::now() + 20s;
    while (compositor.copies() < 2 && platform::Clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_GT(compositor.copies(), 1);
    EXPECT_EQ(compositor.outdatedCopies(), 0);
}

namespace {

// The pixels red, green, blue and white of one format, as numbers.
struct Format {
    std::uint32_t code;
    std::size_t bytes;
    std::uint32_t pixels[4];
};

constexpr std::uint32_t named(const char (&letters)[5]) {
    return static_cast<std::uint32_t>(letters[0]) | static_cast<std::uint32_t>(letters[1]) << 8 |
           static_cast<std::uint32_t>(letters[2]) << 16 |
           static_cast<std::uint32_t>(letters[3]) << 24;
}

const Format formats[] = {
    {0, 4, {0xffff0000, 0xff00ff00, 0xff0000ff, 0xffffffff}},
    {1, 4, {0x00ff0000, 0x0000ff00, 0x000000ff, 0x00ffffff}},
    {named("XB24"), 4, {0xff, 0xff00, 0xff0000, 0xffffff}},
    {named("AB24"), 4, {0xff, 0xff00, 0xff0000, 0xffffff}},
    {named("RX24"), 4, {0xff000000, 0xff0000, 0xff00, 0xffffff00}},
    {named("RA24"), 4, {0xff000000, 0xff0000, 0xff00, 0xffffff00}},
    {named("BX24"), 4, {0xff00, 0xff0000, 0xff000000, 0xffffff00}},
    {named("BA24"), 4, {0xff00, 0xff0000, 0xff000000, 0xffffff00}},
    {named("XR30"), 4, {0x3ff00000, 0xffc00, 0x3ff, 0x3fffffff}},
    {named("AR30"), 4, {0x3ff00000, 0xffc00, 0x3ff, 0x3fffffff}},
    {named("XB30"), 4, {0x3ff, 0xffc00, 0x3ff00000, 0x3fffffff}},
    {named("AB30"), 4, {0x3ff, 0xffc00, 0x3ff00000, 0x3fffffff}},
    {named("RG24"), 3, {0xff0000, 0xff00, 0xff, 0xffffff}},
    {named("BG24"), 3, {0xff, 0xff00, 0xff0000, 0xffffff}},
    {named("RG16"), 2, {0xf800, 0x7e0, 0x1f, 0xffff}},
    {named("BG16"), 2, {0x1f, 0x7e0, 0xf800, 0xffff}},
};

} // namespace

TEST(WaylandFault, FormatsAreConverted) {
    for (const Format &format : formats) {
        const auto row = static_cast<std::uint32_t>(2 * format.bytes);
        const StandInCompositor compositor(
            {.offers = {{format.code, 2, 2, row}},
             .paint = [&format](std::uint8_t *pixels, std::size_t) {
                 for (const std::uint32_t pixel : format.pixels)
                     for (std::size_t byte = 0; byte < format.bytes; ++byte)
                         *pixels++ = static_cast<std::uint8_t>(pixel >> 8 * byte);
             }});
        const Frame wanted{2, 2, {0xff0000, 0x00ff00, 0x0000ff, 0xffffff}};
        EXPECT_TRUE(imageOf(test::onlyDisplay()) == wanted) << std::hex << format.code;
    }
}
