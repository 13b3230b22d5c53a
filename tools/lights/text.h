// Words for lights in messages.
//
// Pure functions, callable from any thread.
#pragma once

#include "tools/lights/device.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace lights {

// The text as a JSON string, so that it is one line without control characters; a long one is cut
// between characters.
std::string quote(std::string_view text);

// "1 panel", "2 panels"
std::string counted(std::size_t number, const std::string &thing);

// How messages name a device: its number, its address as quoted text, and its UDP port.
std::string nameDevice(std::size_t index, const DeviceEntry &device);

} // namespace lights
