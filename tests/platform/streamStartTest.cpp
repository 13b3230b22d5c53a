// The time between the creation of a stream's threads and the return of the start.
#include "tests/platform/processUsage.h"
#include "tests/platform/streamProbe.h"
#include "tests/support/virtualScreen.h"

#include <atomic>
#include <csignal>
#include <gtest/gtest.h>

using test::StreamProbe;
using test::UsedScreen;
using namespace std::chrono_literals;

namespace {

constexpr auto complete = kCGDisplayStreamFrameStatusFrameComplete;
constexpr auto stopped = kCGDisplayStreamFrameStatusStopped;

std::atomic<bool> isSlow = false;
std::thread::id slowThread;
std::mutex mutex;
platform::MonotonicCondition changed;
bool handlerIsOver = false; // guarded by the mutex

// The limit is long enough for a first frame on an idle machine.
void waitForHandler() {
    std::unique_lock lock(mutex);
    changed.waitUntil(lock, platform::Clock::now() + 300ms, [] { return handlerIsOver; });
}

} // namespace

// Signals are blocked around the creation of each thread, so the starting thread restores its mask
// here once per thread.
extern "C" {
int __real_pthread_sigmask(int how, const sigset_t *set, sigset_t *before);
int __wrap_pthread_sigmask(int how, const sigset_t *set, sigset_t *before);

int __wrap_pthread_sigmask(int how, const sigset_t *set, sigset_t *before) {
    const int result = __real_pthread_sigmask(how, set, before);
    if (how == SIG_SETMASK && isSlow && std::this_thread::get_id() == slowThread)
        waitForHandler();
    return result;
}
}

TEST(StreamStart, TheFirstCallOfTheHandlerMayStopTheStream) {
    const UsedScreen screen(64, 48);
    const std::size_t threads = test::threads();
    StreamProbe stream(test::onlyDisplay(), 64, 48);
    std::atomic<CGError> result = kCGErrorFailure;
    stream.onCall = [&](const test::HandlerCall &call) {
        if (call.status != complete)
            return;
        result = stream.stop();
        const std::lock_guard lock(mutex);
        handlerIsOver = true;
        changed.notifyAll();
    };
    slowThread = std::this_thread::get_id();
    isSlow = true;
    EXPECT_EQ(stream.start(), kCGErrorSuccess);
    isSlow = false;
    EXPECT_TRUE(stream.waitForCount(stopped, 1));
    EXPECT_EQ(result, kCGErrorSuccess);
    // The handler's last call is recorded before it returns.
    EXPECT_TRUE(test::threadsBecome(threads));
}
