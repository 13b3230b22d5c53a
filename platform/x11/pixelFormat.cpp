#include "platform/x11/pixelFormat.h"

#include <bit>

namespace platform::x11 {

const xcb_visualtype_t *rootVisual(const xcb_screen_t &screen) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0;
         xcb_depth_next(&depths))
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals))
            if (visuals.data->visual_id == screen.root_visual)
                return visuals.data;
    return nullptr;
}

const xcb_format_t *formatOfDepth(const xcb_setup_t *setup, std::uint8_t depth) {
    for (auto formats = xcb_setup_pixmap_formats_iterator(setup); formats.rem > 0;
         xcb_format_next(&formats))
        if (formats.data->depth == depth)
            return formats.data;
    return nullptr;
}

std::optional<PixelFormat::Channel> PixelFormat::channelOf(std::uint32_t mask) {
    const int bits = std::popcount(mask);
    if (bits < 1 || bits > 16)
        return std::nullopt;
    Channel channel;
    channel.mask = mask;
    channel.shift = std::countr_zero(mask);
    const std::uint32_t largest = mask >> channel.shift;
    if (largest != (1u << bits) - 1)
        return std::nullopt;
    for (std::uint32_t value = 0; value <= largest; ++value)
        channel.values.push_back(static_cast<std::uint8_t>((value * 255 + largest / 2) / largest));
    return channel;
}

std::optional<PixelFormat> PixelFormat::of(const Connection &connection) {
    const xcb_setup_t *setup = xcb_get_setup(connection.get());
    const xcb_screen_t &screen = connection.screen();
    const xcb_visualtype_t *visual = rootVisual(screen);
    const xcb_format_t *format = formatOfDepth(setup, screen.root_depth);
    if (visual == nullptr || visual->_class != XCB_VISUAL_CLASS_TRUE_COLOR || format == nullptr ||
        (format->bits_per_pixel != 16 && format->bits_per_pixel != 32) ||
        (format->scanline_pad != 8 && format->scanline_pad != 16 && format->scanline_pad != 32))
        return std::nullopt;

    PixelFormat pixels;
    pixels.bytes = format->bits_per_pixel / 8u;
    pixels.rowPadding = format->scanline_pad / 8u;
    const bool littleEndian = setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
    for (std::size_t i = 0; i < pixels.bytes; ++i)
        pixels.byteShifts[i] = 8 * static_cast<int>(littleEndian ? i : pixels.bytes - 1 - i);
    const std::uint32_t masks[] = {visual->blue_mask, visual->green_mask, visual->red_mask};
    for (std::size_t c = 0; c < 3; ++c) {
        std::optional<Channel> channel = channelOf(masks[c]);
        if (!channel)
            return std::nullopt;
        pixels.channels[c] = std::move(*channel);
    }
    pixels.bgrx = littleEndian && pixels.bytes == 4 && visual->blue_mask == 0xff &&
                  visual->green_mask == 0xff00 && visual->red_mask == 0xff0000;
    return pixels;
}

std::size_t PixelFormat::rowBytes(int width) const {
    const std::size_t row = static_cast<std::size_t>(width) * bytes;
    return (row + rowPadding - 1) / rowPadding * rowPadding;
}

} // namespace platform::x11
