#include "platform/objects/coreFoundation.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <dispatch/dispatch.h>
#include <gtest/gtest.h>

namespace {

int retained = 0;
int released = 0;

const void *countRetain(CFAllocatorRef, const void *value) {
    ++retained;
    return value;
}

void countRelease(CFAllocatorRef, const void *) {
    ++released;
}

} // namespace

TEST(CoreFoundation, ConstantsAreDistinctAndCannotBeReleasedAway) {
    EXPECT_NE(kCGDisplayStreamMinimumFrameTime, nullptr);
    EXPECT_NE(kCGDisplayStreamMinimumFrameTime, kCGDisplayStreamShowCursor);
    EXPECT_NE(static_cast<const void *>(kCFBooleanFalse),
              static_cast<const void *>(kCGDisplayStreamShowCursor));
    for (int i = 0; i < 3; ++i) {
        CFRelease(kCFBooleanFalse);
        CFRelease(kCGDisplayStreamShowCursor);
    }
}

TEST(CoreFoundation, DictionariesFindKeysByAddress) {
    const double seconds = 0.03;
    CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &seconds);
    const void *keys[] = {kCGDisplayStreamMinimumFrameTime, kCGDisplayStreamShowCursor};
    const void *values[] = {number, kCFBooleanFalse};
    CFDictionaryRef dictionary =
        CFDictionaryCreate(kCFAllocatorDefault, keys, values, 2, nullptr, nullptr);
    EXPECT_EQ(platform::numberOf(dictionary, kCGDisplayStreamMinimumFrameTime), 0.03);
    EXPECT_EQ(platform::numberOf(dictionary, kCGDisplayStreamShowCursor), std::nullopt);
    EXPECT_EQ(platform::numberOf(dictionary, &seconds), std::nullopt);
    EXPECT_EQ(platform::numberOf(nullptr, kCGDisplayStreamMinimumFrameTime), std::nullopt);
    CFRelease(dictionary);
    // Without callbacks the dictionary neither retains nor releases its values.
    EXPECT_EQ(number->header.references.load(), 1);
    CFRelease(number);
}

TEST(CoreFoundation, CallbacksOfADictionaryAreHonoured) {
    retained = released = 0;
    CFDictionaryKeyCallBacks keyCallBacks{};
    keyCallBacks.retain = countRetain;
    keyCallBacks.release = countRelease;
    CFDictionaryValueCallBacks valueCallBacks{};
    valueCallBacks.retain = countRetain;
    valueCallBacks.release = countRelease;
    const int things[2] = {};
    const void *keys[] = {&things[0], &things[1]};
    const void *values[] = {&things[0], &things[1]};
    CFDictionaryRef dictionary =
        CFDictionaryCreate(kCFAllocatorDefault, keys, values, 2, &keyCallBacks, &valueCallBacks);
    EXPECT_EQ(retained, 4);
    EXPECT_EQ(released, 0);
    CFRelease(dictionary);
    EXPECT_EQ(released, 4);
}

TEST(CoreFoundation, BadArgumentsGiveNull) {
    const double value = 1;
    EXPECT_EQ(CFNumberCreate(nullptr, kCFNumberDoubleType, nullptr), nullptr);
    EXPECT_EQ(CFNumberCreate(nullptr, 9, &value), nullptr);
    EXPECT_EQ(CFDictionaryCreate(nullptr, nullptr, nullptr, 1, nullptr, nullptr), nullptr);
    EXPECT_EQ(CFDictionaryCreate(nullptr, nullptr, nullptr, -1, nullptr, nullptr), nullptr);
    EXPECT_EQ(CFDataGetBytePtr(nullptr), nullptr);
    EXPECT_EQ(dispatch_queue_create("x", reinterpret_cast<dispatch_queue_attr_t>(&retained)),
              nullptr);
}
