#include "tests/tools/mirrorctl/waylandSession.h"

#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace test {

namespace {

constexpr int patienceMilliseconds = 30000;

// The compositor refuses to run as root, and its X server lets its own user in and nobody else
// unless told so. It runs one program and ends with it: here one that tells the X server's name and
// stays until its input ends.
constexpr const char *script = R"sh(
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
                           exec cat >/dev/null' 2>&1
)sh";

// False at the end, and when nothing came in time.
bool readMore(int fd, std::string &text) {
    pollfd waiting{fd, POLLIN, 0};
    char bytes[4096];
    const ssize_t size =
        poll(&waiting, 1, patienceMilliseconds) > 0 ? read(fd, bytes, sizeof bytes) : 0;
    if (size > 0)
        text.append(bytes, static_cast<std::size_t>(size));
    return size > 0;
}

} // namespace

WaylandSession::WaylandSession() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::runtime_error("no sockets");
    keeper = ends[0];
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, ends[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, ends[1], STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    char sh[] = "sh";
    char option[] = "-c";
    std::string commands = script;
    char *arguments[] = {sh, option, commands.data(), nullptr};
    const int error = posix_spawn(&shell, "/bin/sh", &files, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0)
        shell = -1;
    close(ends[1]);

    std::string said;
    const std::string before = "X server ";
    std::size_t begin = std::string::npos;
    std::size_t lineEnd = std::string::npos;
    while (lineEnd == std::string::npos && readMore(keeper, said)) {
        begin = said.find(before);
        lineEnd = begin == std::string::npos ? begin : said.find('\n', begin);
    }
    if (lineEnd == std::string::npos) {
        end();
        throw std::runtime_error("no Wayland session came up: " + said);
    }
    begin += before.size();
    name = said.substr(begin, lineEnd - begin);
}

WaylandSession::~WaylandSession() {
    end();
}

void WaylandSession::end() {
    shutdown(keeper, SHUT_WR);
    std::string said;
    while (readMore(keeper, said)) {
    }
    close(keeper);
    if (shell < 0)
        return;
    // Whatever did not heed the end of its input in time.
    kill(-shell, SIGKILL);
    waitpid(shell, nullptr, 0);
}

} // namespace test
