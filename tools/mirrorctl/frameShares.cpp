#include "tools/mirrorctl/frameShares.h"

#include <algorithm>

namespace mirrorctl {

// Whether the records can be the device's: some of its panels, in their order.
static bool fits(const SentFrame &frame, const config::DeviceEntry &device) {
    if (frame.panelCount != device.panels.size())
        return false;
    const unsigned idMask = device.controlVersion == 1 ? 0xff : 0xffff;
    auto panel = device.panels.begin();
    for (const SentRecord &record : frame.records) {
        panel = std::find_if(panel, device.panels.end(), [&](const config::PanelEntry &entry) {
            return (static_cast<unsigned>(entry.panelID) & idMask) == record.id;
        });
        if (panel == device.panels.end())
            return false;
        ++panel;
    }
    return true;
}

// Gives every frame in turn to the next device that it fits. Nothing when devices run out.
template <typename Frame, typename Device>
static std::optional<std::vector<std::size_t>> giveInTurn(Frame frame, Frame lastFrame,
                                                          Device device, Device lastDevice) {
    std::vector<std::size_t> places;
    const Device first = device;
    for (; frame != lastFrame; ++frame) {
        device = std::find_if(device, lastDevice, [&](const config::DeviceEntry &entry) {
            return fits(*frame, entry);
        });
        if (device == lastDevice)
            return std::nullopt;
        places.push_back(static_cast<std::size_t>(device - first));
        ++device;
    }
    return places;
}

// The first devices possible and the last ones possible are the same exactly when there is one way.
std::optional<std::vector<std::size_t>>
shareFrames(const std::vector<SentFrame> &frames, const std::vector<config::DeviceEntry> &devices) {
    const auto earliest = giveInTurn(frames.begin(), frames.end(), devices.begin(), devices.end());
    auto latest = giveInTurn(frames.rbegin(), frames.rend(), devices.rbegin(), devices.rend());
    if (!earliest || !latest)
        return std::nullopt;
    std::reverse(latest->begin(), latest->end());
    for (std::size_t &place : *latest)
        place = devices.size() - 1 - place;
    return earliest == latest ? earliest : std::nullopt;
}

} // namespace mirrorctl
