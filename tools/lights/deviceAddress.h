// Which addresses a light can have.
#pragma once

#include "tools/config/configDocument.h"

#include <optional>
#include <string>

namespace config {

// What is wrong with the address of a device, without a pointer; nothing for the address of one
// host in numbers. IPv4 must be four decimal numbers without leading zeros, since elsewhere 010 may
// mean 8. The library reports none of this; such a device just stays dark.
std::optional<Problem> addressProblem(const std::string &text);

} // namespace config
