// One run of the program, from the first datagram to the summary: waits for datagrams and signals,
// and shows the wall.
#pragma once

#include "tools/panelwall/options.h"
#include "tools/panelwall/player.h"
#include "tools/panelwall/terminal/liveView.h"
#include "tools/panelwall/web/livePage.h"
#include "tools/recording/recordingWriter.h"
#include "tools/wall/signals.h"
#include "tools/wall/wall.h"

#include <string>

namespace panelwall {

class Session {
public:
    // Datagrams come from `player`, or if it is null from the open sockets of `receiver`; with a
    // player, the receiver has no sockets. All arguments must outlive the session.
    Session(const Options &options_, const config::Document &document_, Receiver &receiver_,
            Player *player_);

    // Runs to the end and returns an exit status. If the recording or the live page cannot be
    // started, it prints the reason and throws the status.
    int run();

private:
    void beginRecording();
    void servePage();
    void announce();

    // Processes the datagrams that have arrived.
    void receive();
    void waitUntil(Clock::time_point when);
    void handleSignals();
    void pause();

    // Shows the wall if that is due.
    void show();
    void showLines();

    // The message about missing datagrams; empty in a replay, which repeats recorded pauses.
    std::string silence(Clock::time_point now) const;

    // The message below the wall on a terminal.
    std::string message(Clock::time_point now) const;

    // When to wake up next even without a datagram or signal.
    Clock::time_point nextDue() const;

    // Writes the picture and reports it. False when that failed.
    bool saveSnapshot();

    // Ends the recording and reports it. False when it could not be written.
    bool finishRecording();

    // Shows a message to the user: a printed line, or on a terminal a notice for a few seconds.
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
    Clock::time_point nextLines; // when lines are due next, without a terminal
    bool changed = false;        // the wall since it was last drawn, or it is in transition
    bool silenceTold = false;
    bool flashesTold = false;
    bool recordingErrorReported = false;
    bool ended = false;
    bool outputGone = false;
    std::string notice;
    Clock::time_point noticeEnd;
};

} // namespace panelwall
