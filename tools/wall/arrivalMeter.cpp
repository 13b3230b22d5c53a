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
        count = 0;
        return;
    }
    const double passed = std::chrono::duration<double, std::milli>(now - *before).count();
    if (count >= leastForGaps) {
        const double usual = *interval();
        if (passed > 2 * usual && passed > usual + leastExcess)
            ++gapCount;
    }
    intervals[next] = passed;
    next = (next + 1) % kept;
    count = std::min(count + 1, kept);
}

std::optional<double> ArrivalMeter::interval() const {
    if (count == 0)
        return std::nullopt;
    std::array<double, kept> sorted;
    for (std::size_t i = 0; i < count; ++i)
        sorted[i] = at(i);
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(count / 2);
    std::nth_element(sorted.begin(), middle, sorted.begin() + static_cast<std::ptrdiff_t>(count));
    return *middle;
}

std::optional<double> ArrivalMeter::jitter() const {
    if (count < 2)
        return std::nullopt;
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < count; ++i)
        sum += std::abs(at(i) - at(i + 1));
    return sum / static_cast<double>(count - 1);
}

} // namespace panelwall
