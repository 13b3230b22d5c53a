#include "tools/mirrorctl/run/run.h"

#include "mirror/mirrorInterface.h"
#include "tools/config/modes.h"
#include "tools/mirrorctl/steps.h"
#include "tools/mirrorctl/suitability.h"
#include "tools/mirrorctl/waiting.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

namespace mirrorctl {

static constexpr double tryPause = 1.0; // between two looks for a server that has gone
// Frames wait in the socket, with the time of their arrival, for the next report; this often when
// there is none, since a socket holds some hundreds.
static constexpr double readingPause = 2.0;

static double tellingPause(Telling telling) {
    return telling == Telling::live ? 0.5 : 1.0;
}

static std::string count(std::size_t number, const char *thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

static std::string describeLights(const config::Document &document) {
    std::size_t panels = 0;
    for (const auto &device : document.devices)
        panels += device.panels.size();
    return count(document.devices.size(), "device") + " with " + count(panels, "panel");
}

static std::size_t terminalColumns(int fd) {
    winsize size = {};
    if (ioctl(fd, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return 80;
    return size.ws_col;
}

static double wallClock() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

Run::Run(const RunPlan &planToFollow, const StopSignals &signalsToHeed, FrameWitness *counter,
         LibraryWords &library)
    : plan(planToFollow), signals(signalsToHeed), witness(counter), words(library),
      lights(describeLights(plan.document)), begin(Clock::now()) {
    watch.emplace();
}

ExitStatus Run::startFirst() {
    begin = Clock::now();
    const ExitStatus status = start(plan.document.devices.size());
    // Only a server that has been seen can go away.
    constexpr double patience = 1.0;
    if (status == ExitStatus::done && watch->state() == ServerWatch::State::opening)
        awaitReadable({watch->descriptor()}, patience);
    return status;
}

void Run::takeIn() {
    words.read(plan.telling == Telling::plain);
    if (!witness)
        return;
    const auto before = witness->tally().frames();
    witness->read();
    const double now = elapsed();
    if (witness->tally().frames() > before) {
        // The wall clock may have been set meanwhile.
        const double age = wallClock() - witness->tally().lastTime();
        lastFrame = now - std::clamp(age, 0.0, now - lastReading);
    }
    lastReading = now;
}

const char *Run::ownEnd() const {
    for (const char *line : {"Stream start failed!", "Error during runMirror"})
        if (words.haveHeard(line))
            return line;
    return nullptr;
}

// Asked when a run has ended by itself: the news of the server may be on the way.
bool Run::hasServerGone() {
    constexpr double patience = 0.2;
    const double deadline = elapsed() + patience;
    watch->ask();
    while (watch->state() == ServerWatch::State::answering && watch->owesAnswer() &&
           elapsed() < deadline)
        awaitReadable({watch->descriptor()}, patience / 20);
    return watch->state() == ServerWatch::State::gone;
}

bool Run::isOver() {
    if (signals.take() != 0 || (plan.seconds && elapsed() >= *plan.seconds))
        return true;
    if (phase == Phase::mirroring && ownEnd() && !hasServerGone())
        ending = ExitStatus::startFailed;
    return ending != ExitStatus::done;
}

void Run::announce(const char *event, const std::string &sentence) {
    if (plan.telling == Telling::plain)
        fprintf(stderr, "%s\n", sentence.c_str());
    else
        tell(event, false);
}

void Run::note(ServerState next) {
    if (next == server)
        return;
    server = next;
    serverSince = elapsed();
    if (next == ServerState::silent)
        announce("serverSilent", aboutServer("does not answer."));
    else if (next == ServerState::answering)
        announce("serverAnswers", aboutServer("answers again."));
}

void Run::beginOutage() {
    server = ServerState::gone;
    serverSince = elapsed();
    announce("serverGone", aboutServer(plan.once ? "has gone."
                                                 : "has gone; the lights keep their last colours "
                                                   "until it is back."));
    call.emplace(stop);
    phase = Phase::stopping;
}

void Run::endOutage() {
    outages += elapsed() - serverSince;
    server = ServerState::answering;
    serverSince = elapsed();
    isMissed = false;
    phase = Phase::mirroring;
    announce("resumed", aboutServer("is back; display ") +
                            std::to_string(static_cast<std::uint32_t>(plan.document.displayID)) +
                            " is mirrored again.");
}

// On a LibraryCall's thread.
ExitStatus Run::startAgain() {
    if (!displayProblems(plan.document, listDisplays()).empty())
        return ExitStatus::displayMissing;
    std::string text = plan.text;
    if (setMirrorConfig(text.data()) != 1)
        return ExitStatus::captureRefused;
    return startMirror() == 1 ? ExitStatus::done : ExitStatus::startFailed;
}

void Run::awaitServer() {
    if (!watch && elapsed() >= nextTry)
        watch.emplace();
    if (!watch)
        return;
    const auto found = watch->state();
    if (found == ServerWatch::State::answering) {
        words.forget();
        call.emplace([this] { return startAgain(); });
        phase = Phase::starting;
    } else if (found == ServerWatch::State::absent || found == ServerWatch::State::gone) {
        watch.reset();
        nextTry = elapsed() + tryPause;
    }
}

void Run::followServer() {
    if (phase == Phase::mirroring) {
        const auto found = watch->state();
        if (found == ServerWatch::State::gone)
            beginOutage();
        else
            note(found == ServerWatch::State::silent ? ServerState::silent
                                                     : ServerState::answering);
    } else if (phase == Phase::waiting) {
        awaitServer();
    } else if (call->isDone()) {
        const ExitStatus outcome = call->result();
        call.reset();
        if (phase == Phase::starting && outcome == ExitStatus::done) {
            endOutage();
            return;
        }
        if (phase == Phase::stopping) {
            if (witness)
                witness->pause();
            if (outcome != ExitStatus::done || plan.once)
                ending = outcome != ExitStatus::done ? outcome : ExitStatus::serverGone;
        } else if (outcome == ExitStatus::displayMissing && !isMissed &&
                   watch->state() == ServerWatch::State::answering) {
            isMissed = true;
            announce("displayMissing",
                     aboutServer("is back, but the display is not; waiting for it."));
        }
        nextTry = elapsed() + (phase == Phase::stopping ? 0.0 : tryPause);
        phase = Phase::waiting;
        watch.reset();
    }
}

void Run::await() {
    const double now = elapsed();
    std::optional<double> until;
    const auto atLatest = [&](double time) { until = std::min(until.value_or(time), time); };
    if (plan.seconds)
        atLatest(*plan.seconds);
    if (plan.telling != Telling::plain)
        atLatest(nextTelling);
    else if (witness && phase == Phase::mirroring)
        atLatest(now + readingPause);
    if (phase == Phase::waiting && !watch)
        atLatest(nextTry);
    std::optional<double> timeout;
    if (until)
        timeout = std::max(0.0, *until - now);
    signals.waitForInput(
        {words.descriptor(), watch ? watch->descriptor() : -1, call ? call->descriptor() : -1},
        timeout);
}

ExitStatus Run::goOn() {
    FILE *out = words.output();
    if (plan.telling != Telling::json)
        fprintf(out, "Mirroring display %u in %s mode onto %s. Ctrl-C stops.\n",
                static_cast<std::uint32_t>(plan.document.displayID),
                config::modeName(plan.document.mode), lights.c_str());
    tell("started", false);
    nextTelling = elapsed() + tellingPause(plan.telling);
    for (;;) {
        takeIn();
        if (isOver())
            break;
        followServer();
        if (ending != ExitStatus::done)
            break;
        if (plan.telling != Telling::plain && elapsed() >= nextTelling) {
            tell("running", false);
            nextTelling = elapsed() + tellingPause(plan.telling);
        }
        await();
    }
    return end();
}

// Stops what is still going on; false when it was not waited for, since the server hangs.
bool Run::stopInTime() {
    const double deadline = elapsed() + graceSeconds;
    if (watch)
        watch->ask();
    if (phase == Phase::mirroring) {
        call.emplace(stop);
        phase = Phase::stopping;
    }
    while (call) {
        awaitReadable({call->descriptor()}, deadline - elapsed());
        if (!call->isDone() && (!watch || watch->owesAnswer()))
            return false;
        const ExitStatus outcome = call->result();
        call.reset();
        if (phase == Phase::stopping && outcome != ExitStatus::done)
            ending = outcome;
        if (phase == Phase::starting && outcome == ExitStatus::done)
            call.emplace(stop);
        phase = Phase::stopping;
    }
    return true;
}

ExitStatus Run::end() {
    FILE *out = words.output();
    const bool isJson = plan.telling == Telling::json;
    if (plan.telling == Telling::live)
        tell("", true);
    if (const int signum = signals.take(); signum != 0 && !isJson)
        // NOLINTNEXTLINE(concurrency-mt-unsafe): a known signal has a constant name
        fprintf(out, "Stopping: %s.\n", strsignal(signum));
    const bool isStopped = stopInTime();
    if (ending == ExitStatus::failed)
        return ending;
    takeIn();
    if (ending == ExitStatus::startFailed) {
        fprintf(stderr, "Mirroring ended by itself: %s\n", ownEnd());
        tellServerSilence();
        return ending;
    }
    if (!isStopped)
        fprintf(stderr, "%s\n",
                aboutServer("does not answer; ended without waiting for it.").c_str());
    if (server == ServerState::gone)
        outages += elapsed() - serverSince;
    if (isJson) {
        tell("stopped", true);
    } else {
        const RunState final = state(true);
        fprintf(out, "Mirrored display %u for %.1f s onto %s.\n%s",
                static_cast<std::uint32_t>(plan.document.displayID), final.elapsed, lights.c_str(),
                summary(final).c_str());
    }
    if (ending == ExitStatus::serverGone)
        fprintf(stderr, "Mirroring ended: %s has gone.\n", serverName().c_str());
    if (!isStopped)
        endAtOnce(ending);
    return ending;
}

RunState Run::state(bool atEnd) const {
    RunState now;
    now.mode = plan.document.mode;
    now.elapsed = elapsed();
    now.planned = plan.seconds;
    now.isCounted = witness != nullptr;
    now.silence = now.elapsed - lastFrame;
    now.errors = words.lines();
    now.lastError = words.last();
    now.server = server;
    now.outage = server == ServerState::answering ? 0.0 : now.elapsed - serverSince;
    now.wholeOutage = outages;
    if (witness) {
        now.frames = witness->tally().frames();
        if (atEnd)
            now.pace = witness->tally().wholePace();
        else if (server != ServerState::gone)
            now.pace = witness->tally().recentPace();
    }
    return now;
}

void Run::tell(const char *event, bool atEnd) {
    FILE *out = words.output();
    if (plan.telling == Telling::json)
        fprintf(out, "%s\n", jsonLine(event, state(atEnd)).c_str());
    else if (plan.telling == Telling::live && atEnd)
        fputs("\r\x1b[K", out);
    else if (plan.telling == Telling::live)
        fprintf(out, "\r\x1b[K%s",
                liveLine(state(false), terminalColumns(fileno(out)) - 1).c_str());
    fflush(out);
}

} // namespace mirrorctl
