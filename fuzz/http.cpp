// Sends any bytes to the live page's server: every connection ends, with or without a response, and
// requests without the token are refused. "/TOKEN/" in the input is replaced by the page's real
// path.
#include "fuzz/require.h"
#include "tools/panelwall/web/access.h"
#include "tools/panelwall/web/pageServer.h"

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

using fuzz::require;
using namespace panelwall;

namespace {

// A server whose feed has ended, so that its readers never wait. It is never destroyed.
PageServer &server() {
    static LiveFeed &feed = *new LiveFeed;
    static ScreenPicture &picture = *new ScreenPicture(1);
    static PageServer &only = *new PageServer(feed, picture);
    static const bool prepared = [] {
        signal(SIGPIPE, SIG_IGN); // as in the program
        feed.close();
        return true;
    }();
    (void)prepared;
    return only;
}

// The root path of all pages: "/TOKEN/" with the real token.
std::string root() {
    const std::string url = server().url();
    return url.substr(url.find('/', std::string("http://").size()));
}

std::string answerTo(const std::string &request) {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "there are sockets");
    const int room = 1 << 20;
    setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    const ssize_t sent = send(ends[0], request.data(), request.size(), MSG_NOSIGNAL);
    require(sent == static_cast<ssize_t>(request.size()), "the request fits the socket");
    shutdown(ends[0], SHUT_WR);
    server().process_and_close_socket(ends[1]);
    std::string answer;
    char part[65536];
    for (ssize_t size = 0; (size = recv(ends[0], part, sizeof part, 0)) > 0;)
        answer.append(part, static_cast<std::size_t>(size));
    close(ends[0]);
    return answer;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    std::string request = text;
    const std::string placeholder = "/TOKEN/";
    for (auto at = request.find(placeholder); at != std::string::npos;
         at = request.find(placeholder, at + 1))
        request.replace(at, placeholder.size(), root());
    const std::string answer = answerTo(request);
    const bool isGood = answer.starts_with("HTTP/1.1 200 ");
    require(answer.empty() || answer.starts_with("HTTP/1.1 "), "an answer is an answer");
    if (isGood) {
        // The server ignores tabs after the method.
        require(request.find("GET") != std::string::npos, "only GET is answered");
        require(request != text, "only those who know the token are answered");
        require(answer.find("default-src 'none'") != std::string::npos,
                "every answer tells browsers what it may do");
    }

    // The same input as the fields of a request for checkRequest(), one per line.
    httplib::Request facts;
    std::string host;
    std::string origin;
    std::string others[3];
    std::size_t at = 0;
    for (std::string *fact :
         {&facts.method, &facts.path, &host, &origin, &others[0], &others[1], &others[2]}) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        *fact = text.substr(at, end - at);
        at = std::min(end + 1, text.size());
    }
    facts.headers = {{"Host", host},
                     {"Origin", origin},
                     {"Sec-Fetch-Site", others[0]},
                     {"Sec-Fetch-Mode", others[1]},
                     {"Sec-Fetch-Dest", others[2]}};
    const Rejection rejection = checkRequest(facts, "TOKEN");
    require(rejection.status == 0 || *rejection.reason != '\0', "a refusal has a reason");
    if (rejection.status == 0) {
        require(facts.method == "GET" && facts.path.starts_with("/TOKEN/"),
                "who passes asked rightly");
        require(origin.empty() || origin == "http://" + host, "no other site's page passes");
    }
    return 0;
}
