#include "platform/wayland/pixelFormat.h"

#include "platform/wayland/client.h"

#include <algorithm>

namespace platform::wayland {

namespace {

constexpr PixelFormat formats[] = {
    {WL_SHM_FORMAT_XRGB8888, 4, {{{0, 8}, {8, 8}, {16, 8}}}},
    {WL_SHM_FORMAT_ARGB8888, 4, {{{0, 8}, {8, 8}, {16, 8}}}},
    {WL_SHM_FORMAT_XBGR8888, 4, {{{16, 8}, {8, 8}, {0, 8}}}},
    {WL_SHM_FORMAT_ABGR8888, 4, {{{16, 8}, {8, 8}, {0, 8}}}},
    {WL_SHM_FORMAT_RGBX8888, 4, {{{8, 8}, {16, 8}, {24, 8}}}},
    {WL_SHM_FORMAT_RGBA8888, 4, {{{8, 8}, {16, 8}, {24, 8}}}},
    {WL_SHM_FORMAT_BGRX8888, 4, {{{24, 8}, {16, 8}, {8, 8}}}},
    {WL_SHM_FORMAT_BGRA8888, 4, {{{24, 8}, {16, 8}, {8, 8}}}},
    {WL_SHM_FORMAT_XRGB2101010, 4, {{{0, 10}, {10, 10}, {20, 10}}}},
    {WL_SHM_FORMAT_ARGB2101010, 4, {{{0, 10}, {10, 10}, {20, 10}}}},
    {WL_SHM_FORMAT_XBGR2101010, 4, {{{20, 10}, {10, 10}, {0, 10}}}},
    {WL_SHM_FORMAT_ABGR2101010, 4, {{{20, 10}, {10, 10}, {0, 10}}}},
    {WL_SHM_FORMAT_RGB888, 3, {{{0, 8}, {8, 8}, {16, 8}}}},
    {WL_SHM_FORMAT_BGR888, 3, {{{16, 8}, {8, 8}, {0, 8}}}},
    {WL_SHM_FORMAT_RGB565, 2, {{{0, 5}, {5, 6}, {11, 5}}}},
    {WL_SHM_FORMAT_BGR565, 2, {{{11, 5}, {5, 6}, {0, 5}}}},
};

} // namespace

const PixelFormat *PixelFormat::of(std::uint32_t code) {
    const auto *const found =
        std::find_if(std::begin(formats), std::end(formats),
                     [code](const PixelFormat &format) { return format.code == code; });
    return found == std::end(formats) ? nullptr : found;
}

} // namespace platform::wayland
