#include "tools/panelwall/statusText.h"
#include "tools/config/modes.h"
#include "tools/lights/address.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace panelwall {

static constexpr std::chrono::seconds warningTime{5};

static std::string describeAge(Clock::duration age) {
    const double seconds = std::chrono::duration<double>(age).count();
    if (seconds < 60)
        return lights::format("%.1f s", seconds);
    if (seconds < 3600)
        return lights::format("%.0f min", seconds / 60);
    return lights::format("%.0f h", seconds / 3600);
}

static int widthOf(const std::string &text) {
    return static_cast<int>(text.size());
}

std::vector<std::string> deviceLines(const Wall &wall, Clock::time_point now, ReasonPlace place) {
    const int numberWidth = widthOf(std::to_string(wall.devices().size() - 1));
    int addressWidth = 0;
    int panelsWidth = 0;
    for (const WallDevice &device : wall.devices()) {
        addressWidth =
            std::max(addressWidth, widthOf(lights::endpointText(device.ip, device.port)));
        panelsWidth = std::max(panelsWidth, widthOf(std::to_string(device.panels.size())));
    }

    std::vector<std::string> lines;
    for (std::size_t i = 0; i < wall.devices().size(); ++i) {
        const WallDevice &device = wall.devices()[i];
        const auto last = device.arrivals.last();
        std::ostringstream line;
        line << "device " << std::setw(numberWidth) << i << "  " << std::left
             << std::setw(addressWidth) << lights::endpointText(device.ip, device.port) << "  "
             << std::right << std::setw(panelsWidth) << device.litPanels() << "/" << std::left
             << std::setw(panelsWidth) << device.panels.size() << " lit  " << std::right
             << std::setw(2) << device.arrivals.perSecond(now) << "/s  last "
             << (last ? describeAge(now - *last) : "never") << "  malformed " << device.malformed
             << "  total " << device.datagrams;
        if (device.malformed > 0 && place == ReasonPlace::SameLine)
            line << "  last malformed: " << device.lastMalformed;
        lines.push_back(line.str());
        if (device.malformed > 0 && place == ReasonPlace::NextLine)
            lines.push_back("    last malformed: " + device.lastMalformed);
    }
    return lines;
}

std::string modeName(std::int32_t mode) {
    const char *name = config::modeName(mode);
    return name ? name : "unknown mode " + std::to_string(mode);
}

static std::string adviseOnMode(std::int32_t mode) {
    switch (mode) {
    case 0:
        return "Match mode sends some twenty times a second as long as mirroring runs.";
    case 1:
    case 2:
        return "In " + modeName(mode) +
               " mode that is normal while the screen's dominant colour does not change: show "
               "something else on the screen.";
    case 3:
        return "Palette mode sends something at least every second and a half as long as mirroring "
               "runs.";
    default:
        return "Mode " + std::to_string(mode) +
               " is none of 0 (match), 1 (melt), 2 (fade), 3 (palette): mirroring ends at once.";
    }
}

std::string adviseOnSilence(std::int32_t mode) {
    return adviseOnMode(mode) +
           " Check that the host mirrors, that it does so on this machine, and that it was given "
           "this same configuration (addresses, control versions).";
}

std::string describeSilence(const Wall &wall, std::int32_t mode, Clock::time_point start,
                            Clock::time_point now) {
    const auto last = wall.lastArrival();
    const auto silence = now - last.value_or(start);
    if (silence < tellingSilence)
        return {};
    return std::string(last ? "Nothing has arrived for " : "Nothing has arrived at all in ") +
           describeAge(silence) + ". " + adviseOnSilence(mode);
}

std::string describeFlashes(const Wall &wall, Clock::time_point now) {
    const WallFlashMeter &flashes = wall.flashes();
    if (!flashes.lastExcess() || now - *flashes.lastExcess() >= warningTime)
        return {};
    return lights::format("The wall flashes, up to %.1f times within a second: more than 3 "
                          "can cause seizures in some people.",
                          flashes.most());
}

std::vector<std::string> describeSharedIds(const Wall &wall) {
    constexpr std::size_t most = 8;
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < wall.devices().size(); ++i) {
        const WallDevice &device = wall.devices()[i];
        std::map<std::uint16_t, std::int32_t> first;
        for (const WallPanel &panel : device.panels) {
            const std::uint16_t id = lights::wireId(device.layout, panel.panelID);
            const auto [earlier, isNew] = first.emplace(id, panel.panelID);
            if (!isNew && lines.size() < most)
                lines.push_back(lights::format("device %zu: panels %d and %d are both %d in "
                                               "datagrams and show the same colour",
                                               i, earlier->second, panel.panelID, id));
        }
    }
    return lines;
}

std::string cutToWidth(std::string_view text, std::size_t columns) {
    std::string cut;
    std::size_t used = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool startsCharacter = (byte & 0xc0) != 0x80;
        if (startsCharacter && ++used > columns)
            break;
        cut += byte < 0x20 || byte == 0x7f ? '?' : c;
    }
    return cut;
}

std::vector<std::string> wrap(std::string_view text, std::size_t columns) {
    std::vector<std::string> lines;
    std::istringstream words{std::string(text)};
    std::string word;
    while (words >> word) {
        if (!lines.empty() && lines.back().size() + 1 + word.size() <= columns)
            lines.back() += " " + word;
        else
            lines.push_back(word);
    }
    return lines;
}

} // namespace panelwall
