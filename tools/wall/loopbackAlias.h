// How a person gives this machine another loopback address.
#pragma once

#include <string>

namespace panelwall {

// A shell command that adds the address to the loopback interface until the next restart.
std::string loopbackAliasCommand(const std::string &ip);

} // namespace panelwall
