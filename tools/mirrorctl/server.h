// The display server, asked by the program itself: the library reports neither that it hangs nor
// that it has gone. Each system in a file of its own; where there is nothing to ask, it always
// answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace mirrorctl {

// What this system's server is called in a sentence, such as: the X server ":7".
std::string serverName();

// A sentence about the server, such as: The X server ":7" has gone.
std::string serverSentence(const std::string &predicate);

// The line for a server that does not answer.
std::string silentServerLine();

// Prints it on standard error if there is a server that can be reached but does not answer within a
// second, and returns whether that is so.
bool reportSilentServer();

// How many displays there are, listed by the library or not; nothing when that cannot be told.
std::optional<std::size_t> countDisplays();

// Whether a hundredth of the display's pixels or more are not nearly black; false when it cannot be
// told. Takes milliseconds, and two seconds at most.
bool isLit(std::int32_t displayID);

// A connection of the program's own, on a thread of its own. Made and asked by one thread.
class ServerWatch {
public:
    enum class State {
        Opening,   // has not answered yet
        Absent,    // is not there or lets nobody in; for good
        Answering, // answered the last question, asked once a second
        Silent,    // has owed an answer for a second
        Gone,      // hung up after it had answered; for good
    };

    // Begins to connect. The first one in a process is made before any thread that calls the
    // library. Throws std::system_error when there is no thread or descriptor to be had.
    ServerWatch();
    ~ServerWatch();
    ServerWatch(const ServerWatch &) = delete;
    ServerWatch &operator=(const ServerWatch &) = delete;

    State state() const;

    // Readable when the state has changed since it was last asked for; -1: it never changes.
    int descriptor() const;

    // Asks now. Until the server has answered, owesAnswer() is true.
    void ask();
    bool owesAnswer() const;

    // Whether the server can be reached but does not answer within so many seconds. Of a watch that
    // has just begun.
    bool isSilentFor(double seconds) const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

} // namespace mirrorctl
