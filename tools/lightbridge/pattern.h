// Colours without a screen: to find a panel or pixel, and to see that all work.
//
// Pure functions, callable from any thread.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/wall/clock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace lightbridge {

using lights::Colour;
using panelwall::Clock;

struct Pattern {
    // The colour of an output's panel, both as indices, some time after the beginning.
    std::function<Colour(std::size_t output, std::size_t panel, Clock::duration time)> colourOf;
    bool isMoving = false;
};

// Red, green, blue and white in turn, then a rainbow that moves along the panels; slow enough never
// to flash. Starts over at the end.
Pattern testPattern(const config::Document &document);

// White for the panels with this identifier, black for all others; none if no output has one.
std::optional<Pattern> identifyPanel(const config::Document &document, std::int32_t panelID);

// White for pixel `number` of each receiver, black for all others; none if no output has it. Makes
// each pixel of the document's outputs a panel.
std::optional<Pattern> identifyPixel(config::Document &document, std::size_t number);

} // namespace lightbridge
