// What the doctor asks of the system itself, each system in a file of its own.
#pragma once

#include "tools/mirrorctl/doctor/diagnosis.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mirrorctl {

// Whether this process may capture screens, and what the system brings for it. An X server that
// resets when its last client leaves does not do so while this lives.
class System {
public:
    System();
    ~System();
    System(const System &) = delete;
    System &operator=(const System &) = delete;

    std::vector<Check> examine() const;

private:
    struct Server;
    std::unique_ptr<Server> server;
};

// Has the socket told of everything that the network says about its datagrams.
void askForNetworkErrors(int fd, int family);

// A square of one colour in the top left corner of every display of one size, above all windows,
// for as long as it lives.
class ScreenMark {
public:
    // The square's edges, in pixels of the display.
    static constexpr int first = 8;
    static constexpr int side = 32;

    // Has been drawn when the constructor returns, unless reason() says why not. `colour` is
    // 0xRRGGBB.
    ScreenMark(std::uint32_t width, std::uint32_t height, std::uint32_t colour);
    ~ScreenMark();
    ScreenMark(const ScreenMark &) = delete;
    ScreenMark &operator=(const ScreenMark &) = delete;

    bool isShown() const { return why.empty(); }
    const std::string &reason() const { return why; }
    double shownAt() const { return time; } // wall clock, seconds

private:
    struct Windows;
    std::unique_ptr<Windows> windows;
    std::string why;
    double time = 0.0;
};

} // namespace mirrorctl
