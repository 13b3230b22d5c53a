// One run of the program, from the first datagram to the summary: waits for datagrams and signals,
// and has the wall shown.
#pragma once

#include "tools/panelwall/liveView.h"
#include "tools/panelwall/options.h"
#include "tools/panelwall/receiver.h"
#include "tools/panelwall/signals.h"
#include "tools/panelwall/wall.h"

#include <string>

namespace panelwall {

class Session {
public:
    // `receiver` has its sockets open. All arguments must outlive the session.
    Session(const Options &options, const config::Document &document, Receiver &receiver,
            Signals &signals);

    // Runs to the end; returns an exit status.
    int run();

private:
    void announce();
    void waitUntil(Clock::time_point when);
    void handleSignals();
    void pause();

    // Shows the wall if it is due.
    void show();
    void showLines();

    // The next moment at which something is to be done without a datagram or signal.
    Clock::time_point nextDue() const;

    // Writes the picture and says so. False when that failed.
    bool saveSnapshot();

    // Tells the user something: a line, or for some seconds the message on the terminal.
    void tell(const std::string &text);
    void print(const std::string &text);

    const Options &options;
    const config::Document &document;
    Receiver &receiver;
    Signals &signals;

    Wall wall;
    Size screen;
    LiveView live;
    const bool onTerminal;

    Clock::time_point start;
    Clock::time_point nextLines; // when the next lines are due, off a terminal
    bool changed = false;        // the wall since it was last drawn, or it will
    bool silenceTold = false;
    bool ended = false;
    bool outputGone = false;
    std::string notice;
    Clock::time_point noticeEnd;
};

} // namespace panelwall
