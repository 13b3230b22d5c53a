// The picture comes the way the library's first look at a display comes, so that a wall on another
// platform needs nothing new.
#include "tools/panelwall/web/screenPicture.h"

#include "tools/panelwall/canvas.h"
#include "tools/panelwall/pngFile.h"

#include <CoreGraphics/CoreGraphics.h>
#include <algorithm>

namespace panelwall {

namespace {

// Wider or higher displays are shown at a half, a third and so on.
constexpr std::size_t largestSide = 2048;

class Image {
public:
    explicit Image(CGImageRef theImage) : image(theImage) {}
    ~Image() { CGImageRelease(image); }
    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;

    std::size_t width() const { return CGImageGetWidth(image); }
    std::size_t height() const { return CGImageGetHeight(image); }
    std::size_t bits() const { return CGImageGetBitsPerPixel(image); }
    CGDataProviderRef provider() const { return CGImageGetDataProvider(image); }

private:
    CGImageRef image;
};

class Bytes {
public:
    explicit Bytes(CFDataRef theData) : data(theData) {}
    ~Bytes() {
        if (data != nullptr)
            CFRelease(data);
    }
    Bytes(const Bytes &) = delete;
    Bytes &operator=(const Bytes &) = delete;

    const UInt8 *get() const { return data == nullptr ? nullptr : CFDataGetBytePtr(data); }

private:
    CFDataRef data;
};

// Pixels in memory, B, G, R, X each; rows follow each other without a gap, as the library takes
// them too.
struct Pixels {
    const UInt8 *bytes;
    std::size_t width;
    std::size_t height;
};

// The mean of the `step` x `step` pixels from (left, top) on, as far as there are so many.
Colour meanOf(const Pixels &pixels, std::size_t left, std::size_t top, std::size_t step) {
    const std::size_t right = std::min(left + step, pixels.width);
    const std::size_t bottom = std::min(top + step, pixels.height);
    std::size_t sum[3] = {};
    for (std::size_t y = top; y < bottom; ++y)
        for (std::size_t x = left; x < right; ++x)
            for (std::size_t channel = 0; channel < 3; ++channel)
                sum[channel] += pixels.bytes[(y * pixels.width + x) * 4 + channel];
    const std::size_t count = (right - left) * (bottom - top);
    return {static_cast<std::uint8_t>(sum[2] / count), static_cast<std::uint8_t>(sum[1] / count),
            static_cast<std::uint8_t>(sum[0] / count)};
}

std::shared_ptr<const ScreenShot> shoot(std::uint32_t display) {
    const Image image(CGDisplayCreateImage(display));
    const std::size_t width = image.width();
    const std::size_t height = image.height();
    if (width == 0 || height == 0 || image.bits() != 32)
        return nullptr;
    const Bytes bytes(CGDataProviderCopyData(image.provider()));
    if (bytes.get() == nullptr)
        return nullptr;
    const Pixels pixels{bytes.get(), width, height};
    const std::size_t step = (std::max(width, height) + largestSide - 1) / largestSide;
    Canvas canvas(static_cast<int>((width + step - 1) / step),
                  static_cast<int>((height + step - 1) / step), {});
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x)
            canvas.set(x, y,
                       meanOf(pixels, static_cast<std::size_t>(x) * step,
                              static_cast<std::size_t>(y) * step, step));
    auto shot = std::make_shared<ScreenShot>();
    shot->png = encodePng(canvas);
    shot->width = static_cast<int>(width);
    shot->height = static_cast<int>(height);
    return shot->png.empty() ? nullptr : shot;
}

} // namespace

std::shared_ptr<const ScreenShot> ScreenPicture::take() {
    const std::lock_guard lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    if (last && now - takenAt < leastAge)
        return last;
    last = shoot(display);
    takenAt = std::chrono::steady_clock::now();
    return last;
}

bool measureDisplay(std::uint32_t display, int &width, int &height) {
    const Image image(CGDisplayCreateImage(display));
    width = static_cast<int>(image.width());
    height = static_cast<int>(image.height());
    return width > 0 && height > 0;
}

} // namespace panelwall
