// An X server's name under which another server answers, as through a plain proxy.
#pragma once

#include <string>
#include <thread>

namespace test {

// Passes the bytes of every connection on to the server and back, but no descriptors. A client of
// a server that is not there is cut off at once. Ends with the destructor.
class PlainProxy {
public:
    // `server`: a local server's name, such as ":7". Throws std::runtime_error when the proxy
    // cannot have a name.
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
