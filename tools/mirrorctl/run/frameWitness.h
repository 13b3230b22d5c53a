// Counting the frames that the library sends, without asking it.
//
// The library has no counter, and asking it for its frames makes it write them out as text. But it
// sends every device a datagram per frame, in order. So the document that it is handed has one
// device more than the user's, the last: this process, on loopback. In match, melt and fade mode it
// has no panels, is told so in two bytes after all lights have been served, and every such datagram
// is one frame. In palette mode, which sends a device only what is due on one of its panels, it has
// one panel, and a datagram is no more than a sign of life.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/loopbackEar.h"
#include "tools/mirrorctl/run/frameTally.h"

#include <string>

namespace mirrorctl {

// One thread.
class FrameWitness {
public:
    explicit FrameWitness(const config::Document &document);

    // False when no loopback address was free; reason() says why.
    bool isThere() const { return ear.isThere(); }
    const std::string &reason() const { return ear.reason(); }

    // The document's text with the witness as its last device. `text` has no faults.
    std::string joined(const std::string &text) const;

    // Takes in what has arrived, without waiting.
    void read();

    // The run has been stopped, and another may follow.
    void pause() { frames.pause(); }

    // By the time at which the kernel received each datagram.
    const FrameTally &tally() const { return frames; }

private:
    LoopbackEar ear;
    std::size_t panels;
    FrameTally frames;
};

} // namespace mirrorctl
