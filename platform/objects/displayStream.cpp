// Display streams.
//
// A stream that is not running is only a little heap memory: no descriptor, no thread, no
// connection. The start acquires all of these and the stop releases them.
//
// The handler is called on the stream's queue with
//     complete   and the surface, after the start and then whenever the screen has changed
//     blank      once when the monitor goes away; complete frames resume when it returns
//     stopped    as the last call of a run
// Idle notifications are not sent: a still screen costs nothing at all.
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
    const platform::Source *source = nullptr; // the same for the stream's whole life
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

// Locks the mutex with signals blocked, since an exit in a signal handler locks it as well.
class RunningLock {
    const platform::QuietSignals quiet;
    const std::lock_guard<std::mutex> lock{runningMutex};
};

// In a child of fork(), the list still holds its parent's streams: they are dropped.
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

// Stops the streams that still run when the process ends or the library is unloaded. Runs after the
// destructors of all static objects, since these may stop streams themselves. In a child of fork()
// it does nothing: the child has none of the threads, the server connection is its parent's, and a
// thread of the parent may have held the mutex.
__attribute__((destructor(102))) void stopRunningStreams() {
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

// An X server's images never include the mouse pointer, so kCGDisplayStreamShowCursor has no
// effect.
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
        const platform::Source &source = platform::sessionSource();
        if (!source.canCapture(display))
            return nullptr;
        auto stream = std::make_unique<CGDisplayStream>();
        stream->source = &source;
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
        run = platform::StreamRun::start(*displayStream->source, displayStream->settings,
                                         displayStream->queue, displayStream->handler);
    } catch (...) {
        // Out of memory, descriptors or threads: treated like a display that cannot be captured.
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
