#include "tests/support/process.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <ostream>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

namespace {

winsize winsizeOf(TerminalSize size) {
    winsize made{};
    made.ws_col = static_cast<unsigned short>(size.columns);
    made.ws_row = static_cast<unsigned short>(size.rows);
    return made;
}

// A file in memory that holds `text`, positioned at its beginning.
int inputFile(const std::string &text) {
    const int fd = memfd_create("input", MFD_CLOEXEC);
    if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        lseek(fd, 0, SEEK_SET) != 0)
        throw std::runtime_error("no input file");
    return fd;
}

std::vector<std::string> variablesWith(const std::map<std::string, std::string> &wanted) {
    std::vector<std::string> lines;
    for (char **entry = environ; *entry != nullptr; ++entry) {
        const std::string line = *entry;
        if (!wanted.contains(line.substr(0, line.find('='))))
            lines.push_back(line);
    }
    for (const auto &[name, value] : wanted)
        if (!value.empty())
            lines.push_back(name + "=" + value);
    return lines;
}

std::vector<char *> pointersTo(std::vector<std::string> &lines) {
    std::vector<char *> pointers;
    for (std::string &line : lines)
        pointers.push_back(line.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Runs in the child.
[[noreturn]] void execute(char *const *arguments, char *const *variables, int ignoredSignal,
                          pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(127);
    for (int number = 1; number < NSIG; ++number)
        std::signal(number, number == ignoredSignal ? SIG_IGN : SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execvpe(arguments[0], arguments, variables);
    _exit(127);
}

// Reads what is available; closes the descriptor at end of file. A terminal reports its end as an
// error.
void readInto(int &fd, std::string &text) {
    char part[65536];
    const ssize_t size = read(fd, part, sizeof part);
    if (size > 0) {
        text.append(part, static_cast<std::size_t>(size));
        return;
    }
    close(fd);
    fd = -1;
}

} // namespace

void PrintTo(const ProcessResult &result, std::ostream *stream) {
    *stream << "status " << result.status << ", output\n" << result.out << "errors\n" << result.err;
}

Process::Process(std::vector<std::string> command, const LaunchOptions &options)
    : name(command.at(0)), patience(options.patience) {
    std::map<std::string, std::string> wanted = options.variables;
    if (options.terminal)
        wanted.emplace("TERM", "xterm-256color");
    std::vector<std::string> lines = variablesWith(wanted);
    const std::vector<char *> words = pointersTo(command);
    const std::vector<char *> variables = pointersTo(lines);
    const auto becomeProgram = [&, parent = getpid()] {
        execute(words.data(), variables.data(), options.ignoredSignal, parent);
    };
    if (options.terminal) {
        const winsize size = winsizeOf(*options.terminal);
        child = forkpty(&outFd, nullptr, nullptr, &size);
        if (child == 0)
            becomeProgram();
        if (child > 0)
            fcntl(outFd, F_SETFD, FD_CLOEXEC);
    } else {
        const int in = inputFile(options.input);
        int out[2];
        int err[2];
        if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        child = fork();
        if (child == 0) {
            dup2(in, STDIN_FILENO);
            dup2(out[1], STDOUT_FILENO);
            dup2(err[1], STDERR_FILENO);
            becomeProgram();
        }
        for (const int fd : {in, out[1], err[1]})
            close(fd);
        outFd = out[0];
        errFd = err[0];
    }
    if (child < 0)
        throw std::runtime_error(name + " cannot be started");
}

Process::~Process() {
    if (child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    for (const int fd : {outFd, errFd})
        if (fd >= 0)
            close(fd);
}

std::runtime_error Process::failure(const std::string &what) const {
    return std::runtime_error(name + " " + what + " after\n" + result.out + result.err);
}

std::string Process::status(const std::string &field) const {
    std::ifstream file("/proc/" + std::to_string(child) + "/status");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(field + ":\t"))
            return line.substr(field.size() + 2);
    return "";
}

bool Process::readMore() {
    if (outFd < 0 && errFd < 0)
        return false;
    pollfd waiting[] = {{outFd, POLLIN, 0}, {errFd, POLLIN, 0}};
    if (poll(waiting, 2, patience * 1000) == 0)
        throw failure("fell silent");
    if (waiting[0].revents != 0)
        readInto(outFd, result.out);
    if (waiting[1].revents != 0)
        readInto(errFd, result.err);
    return true;
}

void Process::waitFor(const std::string &text, std::size_t from) {
    while (result.out.find(text, from) == std::string::npos)
        if (!readMore())
            throw failure("ended");
}

void Process::waitForError(const std::string &text) {
    while (result.err.find(text) == std::string::npos)
        if (!readMore())
            throw failure("ended");
}

ProcessResult Process::finish() {
    while (readMore()) {
    }
    int status = 0;
    waitpid(child, &status, 0);
    child = -1;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return result;
}

void Process::signal(int number) const {
    kill(child, number);
}

void Process::type(const std::string &keys) {
    if (write(outFd, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw failure("takes no keys");
}

void Process::resize(TerminalSize size) const {
    const winsize wanted = winsizeOf(size);
    ioctl(outFd, TIOCSWINSZ, &wanted);
}

void Process::closeOutput() {
    if (outFd >= 0)
        close(outFd);
    outFd = -1;
}

ProcessResult shell(const std::string &commands) {
    return Process({"/bin/sh", "-c", "exec 2>&1\n" + commands}, {.patience = 600}).finish();
}

} // namespace test
