#include "tools/panelwall/terminal/liveView.h"

#include "tools/lights/text.h"
#include "tools/panelwall/statusText.h"
#include "tools/wall/signals.h"

#include <algorithm>
#include <optional>
#include <sys/ioctl.h>

namespace panelwall {

static const char upperHalf[] = "\u2580";

static std::string colourCode(int ground, Colour colour) {
    return lights::format("\x1b[%d;2;%d;%d;%dm", ground, colour.red, colour.green, colour.blue);
}

std::vector<std::string> halfBlockLines(const Canvas &canvas) {
    std::vector<std::string> lines;
    for (int y = 0; y < canvas.height(); y += 2) {
        std::string line;
        std::optional<Colour> upper;
        std::optional<Colour> lower;
        for (int x = 0; x < canvas.width(); ++x) {
            if (upper != canvas.at(x, y)) {
                upper = canvas.at(x, y);
                line += colourCode(38, *upper);
            }
            if (y + 1 < canvas.height() && lower != canvas.at(x, y + 1)) {
                lower = canvas.at(x, y + 1);
                line += colourCode(48, *lower);
            }
            line += upperHalf;
        }
        lines.push_back(line + "\x1b[0m");
    }
    return lines;
}

// A picture with fewer lines than this is unrecognisable.
static constexpr int leastPictureRows = 3;

// The picture in a frame of lines, in at most `room` columns and rows of characters.
static std::vector<std::string> framedPicture(const Wall &wall, Clock::time_point now, Size screen,
                                              Size room) {
    const Size size = fitInto(screen, {room.width - 2, (room.height - 2) * 2});
    std::string edge;
    for (int i = 0; i < size.width; ++i)
        edge += "\u2500";
    std::vector<std::string> lines{"\u250c" + edge + "\u2510"};
    for (const std::string &line : halfBlockLines(drawCoarse(wall, now, screen, size)))
        lines.push_back("\u2502" + line + "\u2502");
    lines.push_back("\u2514" + edge + "\u2518");
    return lines;
}

// The device lines in at most `most` lines.
static std::vector<std::string> fittingDevices(std::vector<std::string> lines, std::size_t most) {
    if (lines.size() > most) {
        const std::size_t hidden = lines.size() - (most - 1);
        lines.resize(most - 1);
        lines.push_back("and " + std::to_string(hidden) +
                        " more lines; a taller terminal shows them");
    }
    return lines;
}

std::vector<std::string> composeFrame(const Wall &wall, Clock::time_point now, Size screen,
                                      const FrameContent &content, Size terminal) {
    const auto columns = static_cast<std::size_t>(std::max(terminal.width, 1));
    const int rows = std::max(terminal.height, 1);
    const auto message = wrap(content.message, columns);
    const int below = rows - 1 - static_cast<int>(message.size());
    const auto devices = fittingDevices(content.devices, std::max(below / 2, 1));
    const int pictureRows = below - static_cast<int>(devices.size());

    std::vector<std::string> lines{cutToWidth(content.title, columns)};
    if (pictureRows >= leastPictureRows + 2 && terminal.width >= 10)
        for (std::string &line : framedPicture(wall, now, screen, {terminal.width, pictureRows}))
            lines.push_back(std::move(line));
    for (const auto *texts : {&devices, &message})
        for (const std::string &text : *texts)
            lines.push_back(cutToWidth(text, columns));
    if (lines.size() > static_cast<std::size_t>(rows))
        lines.resize(static_cast<std::size_t>(rows));
    return lines;
}

// Enables the alternate screen, hides the cursor, disables wrapping at the right edge; and undoes
// all of that.
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
