// Which display server this process uses, and why. The rule is in sessionSource.cpp.
#pragma once

namespace platform {

enum class Session { X11, Wayland, None };

struct SessionChoice {
    Session session = Session::None;
    const char *reason = ""; // a clause, such as: WAYLAND_DISPLAY is not set
};

// Any thread; does not wait. Loads no library.
SessionChoice chooseSession();

} // namespace platform
