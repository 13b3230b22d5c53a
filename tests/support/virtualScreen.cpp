#include "tests/support/virtualScreen.h"

#include "tests/support/xServer.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace test {

namespace {

// Reserves a display number among all tests by binding a socket. The number is above those that
// servers try when they choose one themselves, so no other server takes the name while this test's
// server is down.
int reserveNumber(int &number) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    for (number = 1000 + getpid() % 20000; fd >= 0; ++number) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = "screen-mirror-test-display-" + std::to_string(number);
        path.copy(address.sun_path + 1, sizeof address.sun_path - 1);
        const auto length =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + path.size());
        if (bind(fd, reinterpret_cast<const sockaddr *>(&address), length) == 0)
            return fd;
        if (errno != EADDRINUSE) {
            close(fd);
            break;
        }
    }
    throw std::runtime_error(std::string("a display number: ") + std::strerror(errno));
}

std::uint32_t channel(std::uint32_t eightBits, std::uint32_t mask) {
    const int bits = std::popcount(mask);
    const std::uint32_t value =
        bits <= 8 ? eightBits >> (8 - bits) : eightBits << (bits - 8) | eightBits >> (16 - bits);
    return value << std::countr_zero(mask);
}

const xcb_visualtype_t *rootVisual(const xcb_screen_t *screen) {
    for (auto depths = xcb_screen_allowed_depths_iterator(screen); depths.rem != 0;
         xcb_depth_next(&depths))
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem != 0;
             xcb_visualtype_next(&visuals))
            if (visuals.data->visual_id == screen->root_visual)
                return visuals.data;
    throw std::runtime_error("the screen has no visual");
}

const xcb_screen_t *screenOf(xcb_connection_t *connection) {
    if (connection == nullptr || xcb_connection_has_error(connection) != 0)
        throw std::runtime_error("no X server to draw on");
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

std::uint32_t pixelOf(std::uint32_t colour, const xcb_visualtype_t *visual) {
    return channel(colour >> 16 & 0xff, visual->red_mask) |
           channel(colour >> 8 & 0xff, visual->green_mask) |
           channel(colour & 0xff, visual->blue_mask);
}

int bytesPerPixel(xcb_connection_t *connection, int depth) {
    for (auto formats = xcb_setup_pixmap_formats_iterator(xcb_get_setup(connection));
         formats.rem != 0; xcb_format_next(&formats))
        if (formats.data->depth == depth)
            return formats.data->bits_per_pixel / 8;
    throw std::runtime_error("the screen's depth has no format");
}

// While it exists, a request that stays unanswered for a minute ends the test with a message: xcb
// itself would wait for ever.
class AnswerDeadline {
public:
    AnswerDeadline() {
        std::signal(SIGALRM, [](int) {
            constexpr char message[] = "the display server has not answered for a minute\n";
            [[maybe_unused]] const ssize_t written =
                write(STDERR_FILENO, message, sizeof message - 1);
            _exit(1);
        });
        alarm(60);
    }
    ~AnswerDeadline() { alarm(0); }
    AnswerDeadline(const AnswerDeadline &) = delete;
    AnswerDeadline &operator=(const AnswerDeadline &) = delete;
};

void roundTrip(xcb_connection_t *connection) {
    auto *reply = xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr);
    if (reply == nullptr)
        throw std::runtime_error("the X server is gone");
    std::free(reply);
}

} // namespace

VirtualScreen::VirtualScreen(int width_, int height_, int depth_,
                             const std::vector<std::string> &extraArguments_)
    : extraArguments(extraArguments_), width(width_), height(height_), depth(depth_) {
    int number = 0;
    if (serverKind() != ServerKind::Sway) {
        reservation = reserveNumber(number);
        name = ":" + std::to_string(number);
    }
    try {
        restart();
    } catch (...) {
        // The destructor does not run if the constructor throws.
        kill();
        close(reservation);
        throw;
    }
}

void VirtualScreen::restart() {
    serverKind() == ServerKind::Sway ? startSway() : startX();
}

void VirtualScreen::startSway() {
    if (depth != 24)
        skipTest("sway has no depth of " + std::to_string(depth));
    bool sideways = false;
    for (const std::string &line : extraArguments) {
        if (line.starts_with("-"))
            skipTest("sway has no option " + line);
        sideways = sideways || line.ends_with("90") || line.ends_with("270");
    }
    if (!sway)
        sway = std::make_unique<SwayServer>(sideways ? height : width, sideways ? width : height,
                                            extraArguments);
    sway->start();
    const AnswerDeadline deadline;
    waylandBrush = std::make_unique<WaylandBrush>(sway->socket());
}

