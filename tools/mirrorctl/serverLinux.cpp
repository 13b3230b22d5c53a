#include "tools/mirrorctl/server.h"

#include "platform/objects/signals.h"
#include "platform/x11/monitors.h"
#include "tools/mirrorctl/waiting.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <xcb/xcbext.h>

namespace mirrorctl {

using platform::x11::Reply;

std::string serverName() {
    const char *name = std::getenv("DISPLAY");
    return std::string("the X server \"") + (name ? name : "") + "\"";
}

std::optional<std::size_t> countDisplays() {
    const platform::SigpipeGuard guard;
    const auto connection = platform::x11::Connection::open();
    const auto monitors = connection ? platform::x11::listMonitors(*connection) : std::nullopt;
    return monitors ? std::optional(monitors->size()) : std::nullopt;
}

using Clock = std::chrono::steady_clock;

static constexpr auto questionPeriod = std::chrono::seconds(1);
static constexpr auto answerPatience = std::chrono::seconds(1);

// Shared with the thread, which may outlive the watch while it is still connecting.
struct ServerWatch::Shared {
    std::atomic<State> state = State::Opening;
    std::atomic<bool> isPending = false;
    std::atomic<bool> isOver = false; // the watch is gone, and the thread must end
    WakeUp changed;                   // signals a new state
    WakeUp told;                      // makes the thread check `isPending` and `isOver`
    std::thread thread;               // used only by the watch's owner

    void become(State next) {
        if (state.exchange(next) != next)
            changed.signal();
    }
    void follow(xcb_connection_t *connection);
};

// The watch's thread: sends requests until the connection or the watch ends.
void ServerWatch::Shared::follow(xcb_connection_t *connection) {
    auto next = Clock::now();         // time of the next request, or to report silence
    std::optional<unsigned> question; // the unanswered request
    while (xcb_connection_has_error(connection) == 0 && !isOver) {
        while (const Reply<xcb_generic_event_t> unasked{xcb_poll_for_event(connection)}) {
        }
        void *reply = nullptr;
        xcb_generic_error_t *error = nullptr;
        if (question && xcb_poll_for_reply(connection, *question, &reply, &error) == 1) {
            std::free(reply);
            std::free(error);
            if (xcb_connection_has_error(connection) != 0)
                return;
            question.reset();
            isPending = false;
            become(State::Answering);
            next = Clock::now() + questionPeriod;
        }
        if (!question && (isPending || next <= Clock::now())) {
            question = xcb_get_input_focus(connection).sequence;
            xcb_flush(connection);
            next = Clock::now() + answerPatience;
            continue;
        }
        if (next <= Clock::now()) {
            become(State::Silent);
            next = Clock::time_point::max();
        }
        const std::chrono::duration<double> left = next - Clock::now();
        awaitReadable({xcb_get_file_descriptor(connection), told.descriptor()}, left.count());
        told.clear();
    }
}

// Several threads connect, the library's among them, and the reader of the authority file builds
// the default name from HOME in one static buffer. It uses a name from the environment as it is.
static void nameAuthorityFile() {
    // NOLINTBEGIN(concurrency-mt-unsafe): only the first watch changes it, before these threads
    if (const char *home = std::getenv("HOME"))
        setenv("XAUTHORITY", (std::string(home) + "/.Xauthority").c_str(), 0);
    // NOLINTEND(concurrency-mt-unsafe)
}

ServerWatch::ServerWatch() : shared(std::make_shared<Shared>()) {
    nameAuthorityFile();
    // The thread blocks signals: writing to a server that has gone must not end the process.
    shared->thread = platform::startThread([own = shared] {
        xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
        own->follow(connection);
        xcb_disconnect(connection);
        own->become(own->state == State::Opening ? State::Absent : State::Gone);
    });
}

ServerWatch::~ServerWatch() {
    shared->isOver = true;
    shared->told.signal();
    // Only connecting can take long.
    shared->state == State::Opening ? shared->thread.detach() : shared->thread.join();
}

ServerWatch::State ServerWatch::state() const {
    shared->changed.clear();
    return shared->state;
}

int ServerWatch::descriptor() const {
    return shared->changed.descriptor();
}

void ServerWatch::ask() {
    shared->isPending = true;
    shared->told.signal();
}

bool ServerWatch::hasPendingRequest() const {
    return shared->isPending;
}

} // namespace mirrorctl
