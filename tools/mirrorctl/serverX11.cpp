#include "tools/mirrorctl/server.h"
#include "tools/mirrorctl/waiting.h"
#include "tools/mirrorctl/xServer.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

namespace mirrorctl {

std::string serverName() {
    const char *name = std::getenv("DISPLAY");
    return std::string("the X server \"") + (name ? name : "") + "\"";
}

std::optional<std::size_t> countDisplays() {
    const XServer server;
    if (!server.isThere())
        return std::nullopt;
    const XReply<xcb_randr_get_monitors_reply_t> monitors(xcb_randr_get_monitors_reply(
        server.get(), xcb_randr_get_monitors(server.get(), server.root().root, 1), nullptr));
    if (!monitors)
        return std::nullopt;
    std::size_t count = 0;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(monitors.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each))
        if (each.data->width > 0 && each.data->height > 0)
            ++count;
    return count;
}

using Clock = std::chrono::steady_clock;

static constexpr auto questionPeriod = std::chrono::seconds(1);
static constexpr auto answerPatience = std::chrono::seconds(1);

// The thread may be left behind in a connection that is being made, so it shares this.
struct ServerWatch::Shared {
    std::atomic<State> state = State::opening;
    std::atomic<bool> owes = false;
    // Two sockets that are connected, the watch's and the thread's: a byte to the watch says that
    // the state has changed, one to the thread that it shall ask now, the end that it shall end.
    int ours = -1;
    int theirs = -1;

    Shared();
    Shared(const Shared &) = delete;
    Shared &operator=(const Shared &) = delete;
    ~Shared();

    void become(State next);
    void follow(xcb_connection_t *connection);
};

ServerWatch::Shared::Shared() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    ours = ends[0];
    theirs = ends[1];
}

ServerWatch::Shared::~Shared() {
    close(ours);
    close(theirs);
}

static void wake(int fd) {
    send(fd, "", 1, MSG_NOSIGNAL);
}

// Takes in the bytes that have come; false when the other end has been shut down.
static bool drain(int fd) {
    char bytes[64];
    ssize_t size = 0;
    while ((size = recv(fd, bytes, sizeof bytes, 0)) > 0) {
    }
    return size != 0;
}

void ServerWatch::Shared::become(State next) {
    if (state.exchange(next) != next)
        wake(theirs);
}

static std::optional<double> secondsUntil(std::optional<Clock::time_point> time) {
    if (!time)
        return std::nullopt;
    return std::chrono::duration<double>(*time - Clock::now()).count();
}

// The watch's thread: asks and waits until the connection or the watch ends.
void ServerWatch::Shared::follow(xcb_connection_t *connection) {
    std::optional<Clock::time_point> next = Clock::now(); // to ask, or to lose patience
    unsigned question = 0;
    bool isAsking = false;
    while (xcb_connection_has_error(connection) == 0) {
        while (const XReply<xcb_generic_event_t> unasked{xcb_poll_for_event(connection)}) {
        }
        void *reply = nullptr;
        xcb_generic_error_t *error = nullptr;
        if (isAsking && xcb_poll_for_reply(connection, question, &reply, &error) == 1) {
            std::free(reply);
            std::free(error);
            if (xcb_connection_has_error(connection) != 0)
                return;
            isAsking = false;
            owes = false;
            become(State::answering);
            next = Clock::now() + questionPeriod;
        }
        if (!isAsking && (owes || *next <= Clock::now())) {
            question = xcb_get_input_focus(connection).sequence;
            xcb_flush(connection);
            isAsking = true;
            next = Clock::now() + answerPatience;
            continue;
        }
        if (next && *next <= Clock::now()) {
            become(State::silent);
            next.reset();
        }
        awaitReadable({xcb_get_file_descriptor(connection), theirs}, secondsUntil(next));
        if (!drain(theirs))
            return;
    }
}

// Several threads connect, the library's among them, and what reads the authority file keeps the
// name that it makes of HOME in one buffer for all. A name in the environment is taken as it is.
static void nameAuthorityFile() {
    // NOLINTBEGIN(concurrency-mt-unsafe): the first watch is made before any of these threads
    static const bool isNamed = [] {
        const char *home = std::getenv("HOME");
        return !home || setenv("XAUTHORITY", (std::string(home) + "/.Xauthority").c_str(), 0) == 0;
    }();
    // NOLINTEND(concurrency-mt-unsafe)
    static_cast<void>(isNamed);
}

ServerWatch::ServerWatch() : shared(std::make_shared<Shared>()) {
    nameAuthorityFile();
    std::thread([own = shared] {
        // What is written to a server that has gone must not end the process.
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, nullptr);
        xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
        own->follow(connection);
        xcb_disconnect(connection);
        own->become(own->state == State::opening ? State::absent : State::gone);
    }).detach();
}

ServerWatch::~ServerWatch() {
    shutdown(shared->ours, SHUT_WR);
}

ServerWatch::State ServerWatch::state() const {
    drain(shared->ours);
    return shared->state;
}

int ServerWatch::descriptor() const {
    return shared->ours;
}

void ServerWatch::ask() {
    shared->owes = true;
    wake(shared->ours);
}

bool ServerWatch::owesAnswer() const {
    return shared->owes;
}

} // namespace mirrorctl
