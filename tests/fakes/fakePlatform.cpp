#include "tests/fakes/fakePlatform.h"

#include <Block.h>
#include <algorithm>
#include <memory>
#include <mutex>
#include <poll.h>
#include <stdexcept>
#include <thread>

struct dispatch_queue_s {
    std::string label;
    bool serial;
};

struct __CFNumber {
    double value;
};

struct __CFDictionary {
    std::vector<const void *> keys;
    std::vector<const void *> values;
};

struct __CFData {
    std::vector<std::uint8_t> bytes;
};

struct __CFString {};
struct __CFBoolean {};

struct CGImage {
    fake::Display display;
};

struct CGDataProvider {};

struct CGDisplayStream {
    CGDisplayStreamFrameAvailableHandler handler;
    ~CGDisplayStream() { Block_release(handler); }
};

struct __IOSurface {
    std::vector<std::uint32_t> pixels;
    int locks = 0;
};

namespace {

const __CFString frameTimeKey, cursorKey;
const __CFBoolean falseValue;
CGDataProvider theProvider;
CGDisplayStreamRef lastStream = nullptr;
std::mutex callsMutex;

// Objects that the library creates and never releases. Outlives the manager.
struct Created {
    std::vector<std::unique_ptr<dispatch_queue_s>> queues;
    std::vector<std::unique_ptr<__CFNumber>> numbers;
    std::vector<std::unique_ptr<__CFDictionary>> dictionaries;
    std::vector<std::unique_ptr<CGDisplayStream>> streams;
};

Created &created() {
    static Created &only = *new Created;
    return only;
}

template <typename T> T *keep(std::vector<std::unique_ptr<T>> &all, T *one) {
    all.push_back(std::unique_ptr<T>(one)); // owned before the list may have to grow
    return one;
}

void record(const char *name) {
    const std::lock_guard lock(callsMutex);
    fake::platform().calls.emplace_back(name);
}

} // namespace

