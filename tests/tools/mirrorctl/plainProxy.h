// A plain proxy: a second name under which an X server answers.
#pragma once

#include <string>
#include <thread>

namespace test {

// Forwards the bytes of every connection in both directions, but no descriptors. If the server is
// missing, it closes each connection at once. Ends with the destructor.
class PlainProxy {
public:
    // `server`: a local server's name, such as ":7". Throws std::runtime_error when the proxy
    // cannot be set up.
    explicit PlainProxy(const std::string &server);
    ~PlainProxy();
    PlainProxy(const PlainProxy &) = delete;
    PlainProxy &operator=(const PlainProxy &) = delete;

    const std::string &display() const { return name; }

private:
    void serve();

    std::string serverPath;
    std::string name;
    int listener = -1;
    int wakeUp[2] = {-1, -1}; // closed to end the thread
    std::thread thread;
};

} // namespace test
