#include "tools/mirrorctl/server.h"

#include "platform/objects/signals.h"
#include "platform/session.h"
#include "platform/wayland/connection.h"
#include "platform/wayland/proxy.h"
#include "platform/x11/connection.h"
#include "tools/mirrorctl/waiting.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <utility>
#include <xcb/xcbext.h>

namespace mirrorctl {

namespace wayland = platform::wayland;
using platform::Session;
using platform::x11::Reply;

static std::string variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

static Session session() {
    return platform::chooseSession().session;
}

static std::string compositorVariable() {
    const std::string name = variable("WAYLAND_DISPLAY");
    return name.empty() ? "wayland-0" : name;
}

std::string serverName() {
    switch (session()) {
    case Session::X11:
        return "the X server \"" + variable("DISPLAY") + "\"";
    case Session::Wayland:
        return "the compositor \"" + compositorVariable() + "\"";
    default:
        return "the display server";
    }
}

std::string noDisplayHint() {
    switch (session()) {
    case Session::X11:
        if (variable("DISPLAY").empty())
            return "  On X11: the variable DISPLAY is not set; set it to the X server's name, such "
                   "as :0.\n";
        return "  On X11: DISPLAY is \"" + variable("DISPLAY") +
               "\"; is that X server running, does it let this user in, has it a monitor?\n";
    case Session::Wayland:
        return "  On Wayland: WAYLAND_DISPLAY is \"" + compositorVariable() +
               "\"; is that compositor running, has it a monitor, is libwayland-client installed?"
               "\n";
    default:
        return "  MIRROR_DISPLAY_SERVER is \"" + variable("MIRROR_DISPLAY_SERVER") +
               "\"; set it to x11 or wayland, or unset it.\n";
    }
}

namespace {

// Each of these is a connection of the watch's thread that can be asked for a sign of life.
// isOpen() takes what has arrived, and is false once the server has gone. takeAnswer() is true once
// for each answer.

class XLink {
public:
    // Can take long.
    XLink() : connection(xcb_connect(nullptr, nullptr)) {}
    ~XLink() { xcb_disconnect(connection); }
    XLink(const XLink &) = delete;
    XLink &operator=(const XLink &) = delete;

    int descriptor() const { return xcb_get_file_descriptor(connection); }
    bool isOpen() const {
        while (const Reply<xcb_generic_event_t> unasked{xcb_poll_for_event(connection)}) {
        }
        return xcb_connection_has_error(connection) == 0;
    }
    void ask() {
        question = xcb_get_input_focus(connection).sequence;
        xcb_flush(connection);
    }
    bool takeAnswer() const {
        void *reply = nullptr;
        xcb_generic_error_t *error = nullptr;
        if (xcb_poll_for_reply(connection, question, &reply, &error) != 1)
            return false;
        std::free(reply);
        std::free(error);
        return xcb_connection_has_error(connection) == 0;
    }

private:
    xcb_connection_t *const connection;
    unsigned question = 0;
};

class WaylandLink {
public:
    WaylandLink() : connection(wayland::Connection::open()) {}

    int descriptor() const { return connection->descriptor(); }
    bool isOpen() const { return connection && connection->dispatch(); }
    void ask() {
        static const wl_callback_listener listener = {
            .done = [](void *isAnswered, wl_callback *, std::uint32_t) {
                *static_cast<bool *>(isAnswered) = true;
            }};
        question.reset(wl_display_sync(connection->get()));
        if (question)
            wl_callback_add_listener(question.get(), &listener, &answered);
        connection->flush();
    }
    bool takeAnswer() { return std::exchange(answered, false); }

private:
    const std::unique_ptr<wayland::Connection> connection;
    wayland::Proxy<wl_callback> question;
    bool answered = false;
};

} // namespace

using Clock = std::chrono::steady_clock;

static constexpr auto questionPeriod = std::chrono::seconds(1);
static constexpr auto answerPatience = std::chrono::seconds(1);

// Shared with the thread, which may outlive the watch while it is still connecting.
struct ServerWatch::Shared {
    std::atomic<State> state = State::Opening;
    std::atomic<bool> isConnecting = true;
    std::atomic<bool> isPending = false;
    std::atomic<bool> isOver = false; // the watch is gone, and the thread must end
    WakeUp changed;                   // signals a new state
    WakeUp told;                      // makes the thread check `isPending` and `isOver`
    std::thread thread;               // used only by the watch's owner

    void become(State next) {
        if (state.exchange(next) != next)
            changed.signal();
    }
    template <typename Link> void follow();
};

// The watch's thread: sends requests until the connection or the watch ends.
template <typename Link> void ServerWatch::Shared::follow() {
    Link link;
    isConnecting = false;
    auto next = Clock::now(); // time of the next request, or to report silence
    bool isAsked = false;     // and not answered
    while (link.isOpen() && !isOver) {
        if (isAsked && link.takeAnswer()) {
            isAsked = false;
            isPending = false;
            become(State::Answering);
            next = Clock::now() + questionPeriod;
        }
        if (!isAsked && (isPending || next <= Clock::now())) {
            link.ask();
            isAsked = true;
            next = Clock::now() + answerPatience;
            continue;
        }
        if (next <= Clock::now()) {
            if (state != State::Opening)
                become(State::Silent);
            next = Clock::time_point::max();
        }
        const std::chrono::duration<double> left = next - Clock::now();
        awaitReadable({link.descriptor(), told.descriptor()}, left.count());
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
    shared->thread = platform::startThread([own = shared, server = session()] {
        if (server == Session::X11)
            own->follow<XLink>();
        else if (server == Session::Wayland)
            own->follow<WaylandLink>();
        own->become(own->state == State::Opening ? State::Absent : State::Gone);
    });
}

ServerWatch::~ServerWatch() {
    shared->isOver = true;
    shared->told.signal();
    shared->isConnecting ? shared->thread.detach() : shared->thread.join();
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
