#include "tools/mirrorctl/libraryCall.h"

#include "tools/mirrorctl/server.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>
#include <unistd.h>
#include <utility>

namespace mirrorctl {

LibraryCall::LibraryCall(std::function<ExitStatus()> work) : done(std::make_shared<WakeUp>()) {
    std::packaged_task<ExitStatus()> task(std::move(work));
    outcome = task.get_future();
    std::thread([own = done, task = std::move(task)]() mutable {
        // What the work threw belongs to the other thread alone once this is done.
        std::exchange(task, {})();
        own->signal();
    }).detach();
}

bool LibraryCall::isDone() const {
    return awaitReadable({descriptor()}, 0);
}

bool reportInterruption(const char *nothing, const StopSignals &signals) {
    static std::atomic_flag isReported;
    const int signum = signals.take();
    if (signum != 0 && !isReported.test_and_set())
        // NOLINTNEXTLINE(concurrency-mt-unsafe): a known signal has a constant name
        std::fprintf(stderr, "%s: %s.\n", nothing, strsignal(signum));
    return signum != 0;
}

ExitStatus untilSignal(const StopSignals &signals, const char *nothing,
                       std::function<ExitStatus()> work) {
    ServerWatch watch;
    LibraryCall call(std::move(work));
    while (!call.isDone() && signals.take() == 0)
        awaitReadable({call.descriptor(), signals.descriptor()}, std::nullopt);
    if (!call.isDone()) {
        watch.ask();
        awaitReadable({call.descriptor()}, graceSeconds);
    }
    if (call.isDone())
        return call.result();
    reportInterruption(nothing, signals);
    if (watch.state() != ServerWatch::State::Absent && watch.owesAnswer())
        std::fputs(silentServerLine().c_str(), stderr);
    endAtOnce(ExitStatus::NothingSent);
}

void endAtOnce(ExitStatus status) {
    _exit(static_cast<int>(status));
}

} // namespace mirrorctl
