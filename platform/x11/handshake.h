// The handshake with an X server: becoming one of its clients, and nothing else.
#pragma once

#include "platform/objects/clock.h"
#include "platform/objects/descriptor.h"

#include <string>

namespace platform::x11 {

enum class Answer {
    Welcome,
    NoServer,
    Silence, // it did not accept the connection, or did not answer, in time
    HangUp,  // it closed the connection without an answer, whenever there was time for one
    Refusal,
};

struct Handshake {
    Answer answer = Answer::NoServer;
    Descriptor client;   // the connection, after a welcome
    std::string reason;  // of a refusal, in the server's own words, printable
    bool hadKey = false; // the user's authority file has a key for this server
};

// Becomes a client of the server that DISPLAY names. Most servers reset when their last client
// leaves, and hang up on whoever is in the middle of the handshake then; as long as this client
// stays, they do not. When the server hangs up on this one it is tried again, until the deadline.
// Any thread.
Handshake shakeHands(Clock::time_point deadline);

// The client alone; invalid unless it was welcome.
Descriptor becomeClient(Clock::time_point deadline);

} // namespace platform::x11
