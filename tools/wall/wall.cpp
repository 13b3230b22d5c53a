#include "tools/wall/wall.h"

#include <algorithm>
#include <cmath>

namespace panelwall {

std::size_t WallDevice::litPanels() const {
    return static_cast<std::size_t>(std::count_if(
        panels.begin(), panels.end(), [](const WallPanel &panel) { return panel.colour; }));
}

Wall::Wall(const config::Document &document, std::chrono::milliseconds transitionUnit)
    : unit(transitionUnit), flashMeter(document) {
    for (const config::DeviceEntry &entry : document.devices) {
        WallDevice &device = allDevices.emplace_back();
        device.ip = entry.ip;
        device.port = entry.port();
        device.layout = lights::layoutOf(entry.controlVersion);
        for (const config::PanelEntry &panel : entry.panels) {
            WallPanel &made = device.panels.emplace_back();
            made.panelID = panel.panelID;
            made.centreX = panel.centroidX;
            made.centreY = panel.centroidY;
            made.halfSide = std::max(0.0, std::trunc(halfSide(entry)));
            ++device.knownIds[lights::wireId(device.layout, panel.panelID)];
        }
        device.firstPanel = sent.size();
        sent.resize(sent.size() + device.panels.size());
    }
}

void Wall::receive(std::size_t index, std::span<const std::uint8_t> bytes, Clock::time_point now) {
    WallDevice &device = allDevices.at(index);
    ++device.datagrams;
    device.arrivals.note(now);

    lights::Decoding decoding = lights::decode(device.layout, bytes);
    if (decoding.malformed.empty())
        decoding.malformed = lights::findForeignRecord(decoding.records, device.knownIds);
    if (!decoding.malformed.empty()) {
        ++device.malformed;
        device.lastMalformed = std::move(decoding.malformed);
        return;
    }

    std::map<std::uint16_t, const lights::Record *> newest;
    for (const lights::Record &record : decoding.records)
        newest[record.id] = &record;
    for (std::size_t i = 0; i < device.panels.size(); ++i) {
        WallPanel &panel = device.panels[i];
        const auto found = newest.find(lights::wireId(device.layout, panel.panelID));
        if (found == newest.end())
            continue;
        const lights::Record &record = *found->second;
        panel.colour = sent[device.firstPanel + i] = record.colour;
        panel.transitionTime = record.transitionTime;
        panel.transition.moveTo(*panel.colour, unit * record.transitionTime, now);
    }
    flashMeter.note(sent, now);
    if (device.history)
        device.history->note(now, [&](std::size_t panel) { return device.panels[panel].colour; });
}

void Wall::keepHistory(std::size_t maxRows) {
    for (WallDevice &device : allDevices)
        device.history.emplace(device.panels.size(),
                               std::max<std::size_t>(1, maxRows / allDevices.size()));
}

bool Wall::isMoving(Clock::time_point now) const {
    for (const WallDevice &device : allDevices)
        for (const WallPanel &panel : device.panels)
            if (panel.transition.isMoving(now))
                return true;
    return false;
}

std::optional<Clock::time_point> Wall::lastArrival() const {
    std::optional<Clock::time_point> last; // an empty optional compares less than any time
    for (const WallDevice &device : allDevices)
        last = std::max(last, device.arrivals.last());
    return last;
}

} // namespace panelwall
