// Words in the programs' messages that come from the system for which the programs were built.
#pragma once

#include <string>

namespace test {

// `error` is a number of this system.
std::string errorText(int error);

// The command that gives the machine another loopback address.
std::string loopbackAliasText(const std::string &ip);

} // namespace test
