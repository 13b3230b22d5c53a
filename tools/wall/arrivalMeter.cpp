#include "tools/wall/arrivalMeter.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace panelwall {

static constexpr double leastExcess = 20.0;

static std::int64_t tenthOf(Clock::time_point time) {
    return time.time_since_epoch() / std::chrono::milliseconds(100);
}

void ArrivalMeter::note(Clock::time_point now) {
    const std::int64_t number = tenthOf(now);
    Tenth &tenth = tenths[static_cast<std::size_t>(number) % tenths.size()];
    if (tenth.number != number)
        tenth = {number, 0};
    ++tenth.count;

    const auto before = lastArrival;
    lastArrival = now;
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

std::uint64_t ArrivalMeter::perSecond(Clock::time_point now) const {
    std::uint64_t sum = 0;
    for (const Tenth &tenth : tenths)
        if (tenth.number < tenthOf(now) && tenth.number >= tenthOf(now) - 10)
            sum += tenth.count;
    return sum;
}

std::optional<double> ArrivalMeter::interval() const {
    if (intervals.empty())
        return std::nullopt;
    std::vector<double> sorted(intervals.begin(), intervals.end());
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
