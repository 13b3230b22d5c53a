#include "platform/wayland/source.h"

#include "platform/wayland/capture.h"

namespace platform::wayland {

namespace {

std::optional<std::vector<std::uint32_t>> listDisplays() {
    const std::unique_ptr<Compositor> compositor = Compositor::open();
    if (!compositor)
        return std::nullopt;
    return compositor->displays();
}

std::optional<platform::Capture> openCapture(const CaptureSettings &settings, FrameGate &gate) {
    const std::shared_ptr<Capture> capture = Capture::open(settings, gate);
    if (!capture)
        return std::nullopt;
    return platform::Capture{capture->pixels(),
                             [capture](const auto &onEvent) { capture->run(onEvent); }, [] {}};
}

} // namespace

constinit const Source displaySource{listDisplays, Capture::picture, Capture::isPossible,
                                     openCapture};

} // namespace platform::wayland
