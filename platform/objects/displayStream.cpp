// Display streams.
//
// A stream that is not running is a little heap memory and nothing else: no descriptor, no thread,
// no connection. Everything is taken at the start and given back at the stop.
//
// The handler is called on the stream's queue with
//     complete   and the surface, after the start and then whenever the screen has changed
//     blank      once when the monitor goes away; complete frames resume when it returns
//     stopped    as the last call of a run
// Idle notifications are not sent: a screen that holds still costs nothing at all.
#include "platform/objects/coreFoundation.h"
#include "platform/objects/signals.h"
#include "platform/objects/streamRun.h"

#include <Block.h>
#include <CoreGraphics/CoreGraphics.h>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <mutex>
#include <unistd.h>

struct CGDisplayStream {
    platform::ObjectHeader header{platform::ObjectType::DisplayStream};
    platform::CaptureSettings settings;
    dispatch_queue_t queue = nullptr;
    CGDisplayStreamFrameAvailableHandler handler = nullptr;

    // Under the mutex of the running streams.
    std::shared_ptr<platform::StreamRun> run;
    bool starting = false;
    CGDisplayStream *nextRunning = nullptr;
};

namespace {

constinit __CFString minimumFrameTimeKey{
    platform::ObjectHeader(platform::ObjectType::String, true)};
constinit __CFString showCursorKey{platform::ObjectHeader(platform::ObjectType::String, true)};

constexpr std::int32_t formatBgra = 0x42475241;
constexpr std::size_t largestSide = 65535;
constexpr std::size_t largestFrameBytes = std::size_t{1} << 30;
constexpr double longestFrameTime = 86400;

// All of these outlive every destructor of the library, so that a run can be stopped at any time.
constinit std::mutex runningMutex;
constinit CGDisplayStream *firstRunning = nullptr;
constinit std::atomic<pid_t> runningProcess = 0;

// Nobody is interrupted while holding it, since an exit in a signal handler takes it as well.
class RunningLock {
    const platform::QuietSignals quiet;
    const std::lock_guard<std::mutex> lock{runningMutex};
};

// What a child of fork() finds in the list are its parent's streams.
void list(CGDisplayStream *stream) {
    if (runningProcess != getpid())
        firstRunning = nullptr;
    runningProcess = getpid();
    stream->nextRunning = firstRunning;
    firstRunning = stream;
}

void unlist(CGDisplayStream *stream) {
    for (CGDisplayStream **link = &firstRunning; *link != nullptr; link = &(*link)->nextRunning)
        if (*link == stream) {
            *link = stream->nextRunning;
            return;
        }
}

platform::Clock::duration minimumFrameTimeOf(CFDictionaryRef properties) {
    const double seconds =
        platform::numberOf(properties, kCGDisplayStreamMinimumFrameTime).value_or(0.0);
    if (!(seconds > 0))
        return platform::Clock::duration::zero();
    return std::chrono::duration_cast<platform::Clock::duration>(
        std::chrono::duration<double>(std::min(seconds, longestFrameTime)));
}

// The end of a process or of the library while a stream runs, which nobody will stop any more. Runs
// after the destructors of all static objects: until then somebody might still. A child of fork()
// has none of the threads and leaves its parent's server alone; nor does it touch the mutex, which
// a thread of its parent's may have held.
__attribute__((destructor(101))) void stopRunningStreams() {
    while (runningProcess == getpid()) {
        CGDisplayStream *stream = nullptr;
        {
            const RunningLock lock;
            stream = firstRunning;
        }
        if (stream == nullptr)
            return;
        CGDisplayStreamStop(stream);
    }
}

} // namespace

constinit const CFStringRef kCGDisplayStreamMinimumFrameTime = &minimumFrameTimeKey;
constinit const CFStringRef kCGDisplayStreamShowCursor = &showCursorKey;

// The pointer is never part of what an X server hands out, so that kCGDisplayStreamShowCursor
// changes nothing.
CGDisplayStreamRef
CGDisplayStreamCreateWithDispatchQueue(CGDirectDisplayID display, size_t outputWidth,
                                       size_t outputHeight, int32_t pixelFormat,
                                       CFDictionaryRef properties, dispatch_queue_t queue,
                                       CGDisplayStreamFrameAvailableHandler handler) {
    if (queue == nullptr || handler == nullptr || pixelFormat != formatBgra)
        return nullptr;
    if (outputWidth == 0 || outputHeight == 0 || outputWidth > largestSide ||
        outputHeight > largestSide || outputWidth * outputHeight * 4 > largestFrameBytes)
        return nullptr;
    const platform::SigpipeGuard guard;
    try {
        if (!platform::canCapture(display))
            return nullptr;
        auto stream = std::make_unique<CGDisplayStream>();
        stream->settings = {display, static_cast<int>(outputWidth), static_cast<int>(outputHeight),
                            minimumFrameTimeOf(properties)};
        stream->queue = queue;
        stream->handler = Block_copy(handler);
        return stream.release();
    } catch (...) {
        return nullptr;
    }
}

// Errors: a null stream, a stream that runs already, a display that cannot be captured now.
CGError CGDisplayStreamStart(CGDisplayStreamRef displayStream) {
    if (displayStream == nullptr)
        return kCGErrorIllegalArgument;
    {
        const RunningLock lock;
        if (displayStream->run || displayStream->starting)
            return kCGErrorInvalidOperation;
        displayStream->starting = true;
    }
    const platform::SigpipeGuard guard;
    std::shared_ptr<platform::StreamRun> run;
    try {
        run = platform::StreamRun::start(displayStream->settings, displayStream->queue,
                                         displayStream->handler);
    } catch (...) {
        // Out of memory, descriptors or threads: as if the display could not be captured.
    }
    const RunningLock lock;
    displayStream->starting = false;
    if (!run)
        return kCGErrorFailure;
    displayStream->run = std::move(run);
    list(displayStream);
    displayStream->run->begin();
    return kCGErrorSuccess;
}

// Errors: a null stream, a stream that does not run, a handler that did not return in time.
CGError CGDisplayStreamStop(CGDisplayStreamRef displayStream) {
    if (displayStream == nullptr)
        return kCGErrorIllegalArgument;
    const platform::SigpipeGuard guard;
    std::shared_ptr<platform::StreamRun> run;
    {
        const RunningLock lock;
        run = std::move(displayStream->run);
        if (!run)
            return kCGErrorInvalidOperation;
        unlist(displayStream);
    }
    try {
        return run->stop() ? kCGErrorSuccess : kCGErrorFailure;
    } catch (...) {
        return kCGErrorFailure;
    }
}

// A stream that still runs is stopped first.
void platform::destroyDisplayStream(ObjectHeader *header) {
    auto *stream = reinterpret_cast<CGDisplayStream *>(header);
    CGDisplayStreamStop(stream);
    Block_release(stream->handler);
    delete stream;
}
