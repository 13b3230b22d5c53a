#include "platform/wayland/screenCopy.h"

#include "platform/wayland/pixelFormat.h"

namespace platform::wayland {

namespace {

constexpr std::uint32_t largestSide = 65535;
constexpr std::uint64_t largestFrame = std::uint64_t{1} << 30;

// Whether the compositor's numbers describe a picture that can be read.
bool isReadable(std::uint32_t code, std::uint32_t width, std::uint32_t height,
                std::uint32_t stride) {
    const PixelFormat *format = PixelFormat::of(code);
    if (format == nullptr || width == 0 || height == 0)
        return false;
    return width <= largestSide && height <= largestSide && stride >= width * format->bytes &&
           std::uint64_t{stride} * height <= largestFrame;
}

} // namespace

const zwlr_screencopy_frame_v1_listener ScreenCopy::listener = {
    .buffer =
        [](void *self, zwlr_screencopy_frame_v1 *, std::uint32_t format, std::uint32_t width,
           std::uint32_t height, std::uint32_t stride) {
            auto &copy = *static_cast<ScreenCopy *>(self);
            if (copy.now != State::Asked || copy.hasOffer ||
                !isReadable(format, width, height, stride))
                return;
            copy.hasOffer = true;
            copy.offered = {format, static_cast<int>(width), static_cast<int>(height), stride};
        },
    .flags =
        [](void *self, zwlr_screencopy_frame_v1 *, std::uint32_t flags) {
            static_cast<ScreenCopy *>(self)->upsideDown =
                (flags & ZWLR_SCREENCOPY_FRAME_V1_FLAGS_Y_INVERT) != 0;
        },
    .ready =
        [](void *self, zwlr_screencopy_frame_v1 *, std::uint32_t, std::uint32_t, std::uint32_t) {
            auto &copy = *static_cast<ScreenCopy *>(self);
            copy.now = copy.now == State::Copying ? State::Ready : State::Failed;
        },
    .failed = [](void *self,
                 zwlr_screencopy_frame_v1 *) { static_cast<ScreenCopy *>(self)->fail(); },
    .damage = [](void *, zwlr_screencopy_frame_v1 *, std::uint32_t, std::uint32_t, std::uint32_t,
                 std::uint32_t) {},
    .linux_dmabuf = [](void *, zwlr_screencopy_frame_v1 *, std::uint32_t, std::uint32_t,
                       std::uint32_t) {},
    .buffer_done =
        [](void *self, zwlr_screencopy_frame_v1 *) {
            auto &copy = *static_cast<ScreenCopy *>(self);
            if (copy.now == State::Asked)
                copy.now = copy.hasOffer ? State::Offered : State::Failed;
        },
};

void ScreenCopy::ask(wl_output *output) {
    constexpr std::int32_t withoutPointer = 0;
    drop();
    frame.reset(zwlr_screencopy_manager_v1_capture_output(compositor.screenCopies(), withoutPointer,
                                                          output));
    const bool asked =
        frame && zwlr_screencopy_frame_v1_add_listener(frame.get(), &listener, this) == 0;
    now = asked ? State::Asked : State::Failed;
}

void ScreenCopy::copy(wl_buffer *memory, When when) {
    if (memory == nullptr) {
        fail();
        return;
    }
    if (when == When::Now)
        zwlr_screencopy_frame_v1_copy(frame.get(), memory);
    else
        zwlr_screencopy_frame_v1_copy_with_damage(frame.get(), memory);
    now = State::Copying;
}

void ScreenCopy::drop() {
    frame.reset();
    now = State::Idle;
    hasOffer = false;
    upsideDown = false;
}

} // namespace platform::wayland
