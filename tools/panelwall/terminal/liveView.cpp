#include "tools/panelwall/terminal/liveView.h"

#include "tools/panelwall/signals.h"

#include <sys/ioctl.h>

namespace panelwall {

// Alternate screen, hidden cursor, no wrapping at the right edge; and all of it undone.
static const char enterCodes[] = "\x1b[?1049h\x1b[?25l\x1b[?7l\x1b[2J";
static const char leaveCodes[] = "\x1b[0m\x1b[?7h\x1b[?25h\x1b[?1049l";

static const char home[] = "\x1b[H";
static const char eraseRestOfLine[] = "\x1b[K";
static const char eraseBelow[] = "\x1b[J";

void LiveView::enter() {
    entered = true;
    resize();
    writeAll(fd, enterCodes);
}

void LiveView::leave() {
    if (entered)
        writeAll(fd, leaveCodes);
    entered = false;
}

bool LiveView::draw(const Wall &wall, Size screen, const FrameContent &content,
                    Clock::time_point now) {
    lastDrawn = now;
    if (!canWrite(fd))
        return true;
    std::string frame = home;
    const char *lineBreak = "";
    for (const std::string &line : composeFrame(wall, now, screen, content, terminalSize())) {
        frame += lineBreak + line + eraseRestOfLine;
        lineBreak = "\r\n";
    }
    return writeAll(fd, frame + eraseBelow);
}

Size LiveView::terminalSize() const {
    winsize size{};
    if (ioctl(fd, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return {80, 24};
    return {size.ws_col, size.ws_row};
}

} // namespace panelwall
