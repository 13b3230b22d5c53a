// The wall on a terminal, redrawn in place.
#pragma once

#include "tools/panelwall/terminal/frameText.h"

#include <chrono>

namespace panelwall {

// Holds the terminal's alternate screen from enter() to leave(); the destructor leaves too.
class LiveView {
public:
    explicit LiveView(int terminalFd) : fd(terminalFd) {}
    ~LiveView() { leave(); }
    LiveView(const LiveView &) = delete;
    LiveView &operator=(const LiveView &) = delete;

    void enter();
    void leave();

    // When to draw next: at once after enter() and resize(), then at most twenty times a second,
    // which also is the pace of panels on their way to another colour; four times a second while
    // nothing changes, so that ages and rates stay true.
    Clock::time_point due(bool changed) const {
        return lastDrawn + std::chrono::milliseconds(changed ? 50 : 250);
    }
    void resize() { lastDrawn = {}; }

    // Draws one frame, with the colours of this moment. A terminal that accepts nothing at the
    // moment misses it. False when the terminal is gone.
    bool draw(const Wall &wall, Size screen, const FrameContent &content, Clock::time_point now);

private:
    Size terminalSize() const;

    int fd;
    bool entered = false;
    Clock::time_point lastDrawn; // long ago when it is to be drawn at once
};

} // namespace panelwall
