#include "tools/wall/transition.h"

#include <algorithm>
#include <cmath>

namespace panelwall {

void Transition::moveTo(Colour target, Clock::duration newLength, Clock::time_point now) {
    from = channelsAt(now);
    to = {static_cast<double>(target.red), static_cast<double>(target.green),
          static_cast<double>(target.blue)};
    begin = now;
    length = newLength;
}

Transition::Channels Transition::channelsAt(Clock::time_point now) const {
    const auto passed = std::max(now - begin, Clock::duration::zero());
    if (passed >= length)
        return to;
    const double share = std::chrono::duration<double>(passed) / length;
    Channels channels;
    for (std::size_t i = 0; i < channels.size(); ++i)
        channels[i] = from[i] + (to[i] - from[i]) * share;
    return channels;
}

Colour Transition::at(Clock::time_point now) const {
    const Channels channels = channelsAt(now);
    const auto channel = [](double value) { return static_cast<std::uint8_t>(std::lround(value)); };
    return {channel(channels[0]), channel(channels[1]), channel(channels[2])};
}

Clock::duration Transition::left(Clock::time_point now) const {
    return from == to ? Clock::duration::zero()
                      : std::clamp(length - (now - begin), Clock::duration::zero(), length);
}

} // namespace panelwall
