// One run of the program, from the first datagram to the summary: waits for datagrams and signals,
// and has the wall shown.
#pragma once

#include "tools/panelwall/options.h"
#include "tools/panelwall/player.h"
#include "tools/panelwall/signals.h"
#include "tools/panelwall/terminal/liveView.h"
#include "tools/panelwall/web/livePage.h"
#include "tools/recording/recordingWriter.h"
#include "tools/wall/wall.h"

#include <string>

namespace panelwall {

class Session {
public:
    // Datagrams come from `receiver`, whose sockets are open, or from `player` if there is one;
    // then the receiver has none. All arguments must outlive the session.
    Session(const Options &options_, const config::Document &document_, Receiver &receiver_,
            Player *player_);

    // Runs to the end; returns an exit status, or throws it, after a complaint, when what was asked
    // for cannot be recorded or served.
    int run();

private:
    void beginRecording();
    void servePage();
    void announce();

    // Takes in what has come.
    void receive();
    void waitUntil(Clock::time_point when);
    void handleSignals();
    void pause();

    // Shows the wall if it is due.
    void show();
    void showLines();

    // What to say about datagrams that do not come; nothing in a replay, which is as it was.
    std::string silence(Clock::time_point now) const;

    // What the terminal says below the wall.
    std::string message(Clock::time_point now) const;

    // The next moment at which something is to be done without a datagram or signal.
    Clock::time_point nextDue() const;

    // Writes the picture and says so. False when that failed.
    bool saveSnapshot();

    // Ends the recording and says so. False when it could not be written.
    bool finishRecording();

    // Tells the user something: a line, or for some seconds the message on the terminal.
    void tell(const std::string &text);
    void print(const std::string &text);

    const Options &options;
    const config::Document &document;
    Receiver &receiver;
    Player *const player;
    Signals signals;

    Wall wall;
    Size screen;
    LiveView live;
    const bool onTerminal;
    std::optional<RecordingWriter> recorder;
    std::optional<LivePage> page;

    const Clock::time_point start = Clock::now();
    Clock::time_point nextLines; // when the next lines are due, off a terminal
    bool changed = false;        // the wall since it was last drawn, or it will
    bool silenceTold = false;
    bool flashesTold = false;
    bool recordingErrorReported = false;
    bool ended = false;
    bool outputGone = false;
    std::string notice;
    Clock::time_point noticeEnd;
};

} // namespace panelwall
