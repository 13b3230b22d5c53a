// The display server, asked by the program itself: the library tells neither that it hangs nor that
// it has gone. Each system in a file of its own; where there is nothing to ask, it answers always.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace mirrorctl {

// What this system's server is called in a sentence, such as: the X server ":7".
std::string serverName();

class ServerWatch;

// Whether there is a server that can be reached but does not answer within a second.
bool isServerSilent();

// The same within so many seconds, over the connection of a watch that has just begun.
bool isServerSilent(const ServerWatch &watch, double patience);

// A sentence about the server, such as: The X server ":7" has gone.
std::string aboutServer(const std::string &predicate);

// That the server does not answer, and what may be the matter: a line.
std::string silenceOfServer();

// Says on standard error that the server does not answer, if that is so, and returns whether.
bool tellServerSilence();

// How many displays there are, listed by the library or not; nothing when that cannot be told.
std::optional<std::size_t> countDisplays();

// A connection of the program's own, on a thread of its own. Made and asked by one thread.
class ServerWatch {
public:
    enum class State {
        opening,   // has not answered yet
        absent,    // is not there or lets nobody in; for good
        answering, // answered the last question, asked once a second
        silent,    // has owed an answer for a second
        gone,      // hung up after it had answered; for good
    };

    // Begins to connect. The first one in a process is made before any thread that calls the
    // library. Throws std::system_error when there is no thread or descriptor to be had.
    ServerWatch();
    ~ServerWatch();
    ServerWatch(const ServerWatch &) = delete;
    ServerWatch &operator=(const ServerWatch &) = delete;

    State state() const;

    // Readable when the state has changed since it was last asked; -1: it never changes.
    int descriptor() const;

    // Asks now. Until the server has answered, owesAnswer() is true.
    void ask();
    bool owesAnswer() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

} // namespace mirrorctl
