// Frames that arrive on a system thread, with every status of the frameworks.
#include "tests/macho/library/libraryOverFakes.h"
#include "tests/support/lightReceiver.h"

namespace macho {

namespace {

constexpr std::uint32_t red = 0xff0000;
constexpr std::uint32_t blue = 0x0000ff;

class Frames : public LibraryOverFakes {
protected:
    Frames() {
        EXPECT_EQ(configure(document()), 1);
        EXPECT_EQ(start(), 1);
    }
    ~Frames() override {
        if (image)
            EXPECT_EQ(stop(), 1);
    }

    void show(CGDisplayStreamFrameStatus status, std::uint32_t colour) {
        const auto screen = plainScreen(colour);
        fake::deliver(status, &screen);
    }

    // The next datagram that was created after this call.
    test::Datagram sent() {
        light.drain();
        light.next(); // may have been created before
        return light.next().value_or(test::Datagram());
    }

    test::LightReceiver light{"127.0.61.1", 60221};
};

TEST_F(Frames, ACompleteOneIsSent) {
    EXPECT_EQ(sent(), datagramOf(0));
    show(kCGDisplayStreamFrameStatusFrameComplete, red);
    EXPECT_EQ(sent(), datagramOf(red));
    show(kCGDisplayStreamFrameStatusFrameComplete, blue);
    EXPECT_EQ(sent(), datagramOf(blue));
}

TEST_F(Frames, AnyOtherStatusChangesNothing) {
    show(kCGDisplayStreamFrameStatusFrameComplete, red);
    const CGDisplayStreamFrameStatus others[] = {kCGDisplayStreamFrameStatusFrameIdle,
                                                 kCGDisplayStreamFrameStatusFrameBlank,
                                                 kCGDisplayStreamFrameStatusStopped, 4, -1};
    for (const CGDisplayStreamFrameStatus status : others) {
        show(status, blue);
        fake::deliver(status, nullptr);
        EXPECT_EQ(sent(), datagramOf(red)) << status;
    }
    const auto calls = fake::frameworks().calls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "IOSurfaceLock(surface 2)"), 0);
}

TEST_F(Frames, ACompleteOneWithoutASurfaceChangesNothing) {
    show(kCGDisplayStreamFrameStatusFrameComplete, red);
    fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, nullptr);
    EXPECT_EQ(sent(), datagramOf(red));
}

TEST_F(Frames, TheSurfaceIsLockedWhileItIsRead) {
    ASSERT_TRUE(light.next()); // by now the stream's start is recorded
    const std::size_t before = fake::frameworks().calls().size();
    show(kCGDisplayStreamFrameStatusFrameComplete, red);
    const auto calls = fake::frameworks().calls();
    EXPECT_EQ(
        std::vector(calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end()),
        (std::vector<std::string>{"IOSurfaceLock(surface 1)", "IOSurfaceGetBaseAddress(surface 1)",
                                  "IOSurfaceUnlock(surface 1)"}));
}

TEST_F(Frames, OneAfterTheRunIsDroppedAndTheSurfaceUnlocked) {
    EXPECT_EQ(stop(), 1);
    show(kCGDisplayStreamFrameStatusFrameComplete, red);
    ASSERT_EQ(configure(document()), 1);
    ASSERT_EQ(start(), 1);
    EXPECT_EQ(sent(), datagramOf(0));
}

} // namespace

} // namespace macho
