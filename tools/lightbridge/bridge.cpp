#include "tools/lightbridge/bridge.h"

#include "tools/lights/text.h"

#include <algorithm>
#include <poll.h>
#include <unistd.h>

namespace lightbridge {

Bridge::Bridge(const Options &options_, const config::Document &document_, const Sender &sender,
               panelwall::Receiver &receiver_, const Pattern *pattern_)
    : options(options_), document(document_), entry(*document_.bridge), receiver(receiver_),
      pattern(pattern_), wall(document_, options_.transitionUnit),
      frameInterval(std::chrono::nanoseconds(std::chrono::seconds(1)) /
                    document_.bridge->framesPerSecond),
      malformedTold(document_.devices.size()) {
    for (const config::OutputEntry &output : entry.outputs)
        outputs.emplace_back(output, sender);
    lastOnes.resize(outputs.size());
    if (pattern)
        phase = Phase::Showing;
}

void Bridge::run() {
    announce();
    while (!isOver) {
        waitUntil(nextDue());
        handleSignals();
        receive();
        const auto now = Clock::now();
        if (options.duration && now - start >= *options.duration)
            isLeaving = true;
        advance(now);
        tellNews(now);
    }
    for (std::size_t i = 0; i < outputs.size(); ++i)
        tell("ended: " + config::nameOutput(entry.outputs[i]) + ": " +
             lights::counted(outputs[i].frames(), "frame") + " in " +
             lights::counted(outputs[i].packets(), "packet") + ", " +
             std::to_string(outputs[i].failures()) + " of them not sent");
}

void Bridge::announce() {
    if (!pattern)
        for (std::size_t i = 0; i < document.devices.size(); ++i)
            tell("listening: " + lights::nameDevice(i, document.devices[i]) + ", " +
                 lights::counted(document.devices[i].panels.size(), "panel"));
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const config::OutputEntry &output = entry.outputs[i];
        const auto device = static_cast<std::size_t>(output.device);
        const std::size_t pixels = document.devices[device].panels.size() *
                                   static_cast<std::size_t>(output.pixelsPerPanel);
        tell("driving: " + config::nameOutput(output) + ", " +
             config::describePackets(output, pixels));
    }
}

void Bridge::waitUntil(Clock::time_point when) {
    std::vector<pollfd> waiting{{signals.fd(), POLLIN, 0}};
    for (const int fd : receiver.fds())
        waiting.push_back({fd, POLLIN, 0});
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(when - Clock::now());
    const auto patience = std::clamp<std::int64_t>(left.count(), 0, 60'000);
    poll(waiting.data(), waiting.size(), static_cast<int>(patience));
}

void Bridge::handleSignals() {
    while (const auto signal = signals.next()) {
        if (*signal == SIGTSTP)
            kill(getpid(), SIGSTOP);
        else if (*signal == SIGINT || *signal == SIGTERM || *signal == SIGHUP)
            isLeaving = true;
    }
}

void Bridge::receive() {
    receiver.readAll([this](std::size_t device, Bytes bytes, Clock::time_point arrival) {
        const std::uint64_t malformed = wall.devices()[device].malformed;
        wall.receive(device, bytes, arrival);
        if (wall.devices()[device].malformed != malformed) {
            noteMalformed(device);
            return;
        }
        lastArrival = std::max(lastArrival, arrival);
        isPending = true;
        if (!isLeaving)
            phase = Phase::Showing;
    });
}

void Bridge::noteMalformed(std::size_t device) {
    if (malformedTold[device])
        return;
    malformedTold[device] = true;
    tell(lights::nameDevice(device, document.devices[device]) +
         ": a datagram is malformed: " + wall.devices()[device].lastMalformed +
         "; malformed ones are ignored; give the sender the same configuration");
}

void Bridge::advance(Clock::time_point now) {
    const bool isSilent = entry.stopAfter > 0 && !pattern && now >= silenceEnd();
    if (phase == Phase::Showing && (isLeaving || isSilent)) {
        beginEnd(now);
        if (!isLeaving)
            tell("stopped: nothing has arrived for " +
                 lights::counted(static_cast<std::size_t>(entry.stopAfter), "second"));
    }
    if (phase == Phase::Waiting || phase == Phase::Stopped) {
        isOver = isLeaving;
        return;
    }
    if (now < nextFrame)
        return;
    nextFrame = now + frameInterval;
    if (phase == Phase::Showing)
        showColours(now);
    else
        sendEnd(now);
}

void Bridge::collect(std::size_t output, Clock::time_point now) {
    const auto &panels =
        wall.devices()[static_cast<std::size_t>(entry.outputs[output].device)].panels;
    colours.clear();
    for (std::size_t i = 0; i < panels.size(); ++i)
        colours.push_back(pattern ? pattern->colourOf(output, i, now - start)
                                  : panels[i].shownAt(now).value_or(Colour{}));
}

void Bridge::showColours(Clock::time_point now) {
    isPending = pattern ? pattern->isMoving : wall.isMoving(now);
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        collect(i, now);
        outputs[i].show(colours, now);
        isPending = isPending || outputs[i].isSmoothing();
    }
}

void Bridge::beginEnd(Clock::time_point now) {
    phase = Phase::Ending;
    endFramesLeft = endFrames;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        collect(i, now);
        if (entry.atEnd != "hold") {
            const Colour last = entry.atEnd == "black" ? Colour{} : parseColour(entry.atEnd);
            std::fill(colours.begin(), colours.end(), last);
        }
        lastOnes[i] = colours;
    }
}

void Bridge::sendEnd(Clock::time_point now) {
    --endFramesLeft;
    for (std::size_t i = 0; i < outputs.size(); ++i)
        outputs[i].finish(lastOnes[i], endFramesLeft < endFrames - 1, now);
    if (endFramesLeft > 0)
        return;
    phase = Phase::Stopped;
    isOver = isLeaving;
}

Clock::time_point Bridge::silenceEnd() const {
    return lastArrival + std::chrono::seconds(entry.stopAfter);
}

Clock::time_point Bridge::nextDue() const {
    Clock::time_point due = Clock::time_point::max();
    if (phase == Phase::Ending || (phase == Phase::Showing && isPending))
        due = nextFrame;
    if (phase == Phase::Showing) {
        for (const Output &output : outputs)
            due = std::min(due, std::max(nextFrame, output.repeatDue()));
        if (entry.stopAfter > 0 && !pattern)
            due = std::min(due, silenceEnd());
    }
    if (options.duration)
        due = std::min(due, start + *options.duration);
    return isLeaving ? std::min(due, nextFrame) : due;
}

void Bridge::tellNews(Clock::time_point now) {
    for (std::size_t i = 0; i < outputs.size(); ++i)
        if (const std::string news = outputs[i].news(now); !news.empty())
            tell(config::nameOutput(entry.outputs[i]) + " " + news);
}

// A reader that accepts no output misses lines, and the lights do not wait for it.
void Bridge::tell(const std::string &text) {
    if (panelwall::canWrite(STDOUT_FILENO))
        panelwall::writeAll(STDOUT_FILENO, text + "\n");
}

} // namespace lightbridge
