// Configurations made from a shape and some addresses.
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

// "4x6" is four rows of six, "strip:60" sixty panels around the edges. Nothing when it is neither,
// or more than `mostPanels`.
std::optional<Shape> parseShape(const std::string &text);
inline constexpr std::size_t mostPanels = 100'000;

struct LayoutPlan {
    Shape shape;
    std::int32_t displayID = 0;
    config::ScreenSize screen;
    std::vector<std::string> addresses; // of the devices, in the order in which they get panels
    std::int32_t controlVersion = 2;
    std::int32_t mode = 0;
};

// Why the plan makes no configuration; empty when it does.
std::string problemOf(const LayoutPlan &plan);

// The document: panels are shared out to the devices in equal runs, a grid row by row, a strip
// clockwise from the top left corner, and numbered from 1 on each device. Their areas are as large
// as they can be without overlapping within a row, column or edge.
config::Document layOut(const LayoutPlan &plan);

} // namespace mirrorctl
