#include "tools/lightbridge/bridge.h"

#include "tools/lights/text.h"

#include <algorithm>
#include <poll.h>
#include <unistd.h>

namespace lightbridge {

Bridge::Bridge(const Options &options_, const config::Document &document_, const Sender &sender,
               panelwall::Receiver &receiver_, const Pattern *pattern_)
    : options(options_), document(document_), entry(*document_.bridge), receiver(receiver_),
      pattern(pattern_), wall(document_, options_.transitionUnit), limiter(document_),
      frameInterval(std::chrono::nanoseconds(std::chrono::seconds(1)) /
                    document_.bridge->framesPerSecond),
      malformedTold(document_.devices.size()) {
    for (const config::OutputEntry &output : entry.outputs)
        outputs.emplace_back(output, sender);
    lastOnes.resize(outputs.size());
    for (const panelwall::WallDevice &device : wall.devices())
        colours.resize(colours.size() + device.panels.size());
    if (pattern)
        phase = Phase::Showing;
}

void Bridge::run() {
    announce();
    while (!isOver) {
        waitUntil(nextDue());
        handleSignals();
        const auto now = Clock::now(); // all that has arrived before is received
        receive();
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

std::span<const Colour> Bridge::coloursOf(std::size_t output, Clock::time_point now) {
    const auto device = static_cast<std::size_t>(entry.outputs[output].device);
    const std::size_t count = document.devices[device].panels.size();
    if (!pattern)
        return std::span(colours).subspan(wall.devices()[device].firstPanel, count);
    colours.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        colours[i] = pattern->colourOf(output, i, now - start);
    return colours;
}

void Bridge::limitFlashes(Clock::time_point now) {
    if (!limiter.limit(colours, now))
        return;
    isPending = true;
    if (!limitTold)
        tell("limited: the colours would flash more than 3 times a second; some changes are "
             "delayed");
    limitTold = true;
}

void Bridge::showColours(Clock::time_point now) {
    isPending = pattern ? pattern->isMoving : wall.isMoving(now);
    if (!pattern) {
        std::size_t next = 0;
        for (const panelwall::WallDevice &device : wall.devices())
            for (const panelwall::WallPanel &panel : device.panels)
                colours[next++] = panel.shownAt(now).value_or(Colour{});
        if (options.limitsFlashes)
            limitFlashes(now);
    }
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        outputs[i].show(coloursOf(i, now), now);
        isPending = isPending || outputs[i].isSmoothing();
    }
}

void Bridge::beginEnd(Clock::time_point now) {
    phase = Phase::Ending;
    endFramesLeft = endFrames;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const std::span<const Colour> shown = coloursOf(i, now);
        lastOnes[i].assign(shown.begin(), shown.end());
        if (entry.atEnd != "hold")
            std::fill(lastOnes[i].begin(), lastOnes[i].end(),
                      entry.atEnd == "black" ? Colour{} : parseColour(entry.atEnd));
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
