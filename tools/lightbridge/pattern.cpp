#include "tools/lightbridge/pattern.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace lightbridge {

static constexpr Colour white{255, 255, 255};

static Colour mix(Colour from, Colour to, double share) {
    const auto channel = [share](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>(std::lround(a + (b - a) * share));
    };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue)};
}

// Fully saturated; a hue of 1 is that of 0 again.
static Colour rainbow(double hue) {
    const auto channel = [hue](double shift) {
        const double distance = std::abs(std::remainder(hue - shift, 1.0)); // 0 to 0.5
        return static_cast<std::uint8_t>(
            std::lround(255.0 * std::clamp(2.0 - 6.0 * distance, 0.0, 1.0)));
    };
    return {channel(0.0), channel(1.0 / 3.0), channel(2.0 / 3.0)};
}

static const std::vector<config::PanelEntry> &panelsOf(const config::Document &document,
                                                       std::size_t output) {
    const auto device = static_cast<std::size_t>(document.bridge->outputs[output].device);
    return document.devices[device].panels;
}

Pattern testPattern(const config::Document &document) {
    static constexpr std::array<Colour, 6> steps = {
        {{}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}, white, {}}};
    constexpr double stepTime = 1.5; // seconds
    constexpr double fadeTime = 0.5;
    constexpr double rainbowTime = 8.0;
    constexpr double stepsTime = stepTime * (steps.size() - 1);
    const auto colourOf = [&document](std::size_t output, std::size_t panel, Clock::duration time) {
        const double seconds =
            std::fmod(std::chrono::duration<double>(time).count(), stepsTime + rainbowTime);
        if (seconds < stepsTime) {
            const auto step = static_cast<std::size_t>(seconds / stepTime);
            const double passed = seconds - static_cast<double>(step) * stepTime;
            return mix(steps[step], steps[step + 1], std::min(1.0, passed / fadeTime));
        }
        const double passed = seconds - stepsTime;
        const double fade = std::min({1.0, passed / fadeTime, (rainbowTime - passed) / fadeTime});
        const auto place =
            static_cast<double>(panel) / static_cast<double>(panelsOf(document, output).size());
        return mix({}, rainbow(place + passed / rainbowTime), fade);
    };
    return {colourOf, true};
}

std::optional<Pattern> identifyPanel(const config::Document &document, std::int32_t panelID) {
    const auto isMeant = [&document, panelID](std::size_t output, std::size_t panel) {
        return panelsOf(document, output)[panel].panelID == panelID;
    };
    bool any = false;
    for (std::size_t i = 0; i < document.bridge->outputs.size(); ++i)
        for (std::size_t panel = 0; panel < panelsOf(document, i).size(); ++panel)
            any = any || isMeant(i, panel);
    if (!any)
        return std::nullopt;
    return Pattern{[isMeant](std::size_t output, std::size_t panel, Clock::duration) {
        return isMeant(output, panel) ? white : Colour{};
    }};
}

std::optional<Pattern> identifyPixel(config::Document &document, std::size_t number) {
    bool any = false;
    for (config::OutputEntry &output : document.bridge->outputs) {
        config::DeviceEntry device = document.devices[static_cast<std::size_t>(output.device)];
        device.panels.resize(device.panels.size() *
                             static_cast<std::size_t>(output.pixelsPerPanel));
        const auto first = static_cast<std::size_t>(output.firstPixel);
        any = any || (number >= first && number - first < device.panels.size());
        output.pixelsPerPanel = 1;
        output.device = static_cast<std::int32_t>(document.devices.size());
        document.devices.push_back(std::move(device));
    }
    if (!any)
        return std::nullopt;
    return Pattern{[&document, number](std::size_t output, std::size_t panel, Clock::duration) {
        const auto first = static_cast<std::size_t>(document.bridge->outputs[output].firstPixel);
        return first + panel == number ? white : Colour{};
    }};
}

} // namespace lightbridge
