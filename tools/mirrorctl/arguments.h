// What the commands' arguments may be.
#pragma once

#include "tools/config/configDocument.h"

#include <CLI/App.hpp>
#include <optional>
#include <string>

namespace mirrorctl {

// A number of seconds above 0, within the range of every timer.
CLI::Validator secondsArgument();

// A mode's name or number; modeNumber() reads it.
CLI::Validator modeArgument();

// A size in pixels; parseSize() reads it.
CLI::Validator sizeArgument();

// A layout's shape; parseShape() reads it.
CLI::Validator shapeArgument();

// The address of a light, in numbers.
CLI::Validator addressArgument();

// Two positive numbers with an x between them, such as 1920x1080; nothing when it is not that.
std::optional<config::ScreenSize> parseSize(const std::string &text);

} // namespace mirrorctl
