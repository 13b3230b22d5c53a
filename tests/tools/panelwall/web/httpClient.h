// A client that sends any bytes to the page's server, and the address of that.
#pragma once

#include <chrono>
#include <string>

namespace test {

class HttpClient {
public:
    // Connects to 127.0.0.1; throws std::runtime_error when that fails.
    explicit HttpClient(int port);
    ~HttpClient();
    HttpClient(const HttpClient &) = delete;
    HttpClient &operator=(const HttpClient &) = delete;

    // False when the server takes no more.
    bool send(const std::string &bytes);

    // Begins to read the events of a page; false when they do not begin.
    bool readEvents(const std::string &root);

    // Reads until the answer holds `text`; false when it ends or half a minute passes before.
    bool waitFor(const std::string &text);

    // Reads to the end of the answer; false when this much time passes before.
    bool waitEnd(std::chrono::milliseconds limit = std::chrono::seconds(30));

    std::string answer;

private:
    bool readMore(std::chrono::steady_clock::time_point deadline, bool &ended);

    int fd = -1;
};

// Where a page is.
struct PageAddress {
    int port = 0;     // 0: nowhere
    std::string root; // "/TOKEN/"
};

// The first one in a text.
PageAddress addressIn(const std::string &text);

// A whole answer to a GET request with this Host header value and further header lines.
std::string get(int port, const std::string &path, const std::string &host = "127.0.0.1",
                const std::string &headers = "");

// Its status, or 0 when there is none.
int statusOf(const std::string &answer);

} // namespace test
