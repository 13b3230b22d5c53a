#include "tools/mirrorctl/libraryCall.h"

#include "tools/mirrorctl/server.h"

#include <cstdio>
#include <unistd.h>
#include <utility>

namespace mirrorctl {

LibraryCall::LibraryCall(std::function<ExitStatus()> work) : done(std::make_shared<WakeUp>()) {
    std::packaged_task<ExitStatus()> task(std::move(work));
    outcome = task.get_future();
    thread = std::thread([own = done, task = std::move(task)]() mutable {
        task();
        own->signal();
    });
}

LibraryCall::~LibraryCall() {
    if (thread.joinable())
        isDone() ? thread.join() : thread.detach();
}

ExitStatus LibraryCall::result() {
    thread.join(); // so that only this thread owns an exception from the work
    return outcome.get();
}

ExitStatus untilSignal(const StopSignals &signals, const char *nothing,
                       std::function<ExitStatus()> work) {
    ServerWatch watch;
    LibraryCall call(std::move(work));
    while (!call.isDone() && signals.firstSignal() == 0)
        awaitReadable({call.descriptor(), signals.descriptor()}, std::nullopt);
    if (!call.isDone()) {
        watch.ask();
        awaitReadable({call.descriptor()}, graceSeconds);
    }
    const bool isDone = call.isDone();
    const auto result = isDone ? call.result() : ExitStatus::NothingSent;
    if (signals.firstSignal() != 0 && result == ExitStatus::NothingSent)
        std::fprintf(stderr, "%s: %s.\n", nothing, signals.firstSignalName());
    if (isDone)
        return result;
    if (watch.state() != ServerWatch::State::Absent && watch.hasPendingRequest())
        std::fputs(silentServerLine().c_str(), stderr);
    _exit(static_cast<int>(result)); // the call may never return
}

} // namespace mirrorctl
