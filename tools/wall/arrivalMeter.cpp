#include "tools/wall/arrivalMeter.h"

#include <algorithm>
#include <cmath>

namespace panelwall {

static constexpr double leastExcess = 20.0;

void ArrivalMeter::note(Clock::time_point now) {
    const auto before = last;
    last = now;
    if (!before)
        return;
    if (now - *before >= longestInterval) {
        intervals.clear();
        return;
    }
    const double passed = std::chrono::duration<double, std::milli>(now - *before).count();
    if (intervals.size() >= leastForGaps) {
        const double usual = *interval();
        if (passed > 2 * usual && passed > usual + leastExcess)
            ++gapCount;
    }
    intervals.push_back(passed);
    if (intervals.size() > kept)
        intervals.pop_front();
}

std::optional<double> ArrivalMeter::interval() const {
    if (intervals.empty())
        return std::nullopt;
    std::deque<double> sorted = intervals;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
}

std::optional<double> ArrivalMeter::jitter() const {
    if (intervals.size() < 2)
        return std::nullopt;
    double sum = 0.0;
    for (std::size_t i = 1; i < intervals.size(); ++i)
        sum += std::abs(intervals[i] - intervals[i - 1]);
    return sum / static_cast<double>(intervals.size() - 1);
}

} // namespace panelwall
