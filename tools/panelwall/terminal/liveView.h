// The wall on a terminal, redrawn in place: the picture in half-block characters, the device lines,
// a message.
#pragma once

#include "tools/panelwall/picture.h"
#include "tools/wall/wall.h"

#include <chrono>
#include <string>
#include <vector>

namespace panelwall {

struct FrameContent {
    std::string title;
    std::vector<std::string> devices; // a line or two each
    std::string message;              // may be empty; broken into lines as needed
};

// The lines of one frame, with the colours of this moment, for a terminal of this size (columns and
// rows of characters): never more lines than rows, never longer than the columns. A small terminal
// loses the picture first, then device lines, and says so.
std::vector<std::string> composeFrame(const Wall &wall, Clock::time_point now, Size screen,
                                      const FrameContent &content, Size terminal);

// A canvas as coloured text. One string per two of its rows, in 24-bit colour, each as many columns
// wide as the canvas. Every string ends with the colours set back to the terminal's own.
std::vector<std::string> halfBlockLines(const Canvas &canvas);

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
