// A display stream under test that records every call of its handler.
#pragma once

#include "platform/objects/monotonicCondition.h"
#include "tests/support/virtualScreen.h"

#include <CoreGraphics/CoreGraphics.h>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace test {

struct HandlerCall {
    CGDisplayStreamFrameStatus status;
    std::uint64_t displayTime;
    bool hasSurface;
    std::thread::id thread;
};

// The pixels of a frame as 0xRRGGBB.
struct Frame {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    bool operator==(const Frame &) const = default;
    std::uint32_t at(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
};

// Turns BGRA bytes into a frame; ignores the fourth byte of each pixel.
Frame frameOf(const void *bgra, int width, int height);

// The identifiers of the displays, in the server's order; none without a server.
std::vector<CGDirectDisplayID> activeDisplays();

// The identifier of the only display; 0 when there is not exactly one.
CGDirectDisplayID onlyDisplay();

// Adds a monitor to the server in use. Returns the identifier of the first monitor, which is the
// new one if no other has been added.
CGDirectDisplayID addMonitor(const VirtualScreen &screen, const std::string &geometry,
                             const std::string &name = "added");

// A screen that shows a picture in which every pixel differs from its neighbours.
class PictureScreen : public UsedScreen {
public:
    PictureScreen(int width, int height, const std::vector<std::string> &extraArguments = {});

    // Fills a rectangle of the screen and of the picture.
    void paint(int x, int y, int width, int height, std::uint32_t colour);

    // This part of the picture as a frame shows it, black beyond the picture's edges; the second
    // form scales it to another size.
    Frame part(int x, int y, int width, int height) const;
    Frame part(int x, int y, int width, int height, int frameWidth, int frameHeight) const;

    Frame picture;
};

class StreamProbe {
public:
    static constexpr std::chrono::milliseconds patience{20000};

    // The stream may be null.
    StreamProbe(CGDirectDisplayID display, int width, int height, double minimumFrameTime = 0);
    // Stops and releases the stream.
    ~StreamProbe();
    StreamProbe(const StreamProbe &) = delete;
    StreamProbe &operator=(const StreamProbe &) = delete;

    CGDisplayStreamRef get() const { return stream; }
    CGError start() { return CGDisplayStreamStart(stream); }
    CGError stop() { return CGDisplayStreamStop(stream); }
    // Starts and waits for the first call of the handler; false when either fails.
    bool startAndWait() { return start() == kCGErrorSuccess && waitForCalls(1); }

    // Runs at the end of each call of the handler, on the queue. Set before the start.
    std::function<void(const HandlerCall &)> onCall;

    std::vector<HandlerCall> calls() const;
    std::size_t count(CGDisplayStreamFrameStatus status) const;

    // Each waits for its condition; false after `limit`.
    bool waitForCalls(std::size_t number, std::chrono::milliseconds limit = patience);
    bool waitForCount(CGDisplayStreamFrameStatus status, std::size_t number,
                      std::chrono::milliseconds limit = patience);
    // Until the latest frame satisfies `condition`.
    bool waitForFrame(const std::function<bool(const Frame &)> &condition,
                      std::chrono::milliseconds limit = patience);
    bool waitForFrame(const Frame &wanted);
    bool waitForPixel(int x, int y, std::uint32_t colour);

    Frame latestFrame() const;

private:
    void handle(CGDisplayStreamFrameStatus status, std::uint64_t displayTime, IOSurfaceRef surface);
    std::size_t countLocked(CGDisplayStreamFrameStatus status) const;

    const int width;
    const int height;
    CGDisplayStreamRef stream = nullptr;

    mutable std::mutex mutex;
    platform::MonotonicCondition changed;
    std::vector<HandlerCall> received;
    Frame latest;
};

} // namespace test
