// Words, names and numbers in messages and on the command line.
//
// Callable from any thread.
#pragma once

#include "tools/lights/device.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lights {

// The text as a JSON string, so that it is one line without control characters; a long one is cut
// between characters.
std::string quote(std::string_view text);

// What std::printf() would print, up to 511 characters.
[[gnu::format(printf, 1, 2)]] std::string format(const char *pattern, ...);

// "1 panel", "2 panels"
std::string counted(std::size_t number, const std::string &thing);

// The number from 1 to `largest` that makes up the text.
std::optional<std::uint32_t> wholeNumber(std::string_view text, std::uint32_t largest);

// How messages name a device: its number, its address as quoted text, and its UDP port.
std::string nameDevice(std::size_t index, const DeviceEntry &device);

// Whether a descriptor is a terminal that can show colours: one that does not call itself dumb.
bool showsColours(int fd);

// The one of `candidates` that is nearest to `name`, without regard to case: at most two edits away
// (one for a name of fewer than six letters), where an edit is a letter that is wrong, missing or
// extra, or two neighbours that are swapped.
std::optional<std::string> nearestName(const std::string &name,
                                       const std::vector<std::string> &candidates);

} // namespace lights
