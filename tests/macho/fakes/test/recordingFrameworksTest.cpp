// The fakes notice what the real frameworks would punish, and go on.
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

    template <class Function> Function *find(const char *library, const char *symbol) {
        const void *address = imports.find(library, symbol);
        EXPECT_NE(address, nullptr) << symbol;
        return reinterpret_cast<Function *>(const_cast<void *>(address));
    }
    CGImageRef makeImage() {
        return find<decltype(CGDisplayCreateImage)>(coreGraphics, "_CGDisplayCreateImage")(1);
    }
    static Lines problems() { return frameworks().objects.problems(); }
    static Lines alive() { return frameworks().objects.alive(); }

    Imports imports = [] {
        Imports all;
        addRecordingFrameworks(all);
        return all;
    }();
    decltype(CGImageRelease) *releaseImage =
        find<decltype(CGImageRelease)>(coreGraphics, "_CGImageRelease");
    decltype(CFRelease) *release = find<decltype(CFRelease)>(coreFoundation, "_CFRelease");
};

TEST_F(RecordingFrameworks, WhatIsNotReleasedIsAlive) {
    const CGImageRef first = makeImage();
    makeImage();
    releaseImage(first);
    EXPECT_EQ(alive(), Lines{"image 2"});
    EXPECT_EQ(problems(), Lines());
}

TEST_F(RecordingFrameworks, ReleasingTwiceIsAProblem) {
    const CGImageRef image = makeImage();
    releaseImage(image);
    releaseImage(image);
    ASSERT_FALSE(problems().empty());
    EXPECT_EQ(problems()[0], "CGImageRelease of image 1, which is released already");
}

TEST_F(RecordingFrameworks, UseAfterTheEndIsAProblem) {
    const CGImageRef image = makeImage();
    const auto provider =
        find<decltype(CGImageGetDataProvider)>(coreGraphics, "_CGImageGetDataProvider")(image);
    releaseImage(image);
    find<decltype(CGDataProviderCopyData)>(coreGraphics, "_CGDataProviderCopyData")(provider);
    EXPECT_EQ(problems(), Lines{"CGDataProviderCopyData of provider 1, which is released already"});
}

TEST_F(RecordingFrameworks, WhatBelongsToAnotherMayNotBeReleased) {
    const CGImageRef image = makeImage();
    release(find<decltype(CGImageGetDataProvider)>(coreGraphics, "_CGImageGetDataProvider")(image));
    EXPECT_EQ(problems(), Lines{"CFRelease of provider 1, which belongs to image 1"});
}

TEST_F(RecordingFrameworks, ReleasingNothingIsAProblem) {
    int number = 0;
    release(&number);
    ASSERT_FALSE(problems().empty());
    EXPECT_EQ(problems()[0], "CFRelease of what is no object");
    releaseImage(nullptr); // is allowed
    EXPECT_EQ(frameworks().calls().back(), "CGImageRelease(null)");
}

TEST_F(RecordingFrameworks, SurfacesAreReadOnlyWhileLocked) {
    auto *lock = find<decltype(IOSurfaceLock)>(ioSurface, "_IOSurfaceLock");
    auto *unlock = find<decltype(IOSurfaceUnlock)>(ioSurface, "_IOSurfaceUnlock");
    auto *address = find<decltype(IOSurfaceGetBaseAddress)>(ioSurface, "_IOSurfaceGetBaseAddress");
    Object *object = frameworks().objects.make(Kind::Surface);
    const auto surface = reinterpret_cast<IOSurfaceRef>(object);
    address(surface);
    lock(surface, 0, nullptr);
    unlock(surface, kIOSurfaceLockReadOnly, nullptr);
    unlock(surface, kIOSurfaceLockReadOnly, nullptr);
    EXPECT_EQ(problems(), (Lines{"IOSurfaceGetBaseAddress of surface 1, which is not locked",
                                 "IOSurfaceLock with the options 0",
                                 "IOSurfaceUnlock of surface 1, which is not locked"}));
}

TEST_F(RecordingFrameworks, ASurfaceLeftLockedIsAProblem) {
    auto *lock = find<decltype(IOSurfaceLock)>(ioSurface, "_IOSurfaceLock");
    const auto create = find<decltype(CGDisplayStreamCreateWithDispatchQueue)>(
        coreGraphics, "_CGDisplayStreamCreateWithDispatchQueue");
    __block CGDisplayStreamFrameStatus seen = 0;
    create(1, 4, 2, 0x42475241, nullptr, nullptr,
           ^(CGDisplayStreamFrameStatus status, std::uint64_t, IOSurfaceRef surface,
             CGDisplayStreamUpdateRef) {
             seen = status;
             lock(surface, kIOSurfaceLockReadOnly, nullptr);
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
