#include "tools/wall/wallFlashMeter.h"

#include "tools/config/modes.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace panelwall {

Light lightOf(Colour colour) {
    const double red = linearLight(colour.red);
    const double others = linearLight(colour.green) + linearLight(colour.blue);
    const bool isSaturated = red > 0.0 && red / (red + others) >= 0.8;
    return {relativeLuminance(colour), isSaturated ? red - others : 0.0};
}

bool LightMeter::allows(const Light &light, Clock::time_point now) const {
    return luminance.allows(light.luminance, now) && red.allows(light.red, now);
}

void LightMeter::note(const Light &light, Clock::time_point now) {
    luminance.note(light.luminance, now);
    red.note(light.red, now);
}

double LightMeter::perSecond(Clock::time_point now) const {
    return std::max(luminance.perSecond(now), red.perSecond(now));
}

std::optional<Clock::time_point> LightMeter::lastExcess() const {
    return std::max(luminance.lastExcess(), red.lastExcess());
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

using Place = std::pair<double, double>;

// The panels of each quarter of the rectangle around all places. Those of a single panel are left
// out: panels are watched anyway.
std::vector<WallFlashMeter::Area> quartersOf(const std::vector<Place> &places) {
    std::vector<WallFlashMeter::Area> areas;
    if (places.empty())
        return areas;
    const auto range = [&](auto member) {
        const auto [least, most] = std::minmax_element(
            places.begin(), places.end(),
            [member](const Place &a, const Place &b) { return a.*member < b.*member; });
        return std::pair(*least.*member, *most.*member);
    };
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
            WallFlashMeter::Area area;
            for (std::size_t i = 0; i < places.size(); ++i)
                if (isIn(places[i].first, across, column) && isIn(places[i].second, down, row))
                    area.panels.push_back(i);
            if (area.panels.size() > 1)
                areas.push_back(std::move(area));
        }
    return areas;
}

Light averageOf(const std::vector<std::size_t> &panels, std::span<const Colour> wall) {
    Light sum;
    for (const std::size_t panel : panels) {
        const Light light = lightOf(wall[panel]);
        sum.luminance += light.luminance;
        sum.red += light.red;
    }
    const auto count = static_cast<double>(panels.size());
    return {sum.luminance / count, sum.red / count};
}

} // namespace

WallFlashMeter::WallFlashMeter(const config::Document &document) {
    std::vector<Place> places;
    for (const config::DeviceEntry &device : document.devices)
        for (const config::PanelEntry &panel : device.panels)
            places.emplace_back(panel.centroidX, panel.centroidY);
    noted.resize(places.size());
    panels.resize(places.size());
    for (LightMeter &meter : panels)
        meter.note({}, {});
    allAreas = quartersOf(places);
    for (Area &area : allAreas)
        area.meter.note({}, {});
}

bool WallFlashMeter::allows(std::size_t panel, Colour colour, Clock::time_point now) const {
    return colour == noted[panel] || panels[panel].allows(lightOf(colour), now);
}

bool WallFlashMeter::allows(const Area &area, std::span<const Colour> wall,
                            Clock::time_point now) const {
    return area.meter.allows(averageOf(area.panels, wall), now);
}

void WallFlashMeter::note(std::span<const Colour> wall, Clock::time_point now) {
    bool hasChanged = false;
    bool hasExcess = false;
    for (std::size_t i = 0; i < panels.size(); ++i) {
        if (wall[i] == noted[i])
            continue;
        hasChanged = true;
        noted[i] = wall[i];
        panels[i].note(lightOf(wall[i]), now);
        hasExcess = hasExcess || panels[i].lastExcess() == now;
    }
    if (!hasChanged)
        return;
    for (Area &area : allAreas) {
        area.meter.note(averageOf(area.panels, wall), now);
        if (area.meter.lastExcess() == now)
            noteExcess(area.meter.perSecond(now), now);
    }
    if (!hasExcess)
        return;
    // So often or more flashes each panel of a quarter of them.
    std::vector<double> flashes;
    for (const LightMeter &meter : panels)
        flashes.push_back(meter.perSecond(now));
    const auto quarter =
        flashes.begin() + static_cast<std::ptrdiff_t>((flashes.size() + 3) / 4 - 1);
    std::nth_element(flashes.begin(), quarter, flashes.end(), std::greater<>());
    if (*quarter > config::harmlessFlashes)
        noteExcess(*quarter, now);
}

void WallFlashMeter::noteExcess(double flashes, Clock::time_point now) {
    highest = std::max(highest, flashes);
    excess = now;
}

} // namespace panelwall
