// Holds back changes of colour that would make the wall flash too often. It reduces flashes; it
// does not make a wall safe for everybody. docs/lightbridge.md has the rule.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/wall/flashMeter.h"

#include <cstddef>
#include <span>
#include <vector>

namespace lightbridge {

using lights::Colour;
using panelwall::Clock;

// Watches each panel, and areas of a quarter of the wall, which overlap by half: panels that flash
// against each other cancel out in an area's average, and panels that flash in turn are each slow.
// One thread at a time; times only go forward.
class FlashLimiter {
public:
    explicit FlashLimiter(const config::Document &document);

    // The colours that all panels of all devices are to show now, in order. Those that may not
    // change yet get the colours of the previous call. Returns whether there are any.
    bool limit(std::span<Colour> colours, Clock::time_point now);

private:
    // A panel or an area: what has flashed there.
    struct Meters {
        panelwall::FlashMeter luminance;
        panelwall::FlashMeter red{20.0 / 320.0, 1.0};

        bool allow(double newLuminance, double newRed, Clock::time_point now) const {
            return luminance.allows(newLuminance, now) && red.allows(newRed, now);
        }
        void note(double newLuminance, double newRed, Clock::time_point now) {
            luminance.note(newLuminance, now);
            red.note(newRed, now);
        }
    };
    struct Area {
        std::vector<std::size_t> panels;
        Meters meters;
        double luminance = 0.0; // averages of the colours to be shown
        double red = 0.0;
    };

    void addAreas(const config::Document &document);
    void average(Area &area, std::span<const Colour> colours) const;

    std::vector<Meters> panels;
    std::vector<Area> areas;
    std::vector<Colour> shown; // in the previous call
    std::vector<bool> held;
};

} // namespace lightbridge
