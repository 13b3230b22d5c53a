// The fakes report misuse of the frameworks and continue.
#include "tests/macho/fakes/recordingFrameworks.h"

#include <gtest/gtest.h>

namespace macho::fake {

namespace {

using Lines = std::vector<std::string>;

class RecordingFrameworks : public testing::Test {
protected:
    RecordingFrameworks() {
        frameworks().script = {.displays = {{.id = 1, .width = 4, .height = 2}}};
    }
    ~RecordingFrameworks() override { frameworks().forget(); }

    static Lines problems() { return frameworks().objects.problems(); }
    static Lines alive() { return frameworks().objects.alive(); }
};

TEST_F(RecordingFrameworks, WhatIsNotReleasedIsAlive) {
    const CGImageRef first = CGDisplayCreateImage(1);
    CGDisplayCreateImage(1);
    CGImageRelease(first);
    EXPECT_EQ(alive(), Lines{"image 2"});
    EXPECT_EQ(problems(), Lines());
}

TEST_F(RecordingFrameworks, ReleasingTwiceIsAProblem) {
    const CGImageRef image = CGDisplayCreateImage(1);
    CGImageRelease(image);
    CGImageRelease(image);
    ASSERT_FALSE(problems().empty());
    EXPECT_EQ(problems()[0], "CGImageRelease of image 1, which is released already");
}

TEST_F(RecordingFrameworks, UseAfterTheEndIsAProblem) {
    const CGImageRef image = CGDisplayCreateImage(1);
    const auto provider = CGImageGetDataProvider(image);
    CGImageRelease(image);
    CGDataProviderCopyData(provider);
    EXPECT_EQ(problems(), Lines{"CGDataProviderCopyData of provider 1, which is released already"});
}

TEST_F(RecordingFrameworks, WhatBelongsToAnotherMayNotBeReleased) {
    const CGImageRef image = CGDisplayCreateImage(1);
    CFRelease(CGImageGetDataProvider(image));
    EXPECT_EQ(problems(), Lines{"CFRelease of provider 1, which belongs to image 1"});
}

TEST_F(RecordingFrameworks, ReleasingNothingIsAProblem) {
    int number = 0;
    CFRelease(&number);
    ASSERT_FALSE(problems().empty());
    EXPECT_EQ(problems()[0], "CFRelease of what is no object");
    CGImageRelease(nullptr); // is allowed
    EXPECT_EQ(frameworks().calls().back(), "CGImageRelease(null)");
}

TEST_F(RecordingFrameworks, SurfacesAreReadOnlyWhileLocked) {
    Object *object = frameworks().objects.make(Kind::Surface);
    const auto surface = reinterpret_cast<IOSurfaceRef>(object);
    IOSurfaceGetBaseAddress(surface);
    IOSurfaceLock(surface, 0, nullptr);
    IOSurfaceUnlock(surface, kIOSurfaceLockReadOnly, nullptr);
    IOSurfaceUnlock(surface, kIOSurfaceLockReadOnly, nullptr);
    EXPECT_EQ(problems(), (Lines{"IOSurfaceGetBaseAddress of surface 1, which is not locked",
                                 "IOSurfaceLock with the options 0",
                                 "IOSurfaceUnlock of surface 1, which is not locked"}));
}

TEST_F(RecordingFrameworks, ASurfaceLeftLockedIsAProblem) {
    __block CGDisplayStreamFrameStatus seen = 0;
    CGDisplayStreamCreateWithDispatchQueue(1, 4, 2, 0x42475241, nullptr, nullptr,
                                           ^(CGDisplayStreamFrameStatus status, std::uint64_t,
                                             IOSurfaceRef surface, CGDisplayStreamUpdateRef) {
                                             seen = status;
                                             IOSurfaceLock(surface, kIOSurfaceLockReadOnly,
                                                           nullptr);
                                           });
    const std::vector<std::uint32_t> pixels(8);
    deliver(3, &pixels);
    EXPECT_EQ(seen, 3);
    EXPECT_EQ(problems().back(), "surface 1 was left locked");
    EXPECT_EQ(problems().front(),
              "CGDisplayStreamCreateWithDispatchQueue of null"); // neither options nor queue
}

} // namespace

} // namespace macho::fake
