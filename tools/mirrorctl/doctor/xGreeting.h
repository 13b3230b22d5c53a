// A client of the X server that greets it, stays, and asks for nothing.
#pragma once

#include <string>

namespace mirrorctl {

// Tells why a server lets nobody in, which XCB keeps to itself. While it lives, and was welcome,
// the server has a client, so that it does not reset itself in the middle of other connections'
// coming and going.
//
// One thread. The server has some seconds to answer; looking a host's name up takes as long as the
// system's resolver does.
class XGreeting {
public:
    enum class Answer {
        welcome,
        misnamed, // DISPLAY is not the name of a server
        nobody,   // there is no server to connect to
        silence,  // connected, or about to be, and no word since
        hangUp,   // connected and cut off again and again
        refusal,
    };

    XGreeting();
    ~XGreeting();
    XGreeting(const XGreeting &) = delete;
    XGreeting &operator=(const XGreeting &) = delete;

    Answer answer() const { return outcome; }
    const std::string &reason() const { return why; } // the server's own, for a refusal
    bool hadKey() const { return showedKey; }         // one was found in the authority file
    // Over a socket of this machine, which can pass memory, and not over the network.
    bool isLocal() const { return local; }

private:
    Answer greet(const std::string &host, int display);

    int fd = -1;
    Answer outcome = Answer::misnamed;
    std::string why;
    bool showedKey = false;
    bool local = false;
};

} // namespace mirrorctl
