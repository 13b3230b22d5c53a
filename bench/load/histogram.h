// A histogram of interval lengths.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace load {

// Quantiles are accurate to ten microseconds, for intervals shorter than ten seconds. Minimum and
// maximum are exact.
class Histogram {
public:
    void add(std::int64_t nanoseconds) {
        least = count == 0 ? nanoseconds : std::min(least, nanoseconds);
        most = count == 0 ? nanoseconds : std::max(most, nanoseconds);
        ++count;
        const auto bin = std::clamp<std::int64_t>(nanoseconds / binWidth, 0, binCount - 1);
        ++bins[static_cast<std::size_t>(bin)];
    }

    std::uint64_t size() const { return count; }

    // In milliseconds; q from 0 to 1. 0 when there are none.
    double quantile(double q) const {
        if (q <= 0 || q >= 1)
            return static_cast<double>(q <= 0 ? least : most) / 1e6;
        const auto wanted = static_cast<std::uint64_t>(q * static_cast<double>(count));
        std::uint64_t seen = 0;
        for (std::size_t bin = 0; bin < bins.size(); ++bin) {
            seen += bins[bin];
            if (seen > wanted)
                return static_cast<double>(bin) * binWidth / 1e6;
        }
        return 0;
    }

private:
    static constexpr std::int64_t binWidth = 10'000;
    static constexpr std::int64_t binCount = 1'000'000;

    std::vector<std::uint64_t> bins = std::vector<std::uint64_t>(binCount);
    std::uint64_t count = 0;
    std::int64_t least = 0;
    std::int64_t most = 0;
};

} // namespace load
