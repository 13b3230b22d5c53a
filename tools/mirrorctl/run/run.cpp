#include "tools/mirrorctl/run/run.h"

#include "mirror/mirrorInterface.h"
#include "tools/mirrorctl/mirroring.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace mirrorctl {

static constexpr double tryPause = 1.0; // seconds between two attempts to find the server again

Run::Run(const RunPlan &plan_, const StopSignals &signals_, LibraryMessages &messages_)
    : plan(plan_), signals(signals_), messages(messages_), reporter(plan_, messages_) {}

ExitStatus Run::startFirst() {
    reporter.restartClock();
    const ExitStatus status = start(plan.document.devices.size());
    // Wait for the server's first answer: a loss before it would not be noticed.
    constexpr double patience = 1.0;
    if (status == ExitStatus::Done && watch->state() == ServerWatch::State::Opening)
        awaitReadable({watch->descriptor()}, patience);
    return status;
}

ExitStatus Run::mirror() {
    reporter.reportStart();
    for (;;) {
        reporter.read();
        if (isOver())
            return end();
        if (phase == Phase::Mirroring)
            followServer();
        else if (phase == Phase::Waiting)
            awaitServer();
        else if (call->isDone())
            awaitCall();
        if (ending != ExitStatus::Done)
            return end();
        reporter.reportWhenDue();
        await();
    }
}

bool Run::isOver() {
    if (signals.firstSignal() != 0 || (plan.seconds && reporter.elapsed() >= *plan.seconds))
        return true;
    if (phase == Phase::Mirroring && !messages.endMessage().empty() && !hasServerGone())
        ending = ExitStatus::StartFailed;
    return ending != ExitStatus::Done;
}

// Called when a run has ended by itself: the watch may not have noticed the server's end yet.
bool Run::hasServerGone() {
    constexpr double patience = 0.2;
    const double deadline = reporter.elapsed() + patience;
    watch->ask();
    while (watch->state() == ServerWatch::State::Answering && watch->hasPendingRequest() &&
           reporter.elapsed() < deadline)
        awaitReadable({watch->descriptor()}, patience / 20);
    return watch->state() == ServerWatch::State::Gone;
}

void Run::followServer() {
    const auto found = watch->state();
    if (found == ServerWatch::State::Gone) {
        reporter.reportServer(
            ServerState::Gone, "serverGone",
            serverSentence(plan.once ? "has gone."
                                     : "has gone; the lights keep their last colours until it is "
                                       "back."));
        call.emplace(stop);
        phase = Phase::Stopping;
        return;
    }
    const bool isSilent = found == ServerWatch::State::Silent;
    const auto state = isSilent ? ServerState::Silent : ServerState::Answering;
    if (state != reporter.serverState())
        reporter.reportServer(state, isSilent ? "serverSilent" : "serverAnswers",
                              serverSentence(isSilent ? "does not answer." : "answers again."));
}

void Run::awaitServer() {
    if (!watch && reporter.elapsed() >= nextTry)
        watch.emplace();
    if (!watch)
        return;
    const auto found = watch->state();
    if (found == ServerWatch::State::Answering) {
        messages.forget();
        call.emplace([this] { return startAgain(); });
        phase = Phase::Starting;
    } else if (found == ServerWatch::State::Absent || found == ServerWatch::State::Gone) {
        watch.reset();
        nextTry = reporter.elapsed() + tryPause;
    }
}

// Runs on a LibraryCall's thread.
ExitStatus Run::startAgain() {
    if (!displayProblems(plan.document, listDisplays()).empty())
        return ExitStatus::DisplayMissing;
    std::string text = plan.text;
    if (setMirrorConfig(text.data()) != 1)
        return ExitStatus::CaptureRefused;
    return startMirror() == 1 ? ExitStatus::Done : ExitStatus::StartFailed;
}

// Handles the end of a call that stopped mirroring or started it again.
void Run::awaitCall() {
    const ExitStatus result = call->result();
    call.reset();
    if (phase == Phase::Starting && result == ExitStatus::Done) {
        isMissingReported = false;
        phase = Phase::Mirroring;
        reporter.reportServer(
            ServerState::Answering, "resumed",
            serverSentence("is back; display ") +
                std::to_string(static_cast<std::uint32_t>(plan.document.displayID)) +
                " is mirrored again.");
        return;
    }
    nextTry = reporter.elapsed();
    if (phase == Phase::Stopping) {
        if (plan.counter)
            plan.counter->tally().pause();
        if (result != ExitStatus::Done || plan.once)
            ending = result != ExitStatus::Done ? result : ExitStatus::ServerGone;
    } else {
        nextTry += tryPause;
        if (result == ExitStatus::DisplayMissing && !isMissingReported &&
            watch->state() == ServerWatch::State::Answering) {
            isMissingReported = true;
            reporter.reportServer(
                ServerState::Gone, "displayMissing",
                serverSentence("is back, but the display is not; waiting for it."));
        }
    }
    phase = Phase::Waiting;
    watch.reset();
}

void Run::await() const {
    std::optional<double> until = reporter.nextTime();
    const auto atLatest = [&](double time) { until = std::min(until.value_or(time), time); };
    if (plan.seconds)
        atLatest(*plan.seconds);
    if (phase == Phase::Waiting && !watch)
        atLatest(nextTry);
    std::optional<double> timeout;
    if (until)
        timeout = std::max(0.0, *until - reporter.elapsed());
    awaitReadable({messages.descriptor(), watch ? watch->descriptor() : -1,
                   call ? call->descriptor() : -1, signals.descriptor()},
                  timeout);
}

// Stops mirroring and any call in progress; false if it did not wait, since the server hangs.
bool Run::stopInTime() {
    const double deadline = reporter.elapsed() + graceSeconds;
    if (watch)
        watch->ask();
    if (phase == Phase::Mirroring) {
        call.emplace(stop);
        phase = Phase::Stopping;
    }
    while (call) {
        awaitReadable({call->descriptor()}, deadline - reporter.elapsed());
        if (!call->isDone() && (!watch || watch->hasPendingRequest()))
            return false;
        const ExitStatus result = call->result();
        call.reset();
        if (phase == Phase::Stopping && result != ExitStatus::Done)
            ending = result;
        if (phase == Phase::Starting && result == ExitStatus::Done)
            call.emplace(stop);
        phase = Phase::Stopping;
    }
    return true;
}

ExitStatus Run::end() {
    reporter.clearLine();
    if (signals.firstSignal() != 0 && plan.style != ReportStyle::Json)
        dprintf(messages.output(), "Stopping: %s.\n", signals.firstSignalName());
    const bool isStopped = stopInTime();
    if (ending == ExitStatus::Failed)
        return ending;
    reporter.read();
    if (ending == ExitStatus::StartFailed) {
        std::fprintf(stderr, "Mirroring ended by itself: %s\n", messages.endMessage().c_str());
        reportSilentServer();
    } else {
        if (!isStopped)
            std::fprintf(stderr, "%s\n",
                         serverSentence("does not answer; ended without waiting for it.").c_str());
        reporter.reportEnd();
    }
    if (ending == ExitStatus::ServerGone)
        std::fprintf(stderr, "Mirroring ended: %s has gone.\n", serverName().c_str());
    if (!isStopped) {
        watch.reset();
        call.reset();
        _exit(static_cast<int>(ending)); // the call may never return
    }
    return ending;
}

} // namespace mirrorctl
