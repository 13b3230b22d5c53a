#include "tools/panelwall/web/pageServer.h"

#include "tools/lights/loopbackAddress.h"
#include "tools/panelwall/web/access.h"
#include "tools/panelwall/web/connection.h"
#include "tools/panelwall/web/listener.h"
#include "tools/panelwall/web/pageFiles.h"
#include "tools/panelwall/web/socketTable.h"

#include <atomic>
#include <csignal>
#include <list>
#include <thread>
#include <unistd.h>

namespace panelwall {

// Everything comes from here; nothing of it may be framed, read by other sites or kept.
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

class PageServer::Http : public httplib::Server {
public:
    Http(LiveFeed &theFeed, ScreenPicture &thePicture);
    ~Http() override;

    std::string open(const std::string &address, int port);
    const std::string &name() const { return listener.name(); }

    // A connection's thread.
    void serve(Connection &connection);

private:
    struct Client {
        std::unique_ptr<Connection> connection;
        std::thread thread;
        std::atomic<bool> done{false};
    };

    // The accepting thread.
    void acceptAll();
    void removeFinished();

    // A connection's thread.
    void answer(const httplib::Request &request, httplib::Response &response);
    void answerEvents(httplib::Response &response);
    void answerPicture(const httplib::Request &request, httplib::Response &response);

    LiveFeed &feed;
    ScreenPicture &picture;
    Listener listener;
    std::thread acceptor;
    std::list<Client> clients; // the accepting thread's; the destructor's once that has ended
    std::atomic<int> readers{0};
};

static void refuse(httplib::Response &response, int status, const std::string &reason) {
    response.status = status;
    if (status == 405)
        response.set_header("Allow", "GET");
    response.set_content(reason + "\n", "text/plain; charset=utf-8");
}

PageServer::Http::Http(LiveFeed &theFeed, ScreenPicture &thePicture)
    : feed(theFeed), picture(thePicture) {
    set_default_headers(everyAnswer);
    set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) {
        answer(request, response);
        return HandlerResponse::Handled;
    });
    set_exception_handler(
        // NOLINTNEXTLINE(performance-unnecessary-value-param): the server hands over a copy
        [](const httplib::Request &, httplib::Response &response, std::exception_ptr) {
            refuse(response, 500, "The wall could not make an answer.");
        });
}

PageServer::Http::~Http() {
    listener.stop();
    feed.close();
    if (acceptor.joinable())
        acceptor.join();
    svr_sock_ = INVALID_SOCKET;
    for (Client &client : clients)
        client.connection->shutDown();
    for (Client &client : clients)
        client.thread.join();
}