void VirtualScreen::startX() {
    const ServerKind kind = serverKind();
    const ServerOptions options{width, height, depth, extraArguments};
    std::vector<std::string> command = serverCommand(kind, options);
    command.insert(command.begin() + 1, name);
    // The server reports on standard output when it is ready. Its standard error is not needed.
    command.insert(command.begin(), {"/bin/sh", "-c", "exec \"$@\" 2>/dev/null", "sh"});
    server.emplace(command);
    server->waitFor("\n");
    for (const std::vector<std::string> &size : commandsForSize(kind, options))
        run(size);

    const AnswerDeadline deadline;
    connection = xcb_connect(name.c_str(), nullptr);
    const xcb_screen_t *screen = screenOf(connection);
    root = screen->root;
    brush = xcb_generate_id(connection);
    const std::uint32_t values[] = {XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
    xcb_create_gc(connection, brush, root, XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES,
                  values);
    roundTrip(connection);
}

VirtualScreen::~VirtualScreen() {
    disconnect();
    if (server) {
        // Ends the server cleanly, so that it removes its files.
        server->signal(SIGCONT);
        server->signal(SIGTERM);
        try {
            server->finish();
        } catch (const std::runtime_error &) {
            kill();
        }
    }
    close(reservation);
}

void VirtualScreen::disconnect() {
    if (connection != nullptr)
        xcb_disconnect(connection);
    connection = nullptr;
    waylandBrush.reset();
}

pid_t VirtualScreen::pid() const {
    return sway ? sway->pid() : server ? server->pid() : -1;
}

void VirtualScreen::kill() {
    disconnect();
    if (sway)
        sway->kill();
    if (!server)
        return;
    server.reset();
    // A killed server leaves its socket file behind.
    unlink(("/tmp/.X11-unix/X" + name.substr(1)).c_str());
}

std::map<std::string, std::string> VirtualScreen::variables() const {
    if (sway)
        return sway->variables();
    return {{"DISPLAY", name}, {"WAYLAND_DISPLAY", ""}};
}

void VirtualScreen::use() const {
    for (const auto &[variable, value] : variables())
        value.empty() ? unsetenv(variable.c_str()) : setenv(variable.c_str(), value.c_str(), 1);
}

void VirtualScreen::fill(std::uint32_t colour) {
    fillRect(0, 0, width, height, colour);
}

void VirtualScreen::fillRect(int x, int y, int rectWidth, int rectHeight, std::uint32_t colour) {
    const AnswerDeadline deadline;
    if (waylandBrush)
        return waylandBrush->fillRect(x, y, rectWidth, rectHeight, colour);
    ++drawings;
    const std::uint32_t pixel = pixelOf(colour, rootVisual(screenOf(connection)));
    xcb_change_gc(connection, brush, XCB_GC_FOREGROUND, &pixel);
    const xcb_rectangle_t rect{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                               static_cast<std::uint16_t>(rectWidth),
                               static_cast<std::uint16_t>(rectHeight)};
    xcb_poly_fill_rectangle(connection, root, brush, 1, &rect);
    roundTrip(connection);
}

void VirtualScreen::putPixels(int x, int y, int blockWidth, int blockHeight,
                              const std::uint32_t *colours) {
    const AnswerDeadline deadline;
    if (waylandBrush)
        return waylandBrush->putPixels(x, y, blockWidth, blockHeight, colours);
    ++drawings;
    const xcb_visualtype_t *visual = rootVisual(screenOf(connection));
    const auto pixelBytes = static_cast<std::size_t>(bytesPerPixel(connection, depth));
    const std::size_t rowBytes = (static_cast<std::size_t>(blockWidth) * pixelBytes + 3) & ~3u;
    const std::size_t requestBytes = xcb_get_maximum_request_length(connection) * std::size_t{4};
    const int rowsAtOnce = static_cast<int>((requestBytes - 64) / rowBytes);

    std::vector<std::uint8_t> band;
    for (int row = 0; row < blockHeight; row += rowsAtOnce) {
        const int rows = std::min(rowsAtOnce, blockHeight - row);
        band.assign(rowBytes * static_cast<std::size_t>(rows), 0);
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < blockWidth; ++c) {
                const std::uint32_t pixel =
                    pixelOf(colours[static_cast<std::size_t>(row + r) *
                                        static_cast<std::size_t>(blockWidth) +
                                    static_cast<std::size_t>(c)],
                            visual);
                std::memcpy(&band[static_cast<std::size_t>(r) * rowBytes +
                                  static_cast<std::size_t>(c) * pixelBytes],
                            &pixel, pixelBytes);
            }
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, brush,
                      static_cast<std::uint16_t>(blockWidth), static_cast<std::uint16_t>(rows),
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y + row), 0,
                      static_cast<std::uint8_t>(depth), static_cast<std::uint32_t>(band.size()),
                      band.data());
    }
    roundTrip(connection);
}

int VirtualScreen::changes() const {
    return waylandBrush ? waylandBrush->shownPictures() : drawings;
}

std::string VirtualScreen::output() const {
    if (sway)
        skipTest("sway has no xrandr");
    const std::string all = run({"xrandr"});
    const std::size_t end = all.find(" connected");
    if (end == std::string::npos)
        throw std::runtime_error("no output is connected: " + all);
    const std::size_t lineEnd = all.rfind('\n', end);
    return all.substr(lineEnd + 1, end - lineEnd - 1);
}

std::string VirtualScreen::mode() const {
    if (sway)
        skipTest("sway has no xrandr");
    const std::string all = run({"xrandr"});
    const std::size_t begin = all.find_first_not_of(' ', all.rfind('\n', all.find('*')) + 1);
    if (begin == std::string::npos)
        throw std::runtime_error("no mode is set: " + all);
    return all.substr(begin, all.find(' ', begin) - begin);
}

std::string VirtualScreen::run(const std::vector<std::string> &command) const {
    Process program(command, {.variables = variables()});
    const ProcessResult result = program.finish();
    if (result.status != 0)
        throw std::runtime_error(command.at(0) + " failed: " + result.out + result.err);
    return result.out;
}

} // namespace test
