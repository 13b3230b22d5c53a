// Configuration documents for mirrorctl's tests.
#pragma once

#include <cstdint>
#include <string>

namespace test {

// One device of one panel: panel 17, in wide layout, whose area lies around (100, 100).
std::string lightsText(std::uint32_t displayID, const std::string &ip, int mode = 0);

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
