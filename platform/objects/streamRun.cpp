#include "platform/objects/streamRun.h"

#include "platform/objects/dispatchQueue.h"
#include "platform/objects/signals.h"

#include <Block.h>

namespace platform {

namespace {

// How long a stop waits for the capture thread before it breaks the connection, how long after
// that, and how long for the handler.
constexpr Clock::duration capturePatience = std::chrono::milliseconds(500);
constexpr Clock::duration brokenOffPatience = std::chrono::milliseconds(500);
constexpr Clock::duration handlerPatience = std::chrono::seconds(1);

std::uint64_t displayTimeOf(Clock::time_point time) {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count());
}

} // namespace

StreamRun::StreamRun(dispatch_queue_t queue, CGDisplayStreamFrameAvailableHandler handler)
    : queue(queue), handler(Block_copy(handler)) {}

StreamRun::~StreamRun() {
    Block_release(handler);
}

std::shared_ptr<StreamRun> StreamRun::start(const Source &source, const CaptureSettings &settings,
                                            dispatch_queue_t queue,
                                            CGDisplayStreamFrameAvailableHandler handler) {
    std::shared_ptr<StreamRun> run(new StreamRun(queue, handler));
    run->capture = source.openCapture(settings, run->gate);
    if (!run->capture)
        return nullptr;
    run->surface.base = run->capture->pixels;
    enterQueue(queue);
    try {
        run->thread = startThread([run] { run->captureThread(); });
    } catch (...) {
        leaveQueue(queue, {[](void *) {}, nullptr}, Clock::now() + handlerPatience);
        throw;
    }
    return run;
}

void StreamRun::begin() {
    const std::lock_guard lock(mutex);
    begun = true;
    changed.notifyAll();
}

// Capture thread.
void StreamRun::captureThread() {
    {
        std::unique_lock lock(mutex);
        while (!begun)
            changed.wait(lock);
    }
    try {
        capture->run([this](CaptureEvent event) { postEvent(event); });
    } catch (...) {
        // Out of memory for a new screen layout: no more frames, as when the server is gone.
    }
    const std::lock_guard lock(mutex);
    captureEnded = true;
    changed.notifyAll();
}

// Capture thread.
void StreamRun::postEvent(CaptureEvent event) {
    if (gate.isStopped())
        return;
    postToQueue(queue, {event == CaptureEvent::Frame ? onFrame : onBlank, shared_from_this()});
}

// Queue's thread, as are the next three.
void StreamRun::callHandler(CGDisplayStreamFrameStatus status, Clock::time_point time,
                            IOSurfaceRef surfaceOrNull) {
    if (!silent.load())
        handler(status, displayTimeOf(time), surfaceOrNull, nullptr);
}

void StreamRun::onFrame(void *context) {
    auto *run = static_cast<StreamRun *>(context);
    run->callHandler(kCGDisplayStreamFrameStatusFrameComplete, run->gate.begin(), &run->surface);
    run->gate.giveBack();
}

void StreamRun::onBlank(void *context) {
    static_cast<StreamRun *>(context)->callHandler(kCGDisplayStreamFrameStatusFrameBlank,
                                                   Clock::now(), nullptr);
}

void StreamRun::onStopped(void *context) {
    auto *run = static_cast<StreamRun *>(context);
    run->callHandler(kCGDisplayStreamFrameStatusStopped, Clock::now(), nullptr);
    run->silent.store(true);
}

bool StreamRun::endCapture() {
    gate.stop();
    bool ended = false;
    if (thread.get_id() != std::this_thread::get_id()) {
        std::unique_lock lock(mutex);
        const auto hasEnded = [this] { return captureEnded; };
        ended = changed.waitUntil(lock, Clock::now() + capturePatience, hasEnded);
        if (!ended) {
            capture->breakOff();
            ended = changed.waitUntil(lock, Clock::now() + brokenOffPatience, hasEnded);
        }
    }
    if (ended)
        thread.join();
    else
        thread.detach();
    return ended;
}

bool StreamRun::stop() {
    const bool captureIsOver = endCapture();
    const bool onQueue = isOnQueue(queue);
    const bool handlerIsOver =
        leaveQueue(queue, {onStopped, shared_from_this()}, Clock::now() + handlerPatience);
    if (onQueue)
        return captureIsOver;
    if (!handlerIsOver)
        silent.store(true);
    return captureIsOver && handlerIsOver;
}

} // namespace platform
