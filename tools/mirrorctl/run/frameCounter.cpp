#include "tools/mirrorctl/run/frameCounter.h"

#include "tools/config/modes.h"
#include "tools/lights/datagram.h"

#include <cmath>

namespace mirrorctl {

void FrameTally::Sums::add(double interval) {
    ++intervals;
    const double distance = interval - mean;
    mean += distance / static_cast<double>(intervals);
    squares += distance * (interval - mean);
}

std::optional<FrameTally::Pace> FrameTally::Sums::pace() const {
    if (intervals < 2 || mean <= 0.0)
        return std::nullopt;
    return Pace{1.0 / mean, std::sqrt(squares / static_cast<double>(intervals))};
}

void FrameTally::add(double time) {
    constexpr std::size_t maxRecent = 50; // two seconds of match mode
    ++count;
    if (last) {
        whole.add(time - *last);
        recent.push_back(time - *last);
        if (recent.size() > maxRecent)
            recent.pop_front();
    }
    last = time;
}

std::optional<FrameTally::Pace> FrameTally::recentPace() const {
    Sums sums;
    for (const double interval : recent)
        sums.add(interval);
    return sums.pace();
}

FrameCounter::FrameCounter(const config::Document &document)
    : receiver(document), own(receiver.device()) {
    own.panels.resize(document.mode == config::paletteMode ? 1 : 0);
}

void FrameCounter::read() {
    const auto layout = lights::layoutOf(own.controlVersion);
    const std::size_t expected = lights::datagramSize(layout, own.panels.size());
    while (const auto datagram = receiver.next())
        if (datagram->bytes.size() == expected) // any program on this machine can send here
            frames.add(datagram->time);
}

} // namespace mirrorctl
