// A picture of the display that is being mirrored, to look at behind the panels.
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

// Takes a picture when it is asked for one, never else, and at most every `leastAge`; who asks in
// between gets the last one. Callable from any thread; one picture is taken at a time.
class ScreenPicture {
public:
    static constexpr std::chrono::milliseconds leastAge{400};

    explicit ScreenPicture(std::uint32_t display_) : display(display_) {}

    // Null when the display cannot be seen from here.
    std::shared_ptr<const ScreenShot> take();

private:
    const std::uint32_t display;
    std::mutex mutex;
    std::shared_ptr<const ScreenShot> last;
    std::chrono::steady_clock::time_point takenAt;
};

// The size of a display in pixels; nothing when it cannot be seen from here.
std::optional<Size> measureDisplay(std::uint32_t display);

} // namespace panelwall
