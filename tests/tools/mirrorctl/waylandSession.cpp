#include "tests/tools/mirrorctl/waylandSession.h"

#include <stdexcept>

namespace test {

// The compositor refuses to run as root, and its X server accepts only its own user unless told
// otherwise. The compositor runs one program and ends with it: here one that prints the X server's
// name and stays until its input ends. Everything runs on a separate terminal, so nothing is left
// when the shell is killed.
static constexpr const char *script = R"sh(
    [ -d /tmp/.X11-unix ] || mkdir -m 1777 /tmp/.X11-unix
    directory=$(mktemp -d /tmp/wayland.XXXXXX) || exit
    trap 'rm -rf "$directory"' EXIT
    unset DISPLAY WAYLAND_DISPLAY LD_PRELOAD as
    if [ "$(id -u)" -eq 0 ]; then
        chown 65534:65534 "$directory"
        as='setpriv --reuid=65534 --regid=65534 --clear-groups'
    fi
    cd "$directory"
    USER=$(id -un) XDG_RUNTIME_DIR=$directory HOME=$directory WLR_BACKENDS=headless WLR_RENDERER=pixman \
        WLR_LIBINPUT_NO_DEVICES=1 \
        $as cage -- sh -c 'xhost "+SI:localuser:$USER"
                           echo "X server $DISPLAY"
                           exec cat >/dev/null'
)sh";

WaylandSession::WaylandSession()
    : session({"/bin/sh", "-c", script}, {.terminal = TerminalSize()}) {
    const std::string before = "X server ";
    session.waitFor(before);
    const auto begin = session.out().find(before) + before.size();
    session.waitFor("\r\n", begin);
    name = session.out().substr(begin, session.out().find('\r', begin) - begin);
}

WaylandSession::~WaylandSession() {
    try {
        session.type("\x04"); // the end of the input
        session.finish();
    } catch (const std::runtime_error &) {
        // Programs that ignore the end of the input are killed with the shell.
    }
}

} // namespace test
