#include "tools/recording/compareRecordings.h"

#include <algorithm>
#include <map>

namespace panelwall {

namespace {

// Where each device of the recordings stands in the comparison.
using Places = std::array<std::vector<std::size_t>, 2>;

// Reads both recordings once, for some devices.
class Pass {
public:
    Pass(const OpenRecording &open, const std::vector<ComparedDevice> &devices,
         const std::vector<Layout> &layouts, const Places &places_,
         const std::vector<std::size_t> &wanted)
        : places(places_), inputs{open(first), open(second)},
          readers{RecordingReader(*inputs[first]), RecordingReader(*inputs[second])} {
        for (const std::size_t device : wanted) {
            const auto made = comparisons.emplace(device, layouts[device]).first;
            for (const Side side : bothSides)
                if (!devices[device].index[side])
                    made->second.end(side);
        }
    }

    // The devices that had to be left out, since too much of them would have had to be held.
    std::vector<std::size_t> run(std::size_t mostHeld) {
        for (const Side side : bothSides)
            readers[side].readHead();
        while (const auto side = chooseSide()) {
            if (readers[*side].next(datagram)) {
                times[*side] = datagram.time;
                take(*side, mostHeld);
            } else {
                ended[*side] = true;
                for (auto &[device, comparison] : comparisons)
                    comparison.end(*side);
            }
        }
        return leftOut;
    }

    std::map<std::size_t, DeviceComparison> comparisons;

private:
    // The recording that is behind: of a single device by what waits for its counterpart, else by
    // the time.
    std::optional<Side> chooseSide() const {
        if (ended[first] && ended[second])
            return std::nullopt;
        if (ended[first] || ended[second])
            return ended[first] ? second : first;
        if (comparisons.size() != 1)
            return times[first] <= times[second] ? first : second;
        const DeviceComparison &only = comparisons.begin()->second;
        return only.waiting(first) <= only.waiting(second) ? first : second;
    }

    void take(Side side, std::size_t mostHeld) {
        if (datagram.device >= places[side].size())
            return; // the file has been replaced since the last pass
        const auto place = comparisons.find(places[side][datagram.device]);
        if (place == comparisons.end())
            return;
        held -= place->second.held();
        place->second.take(side, datagram);
        held += place->second.held();
        while (held > mostHeld && comparisons.size() > 1) {
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
    std::array<std::unique_ptr<std::istream>, 2> inputs;
    std::array<RecordingReader, 2> readers;
    std::array<bool, 2> ended{};
    std::array<std::chrono::microseconds, 2> times{};
    RecordedDatagram datagram;
    std::size_t held = 0;
    std::vector<std::size_t> leftOut;
};

std::string both(const std::string &what, const std::string &left, const std::string &right) {
    return what + ": " + left + " and " + right;
}

std::vector<std::string> compareEntries(const config::DeviceEntry &left,
                                        const config::DeviceEntry &right) {
    std::vector<std::string> lines;
    if (left.shapeType != right.shapeType)
        lines.push_back(
            both("shape type", std::to_string(left.shapeType), std::to_string(right.shapeType)));
    if (left.scaleFactor != right.scaleFactor)
        lines.push_back(both("scale factor", std::to_string(left.scaleFactor),
                             std::to_string(right.scaleFactor)));
    if (left.panels.size() != right.panels.size())
        lines.push_back(both("panels", std::to_string(left.panels.size()),
                             std::to_string(right.panels.size())));
    const auto text = [](const config::PanelEntry &panel) {
        return std::to_string(panel.panelID) + " at (" + std::to_string(panel.centroidX) + ", " +
               std::to_string(panel.centroidY) + ")";
    };
    for (std::size_t i = 0; i < std::min(left.panels.size(), right.panels.size()); ++i) {
        if (text(left.panels[i]) == text(right.panels[i]))
            continue;
        lines.push_back(both("the first panel that differs, number " + std::to_string(i),
                             text(left.panels[i]), text(right.panels[i])));
        break;
    }
    return lines;
}

// Fills in the devices of both documents.
Places matchDevices(Comparison &comparison) {
    Places places;
    std::multimap<std::pair<std::string, int>, std::size_t> unmatched;
    const auto keyOf = [](const config::DeviceEntry &entry) {
        return std::pair(entry.ip, entry.port());
    };
    for (const config::DeviceEntry &entry : comparison.documents[first].devices) {
        const std::size_t place = comparison.devices.size();
        unmatched.emplace(keyOf(entry), place);
        places[first].push_back(place);
        comparison.devices.emplace_back().index[first] = place;
    }
    for (const config::DeviceEntry &entry : comparison.documents[second].devices) {
        const std::size_t index = places[second].size();
        const auto match = unmatched.lower_bound(keyOf(entry));
        std::size_t place = comparison.devices.size();
        if (match != unmatched.end() && match->first == keyOf(entry)) {
            place = match->second;
            unmatched.erase(match);
            comparison.devices[place].configuration =
                compareEntries(comparison.documents[first].devices[place], entry);
        } else {
            comparison.devices.emplace_back();
        }
        comparison.devices[place].index[second] = index;
        places[second].push_back(place);
    }
    return places;
}

} // namespace

bool Comparison::differs() const {
    return !configuration.empty() ||
           std::any_of(devices.begin(), devices.end(),
                       [](const ComparedDevice &device) { return device.differs(); });
}

// Reads to the end of a recording for its error.
static std::string readError(std::istream &input) {
    RecordingReader reader(input);
    if (reader.readHead()) {
        RecordedDatagram ignored;
        while (reader.next(ignored)) {
        }
    }
    return reader.error();
}

Comparison compareRecordings(const OpenRecording &open, std::size_t mostHeld) {
    Comparison comparison;
    for (const Side side : bothSides) {
        const auto input = open(side);
        comparison.errors[side] = readError(*input);
        const auto head = open(side);
        RecordingReader reader(*head);
        if (reader.readHead())
            comparison.documents[side] = reader.document();
    }
    const auto &documents = comparison.documents;
    if (documents[first].mode != documents[second].mode)
        comparison.configuration.push_back(both("mode", std::to_string(documents[first].mode),
                                                std::to_string(documents[second].mode)));
    const Places places = matchDevices(comparison);
    std::vector<Layout> layouts;
    std::vector<std::size_t> wanted;
    for (const ComparedDevice &device : comparison.devices) {
        const Side side = device.index[first] ? first : second;
        layouts.push_back(
            lights::layoutOf(documents[side].devices[*device.index[side]].controlVersion));
        wanted.push_back(wanted.size());
    }
    while (!wanted.empty()) {
        Pass pass(open, comparison.devices, layouts, places, wanted);
        wanted = pass.run(mostHeld);
        for (const auto &[device, finished] : pass.comparisons)
            comparison.devices[device].findings = finished.findings();
    }
    return comparison;
}

} // namespace panelwall
