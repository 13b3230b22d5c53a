#include "platform/x11/replies.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

using platform::x11::isWhole;

namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename T> void append(Bytes &bytes, const T &value) {
    const auto *from = reinterpret_cast<const std::uint8_t *>(&value);
    bytes.insert(bytes.end(), from, from + sizeof value);
}

// Two formats; two screens, the first with two depths, of which one has three visuals.
Bytes goodSetup() {
    xcb_setup_t head{};
    head.vendor_len = 5;
    head.pixmap_formats_len = 2;
    head.roots_len = 2;
    Bytes bytes;
    append(bytes, head);
    bytes.resize(bytes.size() + 8 + 2 * sizeof(xcb_format_t));
    xcb_screen_t screen{};
    screen.allowed_depths_len = 2;
    append(bytes, screen);
    xcb_depth_t depth{};
    append(bytes, depth);
    depth.visuals_len = 3;
    append(bytes, depth);
    bytes.resize(bytes.size() + 3 * sizeof(xcb_visualtype_t));
    append(bytes, xcb_screen_t{});
    return bytes;
}

bool isWholeSetup(const Bytes &bytes, std::size_t size) {
    std::vector<std::uint32_t> aligned((size + 3) / 4);
    std::memcpy(aligned.data(), bytes.data(), size);
    auto *setup = reinterpret_cast<xcb_setup_t *>(aligned.data());
    setup->length = static_cast<std::uint16_t>((size - 8) / 4);
    return isWhole(*setup);
}

// Two monitors, one of them with two outputs.
Bytes goodMonitors() {
    xcb_randr_get_monitors_reply_t head{};
    head.nMonitors = 2;
    Bytes bytes;
    append(bytes, head);
    xcb_randr_monitor_info_t info{};
    info.nOutput = 2;
    append(bytes, info);
    bytes.resize(bytes.size() + 8);
    append(bytes, xcb_randr_monitor_info_t{});
    return bytes;
}

template <typename Reply> bool isWholeReply(const Bytes &bytes, std::size_t size) {
    std::vector<std::uint32_t> aligned(size / 4);
    std::memcpy(aligned.data(), bytes.data(), size);
    auto *reply = reinterpret_cast<Reply *>(aligned.data());
    reply->length = static_cast<std::uint32_t>((size - 32) / 4);
    return isWhole(*reply);
}

} // namespace

TEST(X11Replies, ASetupHoldsWhatItCounts) {
    const Bytes good = goodSetup();
    EXPECT_TRUE(isWholeSetup(good, good.size()));
    Bytes longer = good;
    longer.resize(longer.size() + 40);
    EXPECT_TRUE(isWholeSetup(longer, longer.size()));
    for (std::size_t size = 8; size < good.size(); size += 4)
        EXPECT_FALSE(isWholeSetup(good, size)) << size;
    Bytes boastful = good;
    boastful[offsetof(xcb_setup_t, roots_len)] = 3;
    EXPECT_FALSE(isWholeSetup(boastful, boastful.size()));
}

TEST(X11Replies, MonitorsAreAsManyAsCounted) {
    const Bytes good = goodMonitors();
    using Reply = xcb_randr_get_monitors_reply_t;
    EXPECT_TRUE(isWholeReply<Reply>(good, good.size()));
    for (std::size_t size = 32; size < good.size(); size += 4)
        EXPECT_FALSE(isWholeReply<Reply>(good, size)) << size;
    Bytes boastful = good;
    std::memset(&boastful[offsetof(Reply, nMonitors)], 0xff, 4);
    EXPECT_FALSE(isWholeReply<Reply>(boastful, boastful.size()));
    Bytes manyOutputs = good;
    std::memset(&manyOutputs[32 + offsetof(xcb_randr_monitor_info_t, nOutput)], 0xff, 2);
    EXPECT_FALSE(isWholeReply<Reply>(manyOutputs, manyOutputs.size()));
}

TEST(X11Replies, ANameIsAsLongAsCounted) {
    xcb_get_atom_name_reply_t head{};
    head.name_len = 6;
    Bytes bytes;
    append(bytes, head);
    bytes.resize(40);
    using Reply = xcb_get_atom_name_reply_t;
    EXPECT_TRUE(isWholeReply<Reply>(bytes, 40));
    EXPECT_FALSE(isWholeReply<Reply>(bytes, 36));
    EXPECT_FALSE(isWholeReply<Reply>(bytes, 32));
}
