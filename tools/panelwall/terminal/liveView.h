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

// The lines of one frame, with the colours at `now`, for a terminal of this size (columns and rows
// of characters): never more lines than rows, never longer than the columns. Device lines take at
// most half the height; one line counts those that do not fit. The picture is omitted if it does
// not fit in the rest.
std::vector<std::string> composeFrame(const Wall &wall, Clock::time_point now, Size screen,
                                      const FrameContent &content, Size terminal);

// A canvas as text in 24-bit colour: one string per two of its rows, as many columns wide as the
// canvas. Every string ends by restoring the terminal's own colours.
std::vector<std::string> halfBlockLines(const Canvas &canvas);

// Uses the terminal's alternate screen from enter() to leave(); the destructor leaves it too.
class LiveView {
public:
    explicit LiveView(int terminalFd) : fd(terminalFd) {}
    ~LiveView() { leave(); }
    LiveView(const LiveView &) = delete;
    LiveView &operator=(const LiveView &) = delete;

    void enter();
    void leave();

    // When to draw next: at once after enter() and resize(); twenty times a second while the wall
    // changes, transitions included; else four times a second, so that ages and rates stay true.
    Clock::time_point due(bool changed) const {
        return lastDrawn + std::chrono::milliseconds(changed ? 50 : 250);
    }
    void resize() { lastDrawn = {}; }

    // Draws one frame with the colours at `now`. Skips it if the terminal accepts no output now.
    // False when the terminal is gone.
    bool draw(const Wall &wall, Size screen, const FrameContent &content, Clock::time_point now);

private:
    Size terminalSize() const;

    int fd;
    bool entered = false;
    Clock::time_point lastDrawn; // the clock's epoch when drawing is due at once
};

} // namespace panelwall
