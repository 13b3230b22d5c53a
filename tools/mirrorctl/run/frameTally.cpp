#include "tools/mirrorctl/run/frameTally.h"

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
    constexpr std::size_t mostRecent = 50; // two seconds of match mode
    ++count;
    if (!isFirst) {
        const double interval = time - last;
        whole.add(interval);
        recent.push_back(interval);
        if (recent.size() > mostRecent)
            recent.pop_front();
    }
    isFirst = false;
    last = time;
}

std::optional<FrameTally::Pace> FrameTally::recentPace() const {
    Sums sums;
    for (const double interval : recent)
        sums.add(interval);
    return sums.pace();
}

std::optional<FrameTally::Pace> FrameTally::wholePace() const {
    return whole.pace();
}

} // namespace mirrorctl
