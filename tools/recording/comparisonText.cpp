#include "tools/lights/text.h"
#include "tools/recording/compareRecordings.h"

#include <algorithm>

namespace panelwall {

static std::string both(std::uint64_t left, std::uint64_t right) {
    return std::to_string(left) + " and " + std::to_string(right);
}

static std::string text(const lights::Colour &colour) {
    return lights::format("(%d, %d, %d)", colour.red, colour.green, colour.blue);
}

std::string describeDifference(Layout layout, const std::vector<std::uint8_t> &left,
                               const std::vector<std::uint8_t> &right) {
    const std::array decodings{lights::decode(layout, left), lights::decode(layout, right)};
    if (decodings[first].malformed != decodings[second].malformed) {
        const auto verdict = [](const std::string &malformed) {
            return malformed.empty() ? "well-formed" : "malformed (" + malformed + ")";
        };
        return verdict(decodings[first].malformed) + " and " + verdict(decodings[second].malformed);
    }
    const auto &ours = decodings[first].records;
    const auto &theirs = decodings[second].records;
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        const lights::Record &a = ours[i];
        const lights::Record &b = theirs[i];
        if (a.id != b.id)
            return "record " + std::to_string(i) + ": panel id " + both(a.id, b.id);
        const std::string panel = "panel id " + std::to_string(a.id) + ": ";
        if (a.colour != b.colour)
            return panel + "colour " + text(a.colour) + " and " + text(b.colour);
        if (a.transitionTime != b.transitionTime)
            return panel + "transition time " + both(a.transitionTime, b.transitionTime);
    }
    if (ours.size() != theirs.size())
        return both(ours.size(), theirs.size()) + " records";
    const auto parting = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    return "from byte " + std::to_string(parting.first - left.begin()) + " of " +
           both(left.size(), right.size());
}

static std::string placeOf(const NumberedDatagram &datagram) {
    return "datagram " + std::to_string(datagram.number) + " at " +
           lights::format("%.3f s", static_cast<double>(datagram.time.count()) / 1e6);
}

static std::string describeFirst(Layout layout, const DeviceFindings &found) {
    const auto &[left, right] = found.firstDifference;
    if (left && right)
        return placeOf(*left) + " and " + placeOf(*right) + ": " +
               describeDifference(layout, left->bytes, right->bytes);
    return placeOf(left ? *left : *right) + " is only in the " + (left ? "first" : "second");
}

static std::string describeIntervals(const Intervals &intervals) {
    if (intervals.count() == 0)
        return "none";
    return lights::format("%.1f ms (spread %.1f, longest %.1f)", intervals.mean(),
                          intervals.spread(), intervals.longest());
}

static std::string describeTiming(const DeviceFindings &found) {
    std::string text = "intervals " + describeIntervals(found.intervals[first]) + " and " +
                       describeIntervals(found.intervals[second]);
    if (found.leastDelay)
        text += lights::format("; the same datagrams come %.1f to %.1f ms later in the second",
                               static_cast<double>(found.leastDelay->count()) / 1000,
                               static_cast<double>(found.greatestDelay->count()) / 1000);
    return text;
}

static void describeDevice(const Comparison &comparison, const ComparedDevice &device,
                           std::vector<std::string> &lines) {
    const Side side = device.index[first] ? first : second;
    const std::size_t index = *device.index[side];
    const std::string name = lights::nameDevice(index, comparison.documents[side].devices[index]);
    const DeviceFindings &found = device.findings;
    if (!device.isInBoth()) {
        lines.push_back(name + ": only in the " + (side == first ? "first" : "second") + ", with " +
                        lights::counted(found.datagrams[side], "datagram"));
        return;
    }
    lines.push_back(name + ": " + (device.differs() ? "different" : "the same"));
    for (const std::string &line : device.configuration)
        lines.push_back("    configuration: " + line);
    lines.push_back("    datagrams: " + both(found.datagrams[first], found.datagrams[second]) +
                    ", of them malformed " + both(found.malformed[first], found.malformed[second]) +
                    "; " + std::to_string(found.same) + " the same, " +
                    std::to_string(found.changed) + " changed, " +
                    std::to_string(found.only[first]) + " only in the first, " +
                    std::to_string(found.only[second]) + " only in the second");
    if (found.differs())
        lines.push_back("    first difference: " + describeFirst(device.layout, found));
    lines.push_back("    timing: " + describeTiming(found));
}

std::vector<std::string> describe(const Comparison &comparison) {
    std::vector<std::string> lines;
    for (const std::string &line : comparison.configuration)
        lines.push_back("configuration: " + line);
    std::size_t different = 0;
    for (const ComparedDevice &device : comparison.devices) {
        describeDevice(comparison, device, lines);
        different += device.differs() ? 1 : 0;
    }
    const std::string all = lights::counted(comparison.devices.size(), "device");
    lines.push_back(comparison.differs() ? "different: " + std::to_string(different) + " of " + all
                                         : "the same: " + all);
    return lines;
}

} // namespace panelwall
