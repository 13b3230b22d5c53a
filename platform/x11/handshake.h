// Connects to an X server as a client, and nothing else.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/descriptor.h"

#include <string>

namespace platform::x11 {

enum class Answer {
    Welcome,
    NoServer,
    Silence, // it did not accept the connection, or did not answer, in time
    HangUp,  // it closed the connection without an answer, on every try that had enough time
    Refusal,
};

struct Handshake {
    Answer answer = Answer::NoServer;
    Descriptor client;   // the connection, after a welcome
    std::string reason;  // of a refusal, in the server's own words, printable
    bool hadKey = false; // the user's authority file has a key for this server
};

// Becomes a client of the server that DISPLAY names. Most servers reset when their last client
// disconnects, and hang up on clients that are in the middle of the handshake then; while this
// client stays connected, they do not. When the server hangs up on this client, the handshake is
// retried until the deadline. Any thread.
Handshake shakeHands(Clock::time_point deadline);

// Only the client's descriptor; invalid unless the answer is Welcome.
Descriptor becomeClient(Clock::time_point deadline);

} // namespace platform::x11
