#include "tests/support/virtualScreen.h"

#include "tests/support/xServer.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace test {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds(30);

std::runtime_error systemFailure(const std::string &what) {
    return std::runtime_error(what + ": " + std::strerror(errno));
}

int millisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<long long>(0, left.count()));
}

class Pipe {
public:
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw systemFailure("pipe");
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    int readEnd() const { return ends[0]; }
    int writeEnd() const { return ends[1]; }
    void closeWriteEnd() { closeEnd(1); }

private:
    void closeEnd(int which) {
        if (ends[which] >= 0)
            close(ends[which]);
        ends[which] = -1;
    }

    int ends[2] = {-1, -1};
};

std::vector<char *> pointersTo(std::vector<std::string> &texts) {
    std::vector<char *> pointers;
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentWithDisplay(const std::string &display) {
    std::vector<std::string> variables;
    for (char **variable = environ; *variable != nullptr; ++variable)
        if (std::strncmp(*variable, "DISPLAY=", 8) != 0)
            variables.emplace_back(*variable);
    if (!display.empty())
        variables.push_back("DISPLAY=" + display);
    return variables;
}

// Starts a program whose life is bound to the calling thread's. `output` becomes descriptor 3 and,
// with `captureText`, standard output and error as well; otherwise both are thrown away.
pid_t spawn(std::vector<std::string> command, const std::string &display, int output,
            bool captureText) {
    std::vector<std::string> variables = environmentWithDisplay(display);
    const std::vector<char *> arguments = pointersTo(command);
    const std::vector<char *> environment = pointersTo(variables);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0)
        throw systemFailure("fork");
    if (child > 0)
        return child;

    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(127);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    const int text = captureText ? output : nothing;
    dup2(nothing, STDIN_FILENO);
    dup2(text, STDOUT_FILENO);
    dup2(text, STDERR_FILENO);
    if (output == 3)
        fcntl(3, F_SETFD, 0);
    else
        dup2(output, 3);
    execvpe(arguments[0], arguments.data(), environment.data());
    _exit(127);
}

// Reads until the text holds a line (`oneLine`) or ends; false when the deadline passed first.
bool readText(int fd, std::string &text, bool oneLine, Clock::time_point deadline) {
    for (;;) {
        pollfd waiting{fd, POLLIN, 0};
        const int ready = poll(&waiting, 1, millisecondsUntil(deadline));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return false;
        char bytes[4096];
        const ssize_t got = read(fd, bytes, sizeof bytes);
        if (got <= 0)
            return true;
        text.append(bytes, static_cast<std::size_t>(got));
        if (oneLine && text.find('\n') != std::string::npos)
            return true;
    }
}

// Waits for a child's end without taking it off the process table; false on the deadline.
bool waitForEnd(pid_t child, Clock::time_point deadline) {
    while (Clock::now() < deadline) {
        siginfo_t info{};
        if (waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT | WNOHANG) != 0)
            return true;
        if (info.si_pid == child)
            return true;
        poll(nullptr, 0, 5);
    }
    return false;
}

// Binds a socket to a display number that no other test's screen has, above those that a server
// which looks for a free one tries. Thus nobody's server takes the name while there is none under
// it.
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
    throw systemFailure("a display number");
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
    reservation = reserveNumber(number);
    name = ":" + std::to_string(number);
    try {
        restart();
    } catch (...) {
        // No destructor runs for an object that was never finished.
        kill();
        close(reservation);
        throw;
    }
}

void VirtualScreen::restart() {
    const ServerKind kind = serverKind();
    const ServerWish wish{width, height, depth, extraArguments};
    std::vector<std::string> command = serverCommand(kind, wish);
    command.insert(command.begin() + 1, name);

    const auto deadline = Clock::now() + patience;
    Pipe pipe;
    server = spawn(command, "", pipe.writeEnd(), false);
    pipe.closeWriteEnd();
    std::string ready;
    readText(pipe.readEnd(), ready, true, deadline);
    if (ready.find('\n') == std::string::npos)
        throw std::runtime_error(command.at(0) + " did not come up");
    for (const std::vector<std::string> &size : commandsForSize(kind, wish))
        run(size);

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
    if (server > 0) {
        ::kill(server, SIGCONT);
        ::kill(server, SIGTERM);
        if (waitForEnd(server, Clock::now() + std::chrono::seconds(5)))
            waitpid(server, nullptr, 0);
        else
            kill();
    }
    close(reservation);
}

void VirtualScreen::disconnect() {
    if (connection != nullptr)
        xcb_disconnect(connection);
    connection = nullptr;
}

void VirtualScreen::kill() {
    disconnect();
    if (server <= 0)
        return;
    ::kill(server, SIGKILL);
    waitpid(server, nullptr, 0);
    server = -1;
    // A killed server leaves its file behind.
    unlink(("/tmp/.X11-unix/X" + name.substr(1)).c_str());
}

void VirtualScreen::use() const {
    setenv("DISPLAY", name.c_str(), 1);
}

void VirtualScreen::fill(std::uint32_t colour) {
    fillRect(0, 0, width, height, colour);
}

void VirtualScreen::fillRect(int x, int y, int rectWidth, int rectHeight, std::uint32_t colour) {
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

std::string VirtualScreen::output() const {
    const std::string all = run({"xrandr"});
    const std::size_t end = all.find(" connected");
    if (end == std::string::npos)
        throw std::runtime_error("no output is connected: " + all);
    const std::size_t lineEnd = all.rfind('\n', end);
    return all.substr(lineEnd + 1, end - lineEnd - 1);
}

std::string VirtualScreen::mode() const {
    const std::string all = run({"xrandr"});
    const std::size_t begin = all.find_first_not_of(' ', all.rfind('\n', all.find('*')) + 1);
    if (begin == std::string::npos)
        throw std::runtime_error("no mode is set: " + all);
    return all.substr(begin, all.find(' ', begin) - begin);
}

std::string VirtualScreen::run(const std::vector<std::string> &command) const {
    Pipe pipe;
    const auto deadline = Clock::now() + patience;
    const pid_t child = spawn(command, name, pipe.writeEnd(), true);
    pipe.closeWriteEnd();
    std::string text;
    const bool ended =
        readText(pipe.readEnd(), text, false, deadline) && waitForEnd(child, deadline);
    if (!ended)
        ::kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    if (!ended)
        throw std::runtime_error(command.at(0) + " did not end: " + text);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(command.at(0) + " failed: " + text);
    return text;
}

} // namespace test
