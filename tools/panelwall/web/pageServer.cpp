#include "tools/panelwall/web/pageServer.h"

#include "tools/lights/address.h"
#include "tools/panelwall/web/access.h"
#include "tools/panelwall/web/connection.h"
#include "tools/panelwall/web/pageFiles.h"

#include <cerrno>
#include <csignal>
#include <system_error>

namespace panelwall {

// The page loads only from this server. Replies may not be framed, read by other sites or cached,
// and no other site may learn the address.
static const httplib::Headers everyAnswer = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"Cache-Control", "no-store"},
};

static void answerError(httplib::Response &response, int status, const std::string &reason) {
    response.status = status;
    if (status == 405)
        response.set_header("Allow", "GET");
    response.set_content(reason + "\n", "text/plain; charset=utf-8");
}

PageServer::PageServer(LiveFeed &feed_, ScreenPicture &picture_)
    : feed(feed_), picture(picture_), token(makeToken()) {
    set_default_headers(everyAnswer);
    // Replaces the library's default, which lets two programs share a port. This option allows
    // listening while connections of a wall that has ended linger, but not while another wall
    // listens.
    set_socket_options([this](socket_t descriptor) {
        const int yes = 1;
        setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        listening = descriptor;
    });
    // One thread more than the connection limit, to refuse further connections.
    new_task_queue = [] { return new httplib::ThreadPool(maxConnections + 1); };
    set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) {
        answer(request, response);
        return HandlerResponse::Handled;
    });
    set_exception_handler(
        // NOLINTNEXTLINE(performance-unnecessary-value-param): the server hands over a copy
        [](const httplib::Request &, httplib::Response &response, std::exception_ptr) {
            answerError(response, 500, "The wall could not make an answer.");
        });
}

PageServer::~PageServer() {
    stopping.signal();
    feed.close();
    stop();
    if (listener.joinable())
        listener.join();
}

static std::string describeFailure(int port, int error) {
    const std::string name = "port " + std::to_string(port);
    if (error == EADDRINUSE)
        return name + " is in use; end the program that has it, or choose another port with --web "
                      "PORT (0 takes any free one)";
    if (error == EACCES)
        return name + " is reserved for the system; choose one from 1024 on";
    if (error == EADDRNOTAVAIL)
        return "this machine has no such address; 127.0.0.1 is its own, 0.0.0.0 means all";
    return std::generic_category().message(error);
}

std::string PageServer::open(const std::string &address, int port) {
    const std::string failure = "the live page cannot be served at ";
    if (!lights::parseEndpoint(address, port))
        return failure + address + ": write an address such as 127.0.0.1, ::1 or 0.0.0.0";
    errno = 0;
    const int bound = port == 0 ? bind_to_any_port(address, AI_NUMERICHOST)
                      : bind_to_port(address, port, AI_NUMERICHOST) ? port
                                                                    : -1;
    if (bound < 0)
        return failure + lights::endpointText(address, port) + ": " + describeFailure(port, errno);
    ::listen(listening, SOMAXCONN); // the library's backlog is so short that pages would wait
    // A browser cannot open a wildcard address; it includes the loopback address.
    name = lights::endpointText(address == "0.0.0.0" ? "127.0.0.1"
                                : address == "::"    ? "::1"
                                                     : address,
                                bound);

    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    listener = std::thread([this] { listen_after_bind(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    // stop() works only once the server runs.
    while (!is_running())
        std::this_thread::yield();
    return {};
}

bool PageServer::process_and_close_socket(socket_t descriptor) {
    Connection connection(descriptor, stopping.descriptor());
    if (++connections > maxConnections) {
        connection.httplib::Stream::write(
            "HTTP/1.1 503 Service Unavailable\r\nConnection: close\r\nContent-Type: text/plain\r\n"
            "\r\nToo many connections; try again later.\n");
    } else {
        bool closed = false;
        // Many ranges of one file could make a reply of any size, so ranges are ignored.
        const auto dropRanges = [](httplib::Request &request) { request.ranges.clear(); };
        try {
            process_request(connection, true, closed, dropRanges);
        } catch (...) { // out of memory; this connection ends, the wall goes on
        }
        connection.finish();
    }
    --connections;
    return true;
}

void PageServer::answer(const httplib::Request &request, httplib::Response &response) {
    const Rejection rejection = checkRequest(request, token);
    if (rejection.status != 0)
        return answerError(response, rejection.status, rejection.reason);
    const std::string path = request.path.substr(token.size() + 2);
    if (path == "events")
        return answerEvents(response);
    if (path == "screen.png")
        return answerPicture(response);
    const PageFile *file = findPageFile(path);
    if (file == nullptr)
        return answerError(response, 404, "The wall has no such page.");
    response.set_content(file->content.data(), file->content.size(), std::string(file->type));
}

void PageServer::answerEvents(httplib::Response &response) {
    const auto reader = std::make_shared<LiveFeed::Reader>(feed);
    if (feed.readers() > maxReaders)
        return answerError(response, 503, "Too many pages show this wall; close one.");
    response.set_chunked_content_provider("text/event-stream",
                                          [reader](std::size_t, httplib::DataSink &sink) {
                                              const LiveFeed::Text text = reader->next();
                                              return text && sink.write(text->data(), text->size());
                                          });
}

void PageServer::answerPicture(httplib::Response &response) {
    const auto shot = picture.take();
    if (!shot)
        return answerError(
            response, 404,
            "The mirrored display cannot be seen from panelwall: start it where mirroring "
            "runs, with the same DISPLAY or WAYLAND_DISPLAY.");
    response.set_header("X-Screen-Size",
                        std::to_string(shot->width) + "x" + std::to_string(shot->height));
    response.set_content(shot->png.data(), shot->png.size(), "image/png");
}

} // namespace panelwall
