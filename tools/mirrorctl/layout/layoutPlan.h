// The devices of configurations, made from a shape and some addresses.
//
// Pure functions, callable from any thread.
#pragma once

#include "tools/config/configDocument.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mirrorctl {

// How the panels lie on the screen: as a grid that fills it, or as a strip around its edges.
struct Shape {
    std::size_t rows = 0; // of a grid; 0: a strip
    std::size_t columns = 0;
    std::size_t length = 0; // of a strip, in panels
    std::size_t panels() const { return rows > 0 ? rows * columns : length; }
};

// "4x6" is four rows of six, "strip:60" sixty panels around the edges. Nothing for other texts and
// for more than `maxPanels` panels.
std::optional<Shape> parseShape(const std::string &text);
inline constexpr std::size_t maxPanels = 100'000;

struct LayoutPlan {
    Shape shape;
    config::ScreenSize screen;
    std::vector<std::string> addresses; // of the devices, in the order in which they get panels
    std::int32_t controlVersion = 2;
    std::vector<config::OutputEntry> outputs = {}; // of lightbridge
};

// Adds a device on this machine, where lightbridge listens, and the output that shows it on another
// light, named as in ddp://192.0.2.40: a protocol's word and the light's address; then perhaps
// :PORT, and /UNIVERSE for protocols that have universes. E1.31 also takes e131://multicast. False,
// and nothing added, for other texts.
bool addBridge(LayoutPlan &plan, const std::string &url);

// Why no configuration can be made from the plan; empty if one can.
std::string problemOf(const LayoutPlan &plan);

// Makes the devices. They get equal runs of the panels, a grid row by row, a strip clockwise from
// the top left corner; panels are numbered from 1 on each device. Their areas are as large as
// possible without overlapping within a row, column or edge.
std::vector<config::DeviceEntry> layOut(const LayoutPlan &plan);

} // namespace mirrorctl
