// Draws on an output of a Wayland compositor: a window that covers it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace test {

// Waits without limit for the compositor, so an alarm must be set. After a failure it throws
// std::runtime_error.
class WaylandBrush {
public:
    // Connects to the compositor whose socket has this path, and covers its first output with a
    // black window; returns once that is shown. The picture has the size of the upright output.
    explicit WaylandBrush(const std::string &socket);
    ~WaylandBrush();
    WaylandBrush(const WaylandBrush &) = delete;
    WaylandBrush &operator=(const WaylandBrush &) = delete;

    // Return once the compositor has taken the new picture, which it shows from its next frame on.
    // Colours are 0xRRGGBB. What lies outside of the output is left out.
    void fillRect(int x, int y, int width, int height, std::uint32_t colour);
    void putPixels(int x, int y, int width, int height, const std::uint32_t *colours);

    // How many pictures the compositor has shown so far, as it has reported.
    int shownPictures() const;

private:
    struct Window;
    const std::unique_ptr<Window> own;
};

} // namespace test
