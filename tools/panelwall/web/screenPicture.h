// A picture of the mirrored display, to show behind the panels.
#pragma once

#include "tools/panelwall/picture.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace panelwall {

struct ScreenShot {
    std::string png;
    int width = 0; // of the display in its own pixels; the picture may be smaller
    int height = 0;
};

// Takes pictures only on request, and at most one per `leastAge`; requests in between get the last
// one. Callable from any thread; one picture is taken at a time.
class ScreenPicture {
public:
    static constexpr std::chrono::milliseconds leastAge{400};

    explicit ScreenPicture(std::uint32_t display_) : display(display_) {}

    // Null when this process cannot capture the display.
    std::shared_ptr<const ScreenShot> take();

private:
    const std::uint32_t display;
    std::mutex mutex;
    std::shared_ptr<const ScreenShot> last;
    std::chrono::steady_clock::time_point takenAt;
};

// The size of a display in pixels; nullopt when this process cannot capture it.
std::optional<Size> measureDisplay(std::uint32_t display);

} // namespace panelwall
