#include "tests/platform/streamProbe.h"

#include <algorithm>
#include <cstring>

namespace test {

namespace {

constexpr std::int32_t bgra = 0x42475241;

// Queues are never released; kept here, they are reachable for a leak checker.
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

std::vector<CGDirectDisplayID> activeDisplays() {
    std::vector<CGDirectDisplayID> ids(32);
    std::uint32_t count = 0;
    CGGetActiveDisplayList(32, ids.data(), &count);
    ids.resize(count);
    return ids;
}

CGDirectDisplayID onlyDisplay() {
    const auto ids = activeDisplays();
    return ids.size() == 1 ? ids[0] : 0;
}

CGDirectDisplayID addMonitor(const VirtualScreen &screen, const std::string &geometry,
                             const std::string &name) {
    screen.run({"xrandr", "--setmonitor", name, geometry, "none"});
    return activeDisplays().at(0);
}

PictureScreen::PictureScreen(int width, int height, const std::vector<std::string> &extraArguments)
    : UsedScreen(width, height, 24, extraArguments), picture{width, height, {}} {
    std::uint32_t state = 5;
    for (int i = 0; i < width * height; ++i) {
        state = state * 1664525u + 1013904223u;
        picture.pixels.push_back(state >> 8);
    }
    putPixels(0, 0, width, height, picture.pixels.data());
}

void PictureScreen::paint(int x, int y, int width, int height, std::uint32_t colour) {
    fillRect(x, y, width, height, colour);
    for (int row = y; row < y + height; ++row)
        std::fill_n(picture.pixels.begin() + row * picture.width + x, width, colour);
}

Frame PictureScreen::part(int x, int y, int width, int height) const {
    return part(x, y, width, height, width, height);
}

Frame PictureScreen::part(int x, int y, int width, int height, int frameWidth,
                          int frameHeight) const {
    Frame frame{frameWidth, frameHeight, {}};
    for (int row = 0; row < frameHeight; ++row)
        for (int column = 0; column < frameWidth; ++column) {
            const int fromX = x + column * width / frameWidth;
            const int fromY = y + row * height / frameHeight;
            const bool isInside = fromX < picture.width && fromY < picture.height;
            frame.pixels.push_back(isInside ? picture.at(fromX, fromY) : 0);
        }
    return frame;
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

bool StreamProbe::waitForFrame(const Frame &wanted) {
    return waitForFrame([&](const Frame &frame) { return frame == wanted; });
}

bool StreamProbe::waitForPixel(int x, int y, std::uint32_t colour) {
    return waitForFrame([=](const Frame &frame) { return frame.at(x, y) == colour; });
}

Frame StreamProbe::latestFrame() const {
    const std::lock_guard lock(mutex);
    return latest;
}

} // namespace test
