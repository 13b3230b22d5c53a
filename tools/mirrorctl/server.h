// Watches the display server, since the library reports neither that it hangs nor that it has gone.
// Implemented in one file per system; where it cannot be watched, it always counts as answering.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace mirrorctl {

// The server's name in a sentence, such as: the X server ":7", the compositor "wayland-1".
std::string serverName();

// A sentence about the server, such as: The X server ":7" has gone.
std::string serverSentence(const std::string &predicate);

// The line for a server that does not answer.
std::string silentServerLine();

// Prints that line on standard error if there is a server that can be reached but does not answer
// within a second; returns whether it printed.
bool reportSilentServer();

// Lines on why there may be no display, and what to check.
std::string noDisplayHint();

// The number of displays, listed by the library or not; nothing if it is unknown.
std::optional<std::size_t> countDisplays();

// Whether at least a hundredth of the display's pixels are not nearly black; false if unknown.
// Takes milliseconds, and two seconds at most.
bool isLit(std::int32_t displayID);

// The program's own connection to the server, on its own thread. Used by one thread.
class ServerWatch {
public:
    enum class State {
        Opening,   // has not answered yet
        Absent,    // is not there or refuses the connection; final
        Answering, // answered the last request; one is sent every second
        Silent,    // has not answered a request for a second
        Gone,      // closed the connection after having answered; final
    };

    // Starts to connect. The first watch of a process must be constructed before any thread that
    // calls the library. Throws std::system_error if no thread or descriptor can be created.
    ServerWatch();
    ~ServerWatch();
    ServerWatch(const ServerWatch &) = delete;
    ServerWatch &operator=(const ServerWatch &) = delete;

    State state() const;

    // Readable when the state has changed since the last state() call; -1: it never changes.
    int descriptor() const;

    // Sends a request now. Until the server has answered, hasPendingRequest() is true.
    void ask();
    bool hasPendingRequest() const;

    // Whether the server can be reached but does not answer within `seconds`. For a new watch.
    bool isSilentFor(double seconds) const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

} // namespace mirrorctl
