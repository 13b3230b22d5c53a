// One run of the program: receives what light devices would receive, and sends it to the outputs.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/lightbridge/flashLimiter.h"
#include "tools/lightbridge/options.h"
#include "tools/lightbridge/output.h"
#include "tools/lightbridge/pattern.h"
#include "tools/wall/receiver.h"
#include "tools/wall/signals.h"
#include "tools/wall/wall.h"

#include <deque>
#include <string>
#include <vector>

namespace lightbridge {

class Bridge {
public:
    // The document's outputs have no problems. With a pattern, the receiver has no sockets. The
    // arguments must outlive the bridge.
    Bridge(const Options &options_, const config::Document &document_, const Sender &sender,
           panelwall::Receiver &receiver_, const Pattern *pattern_);

    // Runs until a signal or the end of the duration, and ends the lights as the document says.
    void run();

private:
    // Nothing is sent before the first datagram, and nothing between a stop and the next one.
    enum class Phase { Waiting, Showing, Ending, Stopped };

    // After the last colours, two more packets in case one is lost. E1.31 asks for three.
    static constexpr int endFrames = 4;

    void announce();
    void waitUntil(Clock::time_point when);
    void handleSignals();
    void receive();
    void noteMalformed(std::size_t device);

    // Sends what is due, and begins and ends phases.
    void advance(Clock::time_point now);
    void showColours(Clock::time_point now);
    void limitFlashes(Clock::time_point now);
    void beginEnd(Clock::time_point now);
    void sendEnd(Clock::time_point now);

    // The colours of an output's panels.
    std::span<const Colour> coloursOf(std::size_t output, Clock::time_point now);

    Clock::time_point nextDue() const;
    Clock::time_point silenceEnd() const;
    void tellNews(Clock::time_point now);
    void tell(const std::string &text);

    const Options &options;
    const config::Document &document;
    const config::BridgeEntry &entry;
    panelwall::Receiver &receiver;
    const Pattern *const pattern;
    panelwall::Signals signals;

    panelwall::Wall wall;
    std::deque<Output> outputs;
    FlashLimiter limiter;
    std::vector<Colour> colours; // of all devices' panels; in a pattern, of an output's
    std::vector<std::vector<Colour>> lastOnes; // the colours at the end, for each output

    const Clock::time_point start = Clock::now();
    const Clock::duration frameInterval;
    Phase phase = Phase::Waiting;
    bool isLeaving = false;
    bool isOver = false;
    bool isPending = false; // something has changed, or will until the next frame
    int endFramesLeft = 0;
    Clock::time_point nextFrame;   // not before
    Clock::time_point lastArrival; // of a datagram that was not malformed
    std::vector<bool> malformedTold;
    bool limitTold = false;
};

} // namespace lightbridge
