// One run of a display stream, from its start to its stop: the capture thread, and the calls of
// the handler on the queue.
//
// The threads share ownership of the run, so that nothing is freed that one of them may still use,
// even when a stop timed out waiting for it.
#pragma once

#include "platform/objects/ioSurface.h"
#include "platform/objects/monotonicCondition.h"
#include "platform/objects/source.h"

#include <CoreGraphics/CoreGraphics.h>
#include <memory>
#include <mutex>
#include <thread>

namespace platform {

class StreamRun : public std::enable_shared_from_this<StreamRun> {
public:
    // Null when the display cannot be captured now. The handler is retained, and not called before
    // begin(). Host's thread, under a SigpipeGuard; bounded in time. Throws std::bad_alloc and
    // std::system_error.
    static std::shared_ptr<StreamRun> start(const Source &source, const CaptureSettings &settings,
                                            dispatch_queue_t queue,
                                            CGDisplayStreamFrameAvailableHandler handler);
    ~StreamRun();
    StreamRun(const StreamRun &) = delete;
    StreamRun &operator=(const StreamRun &) = delete;

    // Lets the handler be called. Call once, after the stream has been recorded as running, since
    // the handler's first call may stop it. Host's thread.
    void begin();

    // Call once, on any thread. Ends the capture, posts the handler's last call, with the stopped
    // status, and returns when that call has returned and all threads of the run have ended. False
    // when one did not end in time: it is left running, and the handler is not called again after
    // the call that hangs. On the queue itself, the stopped call comes after the return.
    bool stop();

private:
    explicit StreamRun(dispatch_queue_t queue, CGDisplayStreamFrameAvailableHandler handler);

    void captureThread();
    bool endCapture();
    void postEvent(CaptureEvent event);
    void callHandler(CGDisplayStreamFrameStatus status, Clock::time_point time,
                     IOSurfaceRef surfaceOrNull);
    static void onFrame(void *run);
    static void onBlank(void *run);
    static void onStopped(void *run);

    const dispatch_queue_t queue;
    const CGDisplayStreamFrameAvailableHandler handler;
    FrameGate gate;
    std::optional<Capture> capture;
    __IOSurface surface;
    std::atomic<bool> silent = false; // the handler is no longer called

    std::thread thread; // used by the starting and the stopping thread
    std::mutex mutex;
    MonotonicCondition changed;
    bool begun = false; // under the mutex, as is the next
    bool captureEnded = false;
};

} // namespace platform
