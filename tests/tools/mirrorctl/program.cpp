#include "tests/tools/mirrorctl/program.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace test {

namespace {

constexpr auto patience = std::chrono::seconds(30);

// A file in memory that holds `text`, to be read from its beginning.
int inputFile(const std::string &text) {
    const int fd = memfd_create("input", MFD_CLOEXEC);
    if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        lseek(fd, 0, SEEK_SET) != 0)
        throw std::runtime_error("no input file");
    return fd;
}

std::vector<std::string> environment(const Program::Variables &variables) {
    std::vector<std::string> lines;
    for (char **entry = environ; *entry; ++entry) {
        const std::string line = *entry;
        if (!variables.count(line.substr(0, line.find('='))))
            lines.push_back(line);
    }
    for (const auto &[name, value] : variables)
        if (!value.empty())
            lines.push_back(name + "=" + value);
    return lines;
}

std::vector<char *> pointers(std::vector<std::string> &lines) {
    std::vector<char *> list;
    for (auto &line : lines)
        list.push_back(line.data());
    list.push_back(nullptr);
    return list;
}

// Ignoring is inherited over the start of a program; it is undone here afterwards.
class Ignoring {
public:
    explicit Ignoring(int signumToIgnore) : signum(signumToIgnore) {
        if (signum != 0)
            before = std::signal(signum, SIG_IGN);
    }
    ~Ignoring() {
        if (signum != 0)
            std::signal(signum, before);
    }
    Ignoring(const Ignoring &) = delete;
    Ignoring &operator=(const Ignoring &) = delete;

private:
    int signum;
    void (*before)(int) = SIG_DFL;
};

} // namespace

Program::Program(const std::vector<std::string> &arguments, const Variables &variables,
                 const std::string &input, int ignoredSignal) {
    int out[2];
    int err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipes");
    outFd = out[0];
    errFd = err[0];
    const int in = inputFile(input);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, in, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, err[1], STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t defaults;
    sigemptyset(&none);
    sigfillset(&defaults);
    if (ignoredSignal != 0)
        sigdelset(&defaults, ignoredSignal);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::vector<std::string> words = {MIRRORCTL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> lines = environment(variables);
    int error = 0;
    {
        const Ignoring ignoring(ignoredSignal);
        error = posix_spawn(&child, MIRRORCTL, &files, &attributes, pointers(words).data(),
                            pointers(lines).data());
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    for (const int fd : {in, out[1], err[1]})
        close(fd);
    if (error != 0) {
        child = -1;
        close(outFd);
        close(errFd);
        throw std::runtime_error("mirrorctl cannot be started");
    }
}

Program::~Program() {
    if (child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    for (const int fd : {outFd, errFd})
        if (fd >= 0)
            close(fd);
}

bool Program::readMore() {
    pollfd fds[] = {{outFd, POLLIN, 0}, {errFd, POLLIN, 0}};
    if (outFd < 0 && errFd < 0)
        return false;
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(patience).count();
    if (poll(fds, 2, static_cast<int>(milliseconds)) == 0)
        throw std::runtime_error("mirrorctl fell silent after\n" + ending.out + ending.err);
    const auto take = [](const pollfd &entry, int &fd, std::string &text) {
        if (!(entry.revents & (POLLIN | POLLHUP)))
            return;
        char part[4096];
        const ssize_t size = read(fd, part, sizeof part);
        if (size > 0) {
            text.append(part, static_cast<std::size_t>(size));
        } else {
            close(fd);
            fd = -1;
        }
    };
    take(fds[0], outFd, ending.out);
    take(fds[1], errFd, ending.err);
    return true;
}

void Program::waitFor(const std::string &text) {
    while (ending.out.find(text) == std::string::npos)
        if (!readMore())
            throw std::runtime_error("mirrorctl ended after\n" + ending.out + ending.err);
}

void Program::waitForError(const std::string &text) {
    while (ending.err.find(text) == std::string::npos)
        if (!readMore())
            throw std::runtime_error("mirrorctl ended after\n" + ending.out + ending.err);
}

void Program::waitForSignals() const {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < deadline) {
        std::ifstream file("/proc/" + std::to_string(child) + "/status");
        for (std::string line; std::getline(file, line);)
            if (line.starts_with("SigBlk:") &&
                (std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1) & 1) != 0)
                return;
        poll(nullptr, 0, 2);
    }
    throw std::runtime_error("mirrorctl holds no signal back");
}

void Program::signal(int signum) const {
    kill(child, signum);
}

Ending Program::finish() {
    while (readMore()) {
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child)
        throw std::runtime_error("mirrorctl cannot be waited for");
    child = -1;
    ending.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return ending;
}

bool contains(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

Ending mirrorctl(const std::vector<std::string> &arguments, const Program::Variables &variables,
                 const std::string &input) {
    return Program(arguments, variables, input).finish();
}

} // namespace test
