#include "platform/wayland/compositorSocket.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>

namespace platform::wayland {

namespace {

std::string variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// Empty when the environment does not say enough.
std::string socketPath() {
    std::string name = variable("WAYLAND_DISPLAY");
    if (name.empty())
        name = "wayland-0";
    if (name[0] == '/')
        return name;
    const std::string folder = variable("XDG_RUNTIME_DIR");
    return folder.empty() ? "" : folder + "/" + name;
}

} // namespace

CompositorSocket openCompositorSocket() {
    CompositorSocket compositor;
    const std::string path = socketPath();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return compositor;
    path.copy(address.sun_path, path.size());
    Descriptor candidate(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size() + 1);
    if (!candidate.valid())
        return compositor;
    if (connect(candidate.get(), reinterpret_cast<const sockaddr *>(&address), length) == 0)
        compositor.descriptor = std::move(candidate);
    else
        compositor.silent = errno == EAGAIN;
    return compositor;
}

bool isCompositorThere() {
    const CompositorSocket compositor = openCompositorSocket();
    return compositor.descriptor.valid() || compositor.silent;
}

} // namespace platform::wayland
