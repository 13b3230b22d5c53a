#include "tools/recording/compareRecordings.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string_view>

namespace panelwall {

// After a difference, this many datagrams of each recording are searched for the next match.
static constexpr std::size_t searched = 64;

void Intervals::note(std::chrono::microseconds time) {
    if (last) {
        const double interval = static_cast<double>((time - *last).count()) / 1000.0;
        ++number;
        const double deviation = interval - average;
        average += deviation / static_cast<double>(number);
        squares += deviation * (interval - average);
        most = std::max(most, interval);
    }
    last = time;
}

double Intervals::spread() const {
    return number > 0 ? std::sqrt(squares / static_cast<double>(number)) : 0.0;
}

bool DeviceComparison::isSame(const Waiting &left, const Waiting &right) {
    return left.hash == right.hash && left.datagram.bytes == right.datagram.bytes;
}

void DeviceComparison::take(Side side, const RecordedDatagram &datagram) {
    const std::uint64_t number = found.datagrams[side]++;
    if (!lights::decode(layoutOfBoth, datagram.bytes).malformed.empty())
        ++found.malformed[side];
    found.intervals[side].note(datagram.time);
    const std::string_view text(reinterpret_cast<const char *>(datagram.bytes.data()),
                                datagram.bytes.size());
    queues[side].push_back(
        {{number, datagram.time, datagram.bytes}, std::hash<std::string_view>()(text)});
    heldBytes += sizeof(Waiting) + datagram.bytes.size();
    matchQueues();
}

void DeviceComparison::end(Side side) {
    ended[side] = true;
    matchQueues();
}

void DeviceComparison::matchQueues() {
    while (!queues[first].empty() && !queues[second].empty())
        if (!matchFronts())
            return;
    for (const Side side : bothSides)
        while (ended[other(side)] && !queues[side].empty())
            recordOnly(side);
}

// Returns false when it needs datagrams that have not been read yet.
bool DeviceComparison::matchFronts() {
    const Waiting &left = queues[first].front();
    const Waiting &right = queues[second].front();
    if (isSame(left, right)) {
        ++found.same;
        const auto delay = right.datagram.time - left.datagram.time;
        found.leastDelay = std::min(found.leastDelay.value_or(delay), delay);
        found.greatestDelay = std::max(found.greatestDelay.value_or(delay), delay);
        drop(first);
        drop(second);
        return true;
    }
    for (const Side side : bothSides)
        if (!ended[side] && queues[side].size() < searched)
            return false;
    const std::size_t ofFirst = std::min(queues[first].size(), searched);
    const std::size_t ofSecond = std::min(queues[second].size(), searched);
    for (std::size_t sum = 1; sum < ofFirst + ofSecond; ++sum) {
        for (std::size_t i = 0; i <= sum; ++i) {
            if (i < ofFirst && sum - i < ofSecond &&
                isSame(queues[first][i], queues[second][sum - i])) {
                recordChange(i, sum - i);
                return true;
            }
        }
    }
    recordChange(1, 1);
    return true;
}

void DeviceComparison::recordChange(std::size_t ofFirst, std::size_t ofSecond) {
    for (; ofFirst > 0 && ofSecond > 0; --ofFirst, --ofSecond) {
        noteDifference({first, second});
        ++found.changed;
        drop(first);
        drop(second);
    }
    for (; ofFirst > 0; --ofFirst)
        recordOnly(first);
    for (; ofSecond > 0; --ofSecond)
        recordOnly(second);
}

void DeviceComparison::recordOnly(Side side) {
    noteDifference({side});
    ++found.only[side];
    drop(side);
}

void DeviceComparison::noteDifference(std::initializer_list<Side> sides) {
    if (found.differs())
        return;
    for (const Side side : sides)
        found.firstDifference[side] = queues[side].front().datagram;
}

void DeviceComparison::drop(Side side) {
    heldBytes -= sizeof(Waiting) + queues[side].front().datagram.bytes.size();
    queues[side].pop_front();
}

} // namespace panelwall
