// What the commands' arguments may be.
#pragma once

#include <CLI/App.hpp>

namespace mirrorctl {

// A number of seconds above 0, within the range of every timer.
CLI::Validator secondsArgument();

// A mode's name or number; modeNumber() reads it.
CLI::Validator modeArgument();

} // namespace mirrorctl
