// The wall on a terminal, redrawn in place.
#pragma once

#include "tools/panelwall/terminal/frameText.h"
#include "tools/panelwall/terminal/redrawPace.h"

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

    // When to draw next: at once after enter() and resize().
    Clock::time_point due(bool changed) const { return pace.due(changed); }
    void resize() { pace.reset(); }

    // Draws one frame, with the colours of this moment. A terminal that accepts nothing at the
    // moment misses it. False when the terminal is gone.
    bool draw(const Wall &wall, Size screen, const FrameContent &content, Clock::time_point now);

private:
    Size terminalSize() const;

    int fd;
    bool entered = false;
    RedrawPace pace;
};

} // namespace panelwall
