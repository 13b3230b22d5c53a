// A rectangle of the root window, in pixels.
#pragma once

#include <algorithm>

namespace platform::x11 {

struct Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool empty() const { return width <= 0 || height <= 0; }
    bool operator==(const Rect &) const = default;
};

// The common part of both; all zero when there is none.
inline Rect intersect(const Rect &a, const Rect &b) {
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const Rect common{left, top, std::min(a.x + a.width, b.x + b.width) - left,
                      std::min(a.y + a.height, b.y + b.height) - top};
    return common.empty() ? Rect{} : common;
}

} // namespace platform::x11
