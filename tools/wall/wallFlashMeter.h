// How often a wall flashes. panelwall and mirrorctl check warn of flashes by this meter's rule, and
// lightbridge holds them back by it; docs/lightbridge.md has the rule.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/wall/flashMeter.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace panelwall {

// What flashes are judged by, each from 0 to 1.
struct Light {
    double luminance = 0.0;
    double red = 0.0; // 0 unless the colour is a saturated red
};

Light lightOf(Colour colour);

// The flashes of a panel or an area, by luminance and by saturated red.
class LightMeter {
public:
    // As those of FlashMeter, which see.
    bool allows(const Light &light, Clock::time_point now) const;
    void note(const Light &light, Clock::time_point now);
    double perSecond(Clock::time_point now) const;
    std::optional<Clock::time_point> lastExcess() const;

private:
    FlashMeter luminance;
    FlashMeter red{20.0 / 320.0, 1.0};
};

// Watches each panel, and areas of a quarter of the wall, which overlap by half: panels that flash
// against each other cancel out in an area's average, and panels that flash in turn are each slow.
// One thread at a time; times only go forward.
class WallFlashMeter {
public:
    struct Area {
        std::vector<std::size_t> panels;
        LightMeter meter; // of the average
    };

    // Of all panels of all devices, in order. All are black at first.
    explicit WallFlashMeter(const config::Document &document);

    const std::vector<Area> &areas() const { return allAreas; }

    // The colours that were noted last.
    std::span<const Colour> colours() const { return noted; }

    // Whether noting a panel's colour, or an area's part of the wall's colours, keeps their changes
    // far enough apart.
    bool allows(std::size_t panel, Colour colour, Clock::time_point now) const;
    bool allows(const Area &area, std::span<const Colour> wall, Clock::time_point now) const;

    // The wall changes to these colours.
    void note(std::span<const Colour> wall, Clock::time_point now);

    // When an area, or a quarter of the panels, last flashed more often than is harmless, and the
    // most flashes within a second then.
    std::optional<Clock::time_point> lastExcess() const { return excess; }
    double most() const { return highest; }

private:
    void noteExcess(double flashes, Clock::time_point now);

    std::vector<LightMeter> panels;
    std::vector<Area> allAreas;
    std::vector<Colour> noted;
    std::optional<Clock::time_point> excess;
    double highest = 0.0;
};

} // namespace panelwall