std::string PageServer::Http::open(const std::string &address, int port) {
    std::string reason = listener.open(address, port);
    if (!reason.empty())
        return reason;
    svr_sock_ = listener.fd(); // what the library takes for "running"
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    acceptor = std::thread([this] { acceptAll(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return {};
}

void PageServer::Http::acceptAll() {
    for (int fd = listener.accept(); fd >= 0; fd = listener.accept()) {
        removeFinished();
        if (clients.size() >= mostConnections) {
            static const char busy[] = "HTTP/1.1 503 Service Unavailable\r\nConnection: close\r\n"
                                       "Content-Type: text/plain\r\n\r\n"
                                       "The wall serves as many connections as it can.\n";
            [[maybe_unused]] const ssize_t written = write(fd, busy, sizeof busy - 1);
            close(fd);
            continue;
        }
        Client &client = clients.emplace_back();
        client.connection = std::make_unique<Connection>(fd);
        try {
            client.thread = std::thread([this, &client] {
                serve(*client.connection);
                client.done = true;
            });
        } catch (const std::system_error &) { // no thread to be had; the client may come again
            clients.pop_back();
        }
    }
}

void PageServer::Http::removeFinished() {
    for (auto client = clients.begin(); client != clients.end();) {
        if (!client->done) {
            ++client;
            continue;
        }
        client->thread.join();
        client = clients.erase(client);
    }
}

// A part of a file is never served: many parts of one file would make an answer of any size.
static void dropRanges(httplib::Request &request) {
    request.ranges.clear();
}

void PageServer::Http::serve(Connection &connection) {
    try {
        bool closed = false;
        process_request(connection, true, closed, dropRanges);
    } catch (...) { // out of memory; this connection ends, the wall goes on
    }
    connection.finish();
}

void PageServer::Http::answer(const httplib::Request &request, httplib::Response &response) {
    // Two answers to one question are no answer.
    const bool oneHost = request.get_header_value_count("Host") == 1;
    const Refusal refusal = judge(
        {request.method, request.path, oneHost ? request.get_header_value("Host") : "",
         request.get_header_value("Origin"), request.get_header_value("Sec-Fetch-Site"),
         request.get_header_value("Sec-Fetch-Mode"), request.get_header_value("Sec-Fetch-Dest")});
    if (refusal.status != 0)
        return refuse(response, refusal.status, refusal.reason);
    if (request.path == "/events")
        return answerEvents(response);
    if (request.path == "/screen.png")
        return answerPicture(request, response);
    const PageFile *file = findPageFile(request.path);
    if (file == nullptr)
        return refuse(response, 404, "The wall has no such page.");
    response.set_content(file->content.data(), file->content.size(), std::string(file->type));
}

void PageServer::Http::answerEvents(httplib::Response &response) {
    if (++readers > mostReaders) {
        --readers;
        return refuse(response, 503, "As many pages show this wall as it serves; close one.");
    }
    const auto reader = std::shared_ptr<LiveFeed::Reader>(new LiveFeed::Reader(feed),
                                                          [this](LiveFeed::Reader *ended) {
                                                              delete ended;
                                                              --readers;
                                                          });
    response.set_chunked_content_provider("text/event-stream",
                                          [reader](std::size_t, httplib::DataSink &sink) {
                                              const LiveFeed::Text text = reader->next();
                                              return text && sink.write(text->data(), text->size());
                                          });
}

static bool isLoopback(const sockaddr_storage &address) {
    const in6_addr six = sixOf(address);
    return IN6_IS_ADDR_LOOPBACK(&six) || (IN6_IS_ADDR_V4MAPPED(&six) && six.s6_addr[12] == 127);
}

// Where the system does not tell whose a connection is, being on this machine has to do.
static bool maySeeScreen(const httplib::Request &request) {
    const auto peer = parseEndpoint(request.remote_addr, request.remote_port);
    const auto own = parseEndpoint(request.local_addr, request.local_port);
    if (!peer || !own || !isLoopback(peer->address))
        return false;
    const auto sockets = systemSockets("tcp");
    if (!sockets)
        return true;
    const auto user = connectionUser(*sockets, peer->address, own->address);
    return user && (*user == geteuid() || *user == 0);
}

void PageServer::Http::answerPicture(const httplib::Request &request, httplib::Response &response) {
    if (!maySeeScreen(request))
        return refuse(response, 403,
                      "The screen's picture is only shown on this machine, to the user who runs "
                      "panelwall.");
    const auto shot = picture.take();
    if (!shot)
        return refuse(
            response, 404,
            "The mirrored display cannot be seen from panelwall: start it where mirroring "
            "runs, with the same DISPLAY.");
    response.set_header("X-Screen-Size",
                        std::to_string(shot->width) + "x" + std::to_string(shot->height));
    response.set_content(shot->png.data(), shot->png.size(), "image/png");
}

PageServer::PageServer(LiveFeed &feed, ScreenPicture &picture)
    : http(std::make_unique<Http>(feed, picture)) {}

PageServer::~PageServer() = default;

std::string PageServer::open(const std::string &address, int port) {
    return http->open(address, port);
}

void PageServer::serve(int descriptor) {
    Connection connection(descriptor);
    http->serve(connection);
}

std::string PageServer::url() const {
    return "http://" + http->name() + "/";
}

} // namespace panelwall