extern "C" {

const CFStringRef kCGDisplayStreamMinimumFrameTime = &frameTimeKey;
const CFStringRef kCGDisplayStreamShowCursor = &cursorKey;
const CFBooleanRef kCFBooleanFalse = &falseValue;
const CFAllocatorRef kCFAllocatorDefault = nullptr;

dispatch_queue_t dispatch_queue_create(const char *label, dispatch_queue_attr_t attr) {
    return keep(created().queues, new dispatch_queue_s{label, attr == nullptr});
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void *value) {
    if (type != kCFNumberDoubleType)
        return nullptr;
    return keep(created().numbers, new __CFNumber{*static_cast<const double *>(value)});
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void **keys, const void **values,
                                   CFIndex count, const CFDictionaryKeyCallBacks *,
                                   const CFDictionaryValueCallBacks *) {
    return keep(created().dictionaries,
                new __CFDictionary{std::vector<const void *>(keys, keys + count),
                                   std::vector<const void *>(values, values + count)});
}

const UInt8 *CFDataGetBytePtr(CFDataRef data) {
    return data->bytes.data();
}

void CFRelease(CFTypeRef data) {
    delete static_cast<const __CFData *>(data);
}

CGError CGGetActiveDisplayList(uint32_t capacity, CGDirectDisplayID *list, uint32_t *count) {
    const auto &displays = fake::platform().displays;
    if (list == nullptr) {
        *count = static_cast<uint32_t>(displays.size());
        return kCGErrorSuccess;
    }
    if (fake::platform().refuseListing)
        return kCGErrorFailure;
    *count = static_cast<uint32_t>(displays.size());
    *count = std::min(*count, capacity);
    for (uint32_t i = 0; i < *count; ++i)
        list[i] = displays[i].id;
    return kCGErrorSuccess;
}

CGImageRef CGDisplayCreateImage(CGDirectDisplayID id) {
    record("CGDisplayCreateImage");
    for (const fake::Display &display : fake::platform().displays) {
        if (display.id == id) {
            ++fake::platform().imagesAlive;
            return new CGImage{display};
        }
    }
    return nullptr;
}

size_t CGImageGetWidth(CGImageRef image) {
    return image ? image->display.width : 0;
}
size_t CGImageGetHeight(CGImageRef image) {
    return image ? image->display.height : 0;
}
size_t CGImageGetBitsPerPixel(CGImageRef image) {
    return image ? image->display.bitsPerPixel : 0;
}
CGDataProviderRef CGImageGetDataProvider(CGImageRef image) {
    return image ? &theProvider : nullptr;
}

void CGImageRelease(CGImageRef image) {
    if (image != nullptr) {
        --fake::platform().imagesAlive;
        delete image;
    }
    record("CGImageRelease");
}

CFDataRef CGDataProviderCopyData(CGDataProviderRef provider) {
    return provider ? new __CFData{fake::platform().imageBytes} : nullptr;
}

CGDisplayStreamRef CGDisplayStreamCreateWithDispatchQueue(
    CGDirectDisplayID display, size_t width, size_t height, int32_t pixelFormat,
    CFDictionaryRef options, dispatch_queue_t queue, CGDisplayStreamFrameAvailableHandler handler) {
    record("CGDisplayStreamCreateWithDispatchQueue");
    fake::StreamRequest &request = fake::platform().request;
    request = {display,
               width,
               height,
               pixelFormat,
               -1,
               true,
               static_cast<CFIndex>(options->keys.size()),
               queue->label,
               queue->serial};
    for (std::size_t i = 0; i < options->keys.size(); ++i) {
        if (options->keys[i] == kCGDisplayStreamMinimumFrameTime)
            request.minimumFrameTime = static_cast<CFNumberRef>(options->values[i])->value;
        if (options->keys[i] == kCGDisplayStreamShowCursor)
            request.showsCursor = options->values[i] != kCFBooleanFalse;
    }
    if (fake::platform().throwOnCreate)
        throw std::runtime_error("scripted");
    if (fake::platform().refuseStreams)
        return nullptr;
    lastStream = keep(created().streams, new CGDisplayStream{Block_copy(handler)});
    return lastStream;
}

CGError CGDisplayStreamStart(CGDisplayStreamRef stream) {
    record("CGDisplayStreamStart");
    if (fake::platform().throwOnStart)
        throw std::runtime_error("scripted");
    return stream == nullptr ? CGError{kCGErrorIllegalArgument} : fake::platform().startResult;
}

CGError CGDisplayStreamStop(CGDisplayStreamRef) {
    record("CGDisplayStreamStop");
    poll(nullptr, 0, static_cast<int>(fake::platform().stopTime.count()));
    return fake::platform().stopResult;
}

IOReturn IOSurfaceLock(IOSurfaceRef surface, IOSurfaceLockOptions options, uint32_t *) {
    record(options == kIOSurfaceLockReadOnly ? "IOSurfaceLock" : "IOSurfaceLock for writing");
    ++surface->locks;
    return 0;
}

IOReturn IOSurfaceUnlock(IOSurfaceRef surface, IOSurfaceLockOptions options, uint32_t *) {
    record(options == kIOSurfaceLockReadOnly ? "IOSurfaceUnlock" : "IOSurfaceUnlock for writing");
    --surface->locks;
    return 0;
}

void *IOSurfaceGetBaseAddress(IOSurfaceRef surface) {
    return surface->locks > 0 ? surface->pixels.data() : nullptr;
}
}

namespace fake {

Platform &platform() {
    static Platform &only = *new Platform; // outlives the manager
    return only;
}

int callCount(const std::string &name) {
    const std::lock_guard lock(callsMutex);
    const auto &calls = platform().calls;
    return static_cast<int>(std::count(calls.begin(), calls.end(), name));
}

void forgetCalls() {
    const std::lock_guard lock(callsMutex);
    platform().calls.clear();
}

void reset(std::size_t width, std::size_t height) {
    platform() = {};
    platform().displays = {{1, width, height}};
}

void freeCreated() {
    created() = {};
    lastStream = nullptr;
}

void deliver(CGDisplayStreamFrameStatus status, const std::vector<std::uint32_t> *pixels) {
    __IOSurface surface;
    if (pixels != nullptr)
        surface.pixels = *pixels;
    std::thread([&] {
        lastStream->handler(status, 0, pixels != nullptr ? &surface : nullptr, nullptr);
    }).join();
}

} // namespace fake
