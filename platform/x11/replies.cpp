#include "platform/x11/replies.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace platform::x11 {

namespace {

// The bytes that the length field of a setup, or of a reply, does not count.
constexpr std::size_t setupHead = 8;
constexpr std::size_t replyHead = 32;
constexpr std::size_t word = 4;

// Reads bytes from front to back; after an attempt to go past the end, it stays invalid.
class Walk {
public:
    Walk(const void *begin, std::size_t length)
        : at(static_cast<const std::uint8_t *>(begin)), left(length) {}

    bool isInside() const { return inside; }

    void skip(std::size_t bytes) {
        inside = inside && bytes <= left;
        if (!inside)
            return;
        at += bytes;
        left -= bytes;
    }

    // Skips one structure and returns it; all zero when it is beyond the end.
    template <typename T> T take() {
        T value{};
        const std::uint8_t *from = at;
        skip(sizeof value);
        if (inside)
            std::memcpy(&value, from, sizeof value);
        return value;
    }

private:
    const std::uint8_t *at;
    std::size_t left;
    bool inside = true;
};

} // namespace

bool isWhole(const xcb_setup_t &setup) {
    Walk walk(&setup, setupHead + word * setup.length);
    const auto head = walk.take<xcb_setup_t>();
    walk.skip((head.vendor_len + word - 1) / word * word);
    walk.skip(head.pixmap_formats_len * sizeof(xcb_format_t));
    for (int i = 0; i < head.roots_len; ++i) {
        const auto screen = walk.take<xcb_screen_t>();
        for (int j = 0; j < screen.allowed_depths_len; ++j)
            walk.skip(walk.take<xcb_depth_t>().visuals_len * sizeof(xcb_visualtype_t));
    }
    return walk.isInside();
}

bool isWhole(const xcb_randr_get_monitors_reply_t &reply) {
    Walk walk(&reply, replyHead + word * reply.length);
    const auto head = walk.take<xcb_randr_get_monitors_reply_t>();
    for (std::uint32_t i = 0; walk.isInside() && i < head.nMonitors; ++i)
        walk.skip(walk.take<xcb_randr_monitor_info_t>().nOutput * sizeof(xcb_randr_output_t));
    return walk.isInside();
}

bool isWhole(const xcb_get_atom_name_reply_t &reply) {
    return reply.name_len <= word * reply.length;
}

} // namespace platform::x11
