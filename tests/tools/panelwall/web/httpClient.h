// A client that can send any bytes to the page's server, and the page's address.
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

    // False when the server accepts no more.
    bool send(const std::string &bytes);

    // Begins to read the events of a page; false when the answer has none.
    bool readEvents(const std::string &root);

    // Reads until the answer contains `text`; false when it ends first, or after half a minute.
    bool waitFor(const std::string &text);

    // Reads to the end of the answer; false when that takes longer than `limit`.
    bool waitEnd(std::chrono::milliseconds limit = std::chrono::seconds(30));

    std::string answer;

private:
    bool readMore(std::chrono::steady_clock::time_point deadline, bool &ended);

    int fd = -1;
};

// The address of a page.
struct PageAddress {
    int port = 0;     // 0: no address
    std::string root; // "/TOKEN/"
};

// The first page address in a text.
PageAddress addressIn(const std::string &text);

// Sends a GET request with this Host value and further header lines; returns the whole answer.
std::string get(int port, const std::string &path, const std::string &host = "127.0.0.1",
                const std::string &headers = "");

// The status of an answer, or 0 when there is none.
int statusOf(const std::string &answer);

} // namespace test
