// Words, names, numbers and colours in messages and on the command line.
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

// The text as a JSON string, so that it is one line without control characters. A long text is cut
// between characters.
std::string quote(std::string_view text);

// The text that std::printf() would print, up to 511 bytes.
[[gnu::format(printf, 1, 2)]] std::string format(const char *pattern, ...);

// "1 panel", "2 panels"
std::string counted(std::size_t number, const std::string &thing);

// The text as a number from 1 to `largest`; nothing if it is not exactly that.
std::optional<std::uint32_t> wholeNumber(std::string_view text, std::uint32_t largest);

// The name of a device in messages: its number, its address as quoted text, and its UDP port.
std::string nameDevice(std::size_t index, const DeviceEntry &device);

// Whether a descriptor is a terminal that can show colours: TERM does not say dumb.
bool showsColours(int fd);

// Four blanks on the colour, in 24-bit colour; the terminal's own colours are restored after it.
std::string swatch(const Colour &colour);

// "#ff8000"
std::string hexText(const Colour &colour);

// The candidate nearest to `name`, ignoring case: at most two edits away (one for a name of fewer
// than six letters). An edit is a wrong, missing or extra letter, or two swapped neighbours.
std::optional<std::string> nearestName(const std::string &name,
                                       const std::vector<std::string> &candidates);

} // namespace lights
