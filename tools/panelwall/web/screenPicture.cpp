// Takes the picture with the same functions as the mirroring library's first capture of a display,
// so that another platform needs no further code for it.
#include "tools/panelwall/web/screenPicture.h"

#include "tools/panelwall/pngFile.h"

#include <CoreGraphics/CoreGraphics.h>
#include <algorithm>
#include <type_traits>

namespace panelwall {

// Wider or higher displays are scaled down to a half, a third and so on.
static constexpr std::size_t largestSide = 2048;

// Owns a platform object, which may be null, and releases it in the end.
template <typename Ref, typename Release> static auto own(Ref object, Release release) {
    return std::unique_ptr<std::remove_pointer_t<Ref>, Release>(object, release);
}

static std::shared_ptr<const ScreenShot> shoot(std::uint32_t display) {
    const auto image = own(CGDisplayCreateImage(display), &CGImageRelease);
    const std::size_t width = CGImageGetWidth(image.get());
    const std::size_t height = CGImageGetHeight(image.get());
    if (width == 0 || height == 0 || CGImageGetBitsPerPixel(image.get()) != 32)
        return nullptr;
    const auto data = own(CGDataProviderCopyData(CGImageGetDataProvider(image.get())), &CFRelease);
    if (!data)
        return nullptr;
    // Bytes B, G, R, X per pixel; rows have no padding, which the mirroring library assumes too.
    const UInt8 *pixels = CFDataGetBytePtr(data.get());

    // The mean of the square of display pixels that make one pixel of the picture; the square is
    // cut off at the right and bottom edges.
    const std::size_t step = (std::max(width, height) + largestSide - 1) / largestSide;
    const auto meanAt = [&](std::size_t left, std::size_t top) -> Colour {
        const std::size_t right = std::min(left + step, width);
        const std::size_t bottom = std::min(top + step, height);
        std::size_t sum[3] = {};
        for (std::size_t y = top; y < bottom; ++y)
            for (std::size_t x = left; x < right; ++x)
                for (std::size_t channel = 0; channel < 3; ++channel)
                    sum[channel] += pixels[(y * width + x) * 4 + channel];
        const std::size_t count = (right - left) * (bottom - top);
        return {static_cast<std::uint8_t>(sum[2] / count),
                static_cast<std::uint8_t>(sum[1] / count),
                static_cast<std::uint8_t>(sum[0] / count)};
    };
    Canvas canvas(static_cast<int>((width + step - 1) / step),
                  static_cast<int>((height + step - 1) / step), {});
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x)
            canvas.set(
                x, y,
                meanAt(static_cast<std::size_t>(x) * step, static_cast<std::size_t>(y) * step));
    ScreenShot shot{encodePng(canvas), static_cast<int>(width), static_cast<int>(height)};
    return shot.png.empty() ? nullptr : std::make_shared<ScreenShot>(std::move(shot));
}

std::shared_ptr<const ScreenShot> ScreenPicture::take() {
    const std::lock_guard lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    if (last && now - takenAt < leastAge)
        return last;
    last = shoot(display);
    takenAt = std::chrono::steady_clock::now();
    return last;
}

std::optional<Size> measureDisplay(std::uint32_t display) {
    const auto image = own(CGDisplayCreateImage(display), &CGImageRelease);
    const Size size{static_cast<int>(CGImageGetWidth(image.get())),
                    static_cast<int>(CGImageGetHeight(image.get()))};
    return size.width > 0 && size.height > 0 ? std::optional(size) : std::nullopt;
}

} // namespace panelwall
