// A program as a child process, with its output read through pipes or a pseudo-terminal.
#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace test {

// The kernel ends the child when the test's process dies; the destructor ends it too.
class Child {
public:
    enum class Output { pipes, terminal };

    // Throws std::runtime_error when it cannot be started. On a terminal, both outputs are `out`.
    explicit Child(const std::vector<std::string> &command, Output output = Output::pipes,
                   int columns = 80, int rows = 24);
    ~Child();
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    // Reads until standard output holds `text` beyond position `from`; false when the output ended
    // or the deadline passed before.
    bool waitFor(const std::string &text, std::size_t from = 0);

    // Reads to the end of the output and waits for the exit. The exit status; -1 when the deadline
    // passed, or minus the signal that ended the child.
    int waitExit();

    void signal(int number);
    void type(const std::string &keys); // on a terminal
    void resize(int columns, int rows); // the terminal
    void closeOutput();                 // as a reader that goes away

    pid_t pid() const { return child; }
    std::string out;
    std::string errors;

private:
    // Waits for more output; false at the end of all output, or past the deadline.
    bool readMore(std::chrono::steady_clock::time_point deadline);

    pid_t child = -1;
    int outFd = -1;
    int errorFd = -1;
};

} // namespace test
