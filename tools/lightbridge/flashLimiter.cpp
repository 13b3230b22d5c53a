#include "tools/lightbridge/flashLimiter.h"

#include <algorithm>

namespace lightbridge {

FlashLimiter::FlashLimiter(const config::Document &document) {
    std::size_t count = 0;
    for (const config::DeviceEntry &device : document.devices)
        count += device.panels.size();
    panels.resize(count);
    shown.resize(count);
    held.resize(count);
    addAreas(document);
    // Everything is black before.
    for (Meters &meters : panels)
        meters.note(0.0, 0.0, {});
    for (Area &area : areas)
        area.meters.note(0.0, 0.0, {});
}

namespace {

// Intervals that begin every `step` and are `size` long; a single point is one interval.
struct Division {
    double begin;
    double step;
    double size;
    int count;
};

// `parts` intervals would cover the range; halfway between each two there is another.
Division divide(double least, double most, int parts) {
    if (most <= least)
        return {least, 0.0, 0.0, 1};
    const double size = (most - least) / parts;
    return {least, size / 2.0, size, 2 * parts - 1};
}

} // namespace

void FlashLimiter::addAreas(const config::Document &document) {
    std::vector<std::pair<double, double>> places;
    for (const config::DeviceEntry &device : document.devices)
        for (const config::PanelEntry &panel : device.panels)
            places.emplace_back(panel.centroidX, panel.centroidY);
    if (places.empty())
        return;
    const auto range = [&](auto member) {
        const auto [least, most] = std::minmax_element(
            places.begin(), places.end(),
            [member](const auto &a, const auto &b) { return a.*member < b.*member; });
        return std::pair(*least.*member, *most.*member);
    };
    using Place = std::pair<double, double>;
    const auto [left, right] = range(&Place::first);
    const auto [top, bottom] = range(&Place::second);
    // Half of each side makes a quarter; of a line it is a quarter of its length.
    const Division across = divide(left, right, top < bottom ? 2 : 4);
    const Division down = divide(top, bottom, left < right ? 2 : 4);
    const auto isIn = [](double at, const Division &division, int number) {
        const double begin = division.begin + number * division.step;
        return at >= begin && at <= begin + division.size;
    };
    for (int row = 0; row < down.count; ++row)
        for (int column = 0; column < across.count; ++column) {
            Area area;
            for (std::size_t i = 0; i < places.size(); ++i)
                if (isIn(places[i].first, across, column) && isIn(places[i].second, down, row))
                    area.panels.push_back(i);
            if (area.panels.size() > 1) // a single panel is watched anyway
                areas.push_back(std::move(area));
        }
}

// 0 unless the colour is a saturated red.
static double redness(Colour colour) {
    const double red = panelwall::linearLight(colour.red);
    const double others =
        panelwall::linearLight(colour.green) + panelwall::linearLight(colour.blue);
    const bool isSaturated = red > 0.0 && red / (red + others) >= 0.8;
    return isSaturated ? red - others : 0.0;
}

void FlashLimiter::average(Area &area, std::span<const Colour> colours) const {
    area.luminance = 0.0;
    area.red = 0.0;
    for (const std::size_t panel : area.panels) {
        area.luminance += panelwall::relativeLuminance(colours[panel]);
        area.red += redness(colours[panel]);
    }
    area.luminance /= static_cast<double>(area.panels.size());
    area.red /= static_cast<double>(area.panels.size());
}

bool FlashLimiter::limit(std::span<Colour> colours, Clock::time_point now) {
    const auto hold = [&](std::size_t panel) {
        colours[panel] = shown[panel];
        held[panel] = true;
    };
    std::fill(held.begin(), held.end(), false);
    for (std::size_t i = 0; i < panels.size(); ++i)
        if (colours[i] != shown[i] &&
            !panels[i].allow(panelwall::relativeLuminance(colours[i]), redness(colours[i]), now))
            hold(i);
    // Holding one area changes the averages of others. Each round holds another area, until at the
    // latest nothing changes any more.
    for (bool isSettled = false; !isSettled;) {
        isSettled = true;
        for (Area &area : areas) {
            average(area, colours);
            if (area.meters.allow(area.luminance, area.red, now))
                continue;
            for (const std::size_t panel : area.panels) {
                isSettled = isSettled && held[panel];
                hold(panel);
            }
            average(area, colours);
        }
    }
    for (std::size_t i = 0; i < panels.size(); ++i)
        panels[i].note(panelwall::relativeLuminance(colours[i]), redness(colours[i]), now);
    for (Area &area : areas) {
        average(area, colours);
        area.meters.note(area.luminance, area.red, now);
    }
    std::copy(colours.begin(), colours.end(), shown.begin());
    return std::find(held.begin(), held.end(), true) != held.end();
}

} // namespace lightbridge
