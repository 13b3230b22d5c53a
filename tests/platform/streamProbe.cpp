#include "tests/platform/streamProbe.h"

#include <algorithm>
#include <cstring>

namespace test {

namespace {

constexpr std::int32_t bgra = 0x42475241;

// Queues are never released; here they stay within reach of a leak checker.
dispatch_queue_t newQueue() {
    static std::mutex mutex;
    static auto *queues = new std::vector<dispatch_queue_t>;
    const std::lock_guard lock(mutex);
    queues->push_back(dispatch_queue_create("queue of a test", nullptr));
    return queues->back();
}

} // namespace

Frame frameOf(const void *bgra_, int width, int height) {
    Frame frame{width, height, {}};
    frame.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::memcpy(frame.pixels.data(), bgra_, frame.pixels.size() * 4);
    for (std::uint32_t &pixel : frame.pixels)
        pixel &= 0xffffff;
    return frame;
}

CGDirectDisplayID onlyDisplay() {
    std::uint32_t count = 0;
    CGDirectDisplayID ids[2] = {};
    CGGetActiveDisplayList(2, ids, &count);
    return count == 1 ? ids[0] : 0;
}

StreamProbe::StreamProbe(CGDirectDisplayID display, int width, int height, double minimumFrameTime)
    : width(width), height(height) {
    CFNumberRef time = CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &minimumFrameTime);
    const void *keys[] = {kCGDisplayStreamMinimumFrameTime, kCGDisplayStreamShowCursor};
    const void *values[] = {time, kCFBooleanFalse};
    CFDictionaryRef options =
        CFDictionaryCreate(kCFAllocatorDefault, keys, values, 2, nullptr, nullptr);
    stream = CGDisplayStreamCreateWithDispatchQueue(
        display, static_cast<std::size_t>(width), static_cast<std::size_t>(height), bgra, options,
        newQueue(),
        ^(CGDisplayStreamFrameStatus status, std::uint64_t displayTime, IOSurfaceRef surface,
          CGDisplayStreamUpdateRef) {
          handle(status, displayTime, surface);
        });
    CFRelease(options);
    CFRelease(time);
}

StreamProbe::~StreamProbe() {
    CFRelease(stream);
}

void StreamProbe::handle(CGDisplayStreamFrameStatus status, std::uint64_t displayTime,
                         IOSurfaceRef surface) {
    const HandlerCall call{status, displayTime, surface != nullptr, std::this_thread::get_id()};
    {
        const std::lock_guard lock(mutex);
        if (surface != nullptr) {
            IOSurfaceLock(surface, kIOSurfaceLockReadOnly, nullptr);
            latest = frameOf(IOSurfaceGetBaseAddress(surface), width, height);
            IOSurfaceUnlock(surface, kIOSurfaceLockReadOnly, nullptr);
        }
        received.push_back(call);
        changed.notifyAll();
    }
    if (onCall)
        onCall(call);
}

std::vector<HandlerCall> StreamProbe::calls() const {
    const std::lock_guard lock(mutex);
    return received;
}

std::size_t StreamProbe::countLocked(CGDisplayStreamFrameStatus status) const {
    return static_cast<std::size_t>(
        std::count_if(received.begin(), received.end(),
                      [status](const HandlerCall &call) { return call.status == status; }));
}

std::size_t StreamProbe::count(CGDisplayStreamFrameStatus status) const {
    const std::lock_guard lock(mutex);
    return countLocked(status);
}

bool StreamProbe::waitForCalls(std::size_t number, std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    return changed.waitUntil(lock, platform::Clock::now() + limit,
                             [&] { return received.size() >= number; });
}

bool StreamProbe::waitForCount(CGDisplayStreamFrameStatus status, std::size_t number,
                               std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    return changed.waitUntil(lock, platform::Clock::now() + limit,
                             [&] { return countLocked(status) >= number; });
}

bool StreamProbe::waitForFrame(const std::function<bool(const Frame &)> &condition,
                               std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    return changed.waitUntil(lock, platform::Clock::now() + limit,
                             [&] { return latest.width != 0 && condition(latest); });
}

bool StreamProbe::waitForPixel(int x, int y, std::uint32_t colour) {
    return waitForFrame([=](const Frame &frame) { return frame.at(x, y) == colour; });
}

Frame StreamProbe::latestFrame() const {
    const std::lock_guard lock(mutex);
    return latest;
}

std::vector<std::uint32_t> noise(int width, int height, std::uint32_t seed) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) *
                                      static_cast<std::size_t>(height));
    std::uint32_t state = seed;
    for (std::uint32_t &pixel : pixels) {
        state = state * 1664525u + 1013904223u;
        pixel = state >> 8;
    }
    return pixels;
}

} // namespace test
