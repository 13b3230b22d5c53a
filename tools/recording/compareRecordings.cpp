#include "tools/recording/compareRecordings.h"

#include "tools/lights/text.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace panelwall {

namespace {

// For each recording, the index of each of its devices in Comparison::devices.
using Places = std::array<std::vector<std::size_t>, 2>;

// One pass over both recordings, for the devices in `wanted`.
class Pass {
public:
    Pass(const OpenRecording &open, const std::vector<ComparedDevice> &devices,
         const Places &places_, const std::vector<std::size_t> &wanted)
        : places(places_), readers{open(first), open(second)} {
        for (const std::size_t device : wanted) {
            const auto made = comparisons.emplace(device, devices[device].layout).first;
            for (const Side side : bothSides)
                if (!devices[device].index[side])
                    made->second.end(side);
        }
    }

    // Returns the devices that were dropped to hold at most `maxHeld` bytes.
    std::vector<std::size_t> run(std::size_t maxHeld) {
        while (const auto side = chooseSide()) {
            if (readers[*side].next(datagram)) {
                take(*side, maxHeld);
            } else {
                ended[*side] = true;
                for (auto &[device, comparison] : comparisons)
                    comparison.end(*side);
            }
        }
        return leftOut;
    }

    // The fault in a file, if any, after run() has read it.
    const std::string &error(Side side) const { return readers[side].error(); }

    std::map<std::size_t, DeviceComparison> comparisons;

private:
    // The recording to read next, which is the one behind: for a single device the one with fewer
    // datagrams waiting for a counterpart, otherwise the one at the earlier time.
    std::optional<Side> chooseSide() const {
        if (ended[first] && ended[second])
            return std::nullopt;
        if (ended[first] || ended[second])
            return ended[first] ? second : first;
        if (comparisons.size() != 1)
            return readers[first].time() <= readers[second].time() ? first : second;
        const DeviceComparison &only = comparisons.begin()->second;
        return only.waiting(first) <= only.waiting(second) ? first : second;
    }

    void take(Side side, std::size_t maxHeld) {
        if (datagram.device >= places[side].size())
            return; // the file has been replaced since the last pass
        const auto place = comparisons.find(places[side][datagram.device]);
        if (place == comparisons.end())
            return;
        held -= place->second.held();
        place->second.take(side, datagram);
        held += place->second.held();
        while (held > maxHeld && comparisons.size() > 1) {
            const auto largest = std::max_element(
                comparisons.begin(), comparisons.end(), [](const auto &left, const auto &right) {
                    return left.second.held() < right.second.held();
                });
            held -= largest->second.held();
            leftOut.push_back(largest->first);
            comparisons.erase(largest);
        }
    }

    const Places &places;
    std::array<RecordingReader, 2> readers;
    std::array<bool, 2> ended{};
    RecordedDatagram datagram;
    std::size_t held = 0;
    std::vector<std::size_t> leftOut;
};

// Adds a line when the values differ.
template <typename Value>
void compareValues(std::vector<std::string> &lines, const std::string &what, Value left,
                   Value right) {
    if (left != right)
        lines.push_back(what + ": " + std::to_string(left) + " and " + std::to_string(right));
}

std::vector<std::string> compareEntries(const config::DeviceEntry &left,
                                        const config::DeviceEntry &right) {
    std::vector<std::string> lines;
    compareValues(lines, "shape type", left.shapeType, right.shapeType);
    compareValues(lines, "scale factor", left.scaleFactor, right.scaleFactor);
    compareValues(lines, "panels", left.panels.size(), right.panels.size());
    const auto text = [](const config::PanelEntry &panel) {
        return lights::format("%d at (%d, %d)", panel.panelID, panel.centroidX, panel.centroidY);
    };
    for (std::size_t i = 0; i < std::min(left.panels.size(), right.panels.size()); ++i) {
        const std::string ours = text(left.panels[i]);
        const std::string theirs = text(right.panels[i]);
        if (ours == theirs)
            continue;
        lines.push_back("the first panel that differs, number " + std::to_string(i) + ": " + ours +
                        " and " + theirs);
        break;
    }
    return lines;
}

// Adds the devices of both documents to the comparison.
Places matchDevices(Comparison &comparison) {
    Places places;
    std::multimap<std::pair<std::string, int>, std::size_t> unmatched; // of the first document
    for (const Side side : bothSides) {
        for (const config::DeviceEntry &entry : comparison.documents[side].devices) {
            const std::pair key(entry.ip, entry.port());
            const auto [match, none] = unmatched.equal_range(key);
            std::size_t place = comparison.devices.size();
            if (side == second && match != none) {
                place = match->second;
                unmatched.erase(match);
                comparison.devices[place].configuration =
                    compareEntries(comparison.documents[first].devices[place], entry);
            } else {
                comparison.devices.emplace_back().layout = lights::layoutOf(entry.controlVersion);
            }
            if (side == first)
                unmatched.emplace(key, place);
            comparison.devices[place].index[side] = places[side].size();
            places[side].push_back(place);
        }
    }
    return places;
}

} // namespace

bool Comparison::differs() const {
    return !configuration.empty() ||
           std::any_of(devices.begin(), devices.end(),
                       [](const ComparedDevice &device) { return device.differs(); });
}

Comparison compareRecordings(const OpenRecording &open, std::size_t maxHeld) {
    Comparison comparison;
    for (const Side side : bothSides)
        comparison.documents[side] = open(side).document();
    compareValues(comparison.configuration, "mode", comparison.documents[first].mode,
                  comparison.documents[second].mode);
    const Places places = matchDevices(comparison);
    std::vector<std::size_t> wanted(comparison.devices.size());
    std::iota(wanted.begin(), wanted.end(), std::size_t{0});
    do { // once even without devices, to find errors in the files
        Pass pass(open, comparison.devices, places, wanted);
        wanted = pass.run(maxHeld);
        for (const auto &[device, finished] : pass.comparisons)
            comparison.devices[device].findings = finished.findings();
        comparison.errors = {pass.error(first), pass.error(second)};
    } while (!wanted.empty());
    return comparison;
}

} // namespace panelwall
