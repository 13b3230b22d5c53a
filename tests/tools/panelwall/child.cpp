#include "tests/tools/panelwall/child.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

using SteadyClock = std::chrono::steady_clock;
static constexpr std::chrono::seconds patience{60};

[[noreturn]] static void execute(const std::vector<std::string> &command) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setenv("TERM", "xterm-256color", 1);
    std::vector<char *> arguments;
    for (const std::string &word : command)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
}

Child::Child(const std::vector<std::string> &command, Output output, int columns, int rows) {
    if (output == Output::terminal) {
        winsize size{};
        size.ws_col = static_cast<unsigned short>(columns);
        size.ws_row = static_cast<unsigned short>(rows);
        child = forkpty(&outFd, nullptr, nullptr, &size);
        if (child == 0)
            execute(command);
        if (child > 0)
            fcntl(outFd, F_SETFD, FD_CLOEXEC);
    } else {
        int outPipe[2];
        int errorPipe[2];
        if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errorPipe, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        child = fork();
        if (child == 0) {
            dup2(outPipe[1], STDOUT_FILENO);
            dup2(errorPipe[1], STDERR_FILENO);
            execute(command);
        }
        close(outPipe[1]);
        close(errorPipe[1]);
        outFd = outPipe[0];
        errorFd = errorPipe[0];
    }
    if (child < 0)
        throw std::runtime_error("no child process");
}

Child::~Child() {
    if (child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    closeOutput();
    if (errorFd >= 0)
        close(errorFd);
}

// True while there may be more. The end of a terminal's output is an error, that of a pipe is not.
static bool readInto(int &fd, std::string &text) {
    char part[65536];
    const ssize_t size = read(fd, part, sizeof part);
    if (size <= 0) {
        close(fd);
        fd = -1;
        return false;
    }
    text.append(part, static_cast<std::size_t>(size));
    return true;
}

bool Child::readMore(SteadyClock::time_point deadline) {
    if (outFd < 0 && errorFd < 0)
        return false;
    pollfd waiting[2] = {{outFd, POLLIN, 0}, {errorFd, POLLIN, 0}};
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now());
    if (left.count() <= 0 || poll(waiting, 2, static_cast<int>(left.count())) <= 0)
        return false;
    if (waiting[0].revents != 0)
        readInto(outFd, out);
    if (waiting[1].revents != 0)
        readInto(errorFd, errors);
    return true;
}

bool Child::waitFor(const std::string &text, std::size_t from) {
    const auto deadline = SteadyClock::now() + patience;
    while (out.find(text, from) == std::string::npos)
        if (!readMore(deadline))
            return false;
    return true;
}

int Child::waitExit() {
    const auto deadline = SteadyClock::now() + patience;
    while (readMore(deadline)) {
    }
    if (outFd >= 0 || errorFd >= 0)
        return -1;
    int status = 0;
    waitpid(child, &status, 0);
    child = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void Child::signal(int number) {
    kill(child, number);
}

void Child::type(const std::string &keys) {
    if (write(outFd, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw std::runtime_error("the terminal takes no keys");
}

void Child::resize(int columns, int rows) {
    winsize size{};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = static_cast<unsigned short>(rows);
    ioctl(outFd, TIOCSWINSZ, &size);
}

void Child::closeOutput() {
    if (outFd >= 0)
        close(outFd);
    outFd = -1;
}

} // namespace test
