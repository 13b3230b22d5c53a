// Configuration documents for mirrorctl's tests, and what a light is sent.
#pragma once

#include "tests/support/lightReceiver.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace test {

// One device of one panel: panel 17, in wide layout, whose area lies around (100, 100).
std::string lightsText(std::uint32_t displayID, const std::string &ip, int mode = 0);

// What that device is sent in match mode on a screen of one colour.
inline const Datagram redPanel = {0, 1, 0, 17, 255, 0, 0, 0, 0, 1};
inline const Datagram greenPanel = {0, 1, 0, 17, 0, 255, 0, 0, 0, 1};

// Reads datagrams until one is `wanted`. The first ones may have been sent before the first frame
// came.
testing::AssertionResult receives(LightReceiver &light, const Datagram &wanted);

// The identifier of the only display on an X server, as mirrorctl lists it.
std::uint32_t onlyDisplay(const std::string &server);

// A text in a file of its own, removed at the end.
class LightsFile {
public:
    explicit LightsFile(const std::string &text);
    ~LightsFile();
    LightsFile(const LightsFile &) = delete;
    LightsFile &operator=(const LightsFile &) = delete;

    const std::string &path() const { return name; }

private:
    std::string name;
};

} // namespace test
