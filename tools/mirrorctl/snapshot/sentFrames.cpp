#include "tools/mirrorctl/snapshot/sentFrames.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <rapidjson/document.h>
#include <stdexcept>

namespace mirrorctl {

[[noreturn]] static void throwParseError() {
    throw std::runtime_error("the library's text of the frames sent is not understood");
}

static std::vector<unsigned> readNumbers(const std::string &line) {
    std::vector<unsigned> numbers;
    const char *at = line.data();
    const char *const end = at + line.size();
    while (at != end) {
        unsigned number = 0;
        const auto read = std::from_chars(at, end, number);
        if (read.ec != std::errc() || (read.ptr != end && *read.ptr != ' '))
            throwParseError();
        numbers.push_back(number);
        at = read.ptr == end ? end : read.ptr + 1;
    }
    return numbers;
}

template <typename Field> static Field field(unsigned number) {
    if (number > std::numeric_limits<Field>::max())
        throwParseError();
    return static_cast<Field>(number);
}

// The panel count, then for each record: identifier, 1, red, green, blue, white, 5.
static SentFrame readLine(const std::string &line) {
    constexpr std::size_t recordSize = 7;
    const std::vector<unsigned> numbers = readNumbers(line);
    if (numbers.size() % recordSize != 1)
        throwParseError();
    SentFrame frame;
    frame.panelCount = numbers[0];
    const auto channel = [&](std::size_t i) { return field<std::uint8_t>(numbers[i]); };
    for (std::size_t i = 1; i < numbers.size(); i += recordSize)
        frame.records.push_back({field<std::uint16_t>(numbers[i]),
                                 {channel(i + 2), channel(i + 3), channel(i + 4)},
                                 field<std::uint16_t>(numbers[i + 6])});
    return frame;
}

std::vector<SentFrame> readSentFrames(const std::string &text) {
    rapidjson::Document tree;
    tree.Parse(text.c_str());
    if (tree.HasParseError() || !tree.IsObject() || !tree.HasMember("devices") ||
        !tree["devices"].IsArray())
        throwParseError();
    std::vector<SentFrame> frames;
    for (const auto &device : tree["devices"].GetArray()) {
        if (!device.IsObject() || !device.HasMember("animData") || !device["animData"].IsString())
            throwParseError();
        const std::string line = device["animData"].GetString();
        if (!line.empty())
            frames.push_back(readLine(line));
    }
    return frames;
}

bool showsLight(const std::vector<SentFrame> &frames) {
    return std::any_of(frames.begin(), frames.end(), [](const SentFrame &frame) {
        return std::any_of(frame.records.begin(), frame.records.end(),
                           [](const auto &record) { return record.colour != lights::Colour(); });
    });
}

// Whether the records can be the device's: some of its panels, in their order.
static bool fits(const SentFrame &frame, const config::DeviceEntry &device) {
    if (frame.panelCount != device.panels.size())
        return false;
    const auto layout = lights::layoutOf(device.controlVersion);
    auto panel = device.panels.begin();
    for (const lights::Record &record : frame.records) {
        panel = std::find_if(panel, device.panels.end(), [&](const config::PanelEntry &entry) {
            return lights::wireId(layout, entry.panelID) == record.id;
        });
        if (panel == device.panels.end())
            return false;
        ++panel;
    }
    return true;
}

// Assigns each frame in turn to the next device that it fits. Nothing if the devices run out.
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

// The earliest and the latest possible assignment are equal exactly if there is only one.
std::optional<std::vector<std::size_t>> devicesOf(const std::vector<SentFrame> &frames,
                                                  const std::vector<config::DeviceEntry> &devices) {
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
