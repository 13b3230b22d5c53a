// Programs as child processes, with their output caught through pipes or a pseudo-terminal.
#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/types.h>
#include <vector>

namespace test {

// How a program ended, and all that it printed.
struct Ending {
    int status = -1; // the exit status, or minus the number of the signal that ended it
    std::string out;
    std::string err;

    bool operator==(const Ending &) const = default;
};

// For tests that compare endings.
void PrintTo(const Ending &ending, std::ostream *stream);

struct TerminalSize {
    int columns = 80;
    int rows = 24;
};

// What a program finds when it starts.
struct Surroundings {
    std::map<std::string, std::string> variables = {}; // set, or removed when empty
    std::string input = {};                            // not read from a terminal
    std::optional<TerminalSize> terminal = {}; // instead of pipes; what is printed is all in `out`
    int ignoredSignal = 0;                     // 0: none, as in a terminal
    int patience = 60;                         // seconds without any output
};

// One thread at a time, the one that made it: the kernel ends the child when that thread ends. When
// the program is silent for too long, or ends before what is waited for, std::runtime_error is
// thrown with all that it has printed.
class Process {
public:
    // The program, looked up in PATH, and its arguments. Throws std::runtime_error when it cannot
    // be started; one that is not there ends with 127.
    explicit Process(std::vector<std::string> command, const Surroundings &surroundings = {});
    // Ends the child (SIGKILL) if it still runs.
    ~Process();
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    pid_t pid() const { return child; }
    const std::string &out() const { return ending.out; }
    const std::string &err() const { return ending.err; }

    // A field of what the system says of the running program, such as its "State".
    std::string status(const std::string &field) const;

    // Waits until standard output holds `text` beyond position `from`; standard error.
    void waitFor(const std::string &text, std::size_t from = 0);
    void waitForError(const std::string &text);

    // Waits for the end of the output and of the program.
    Ending finish();

    void signal(int number) const;
    void type(const std::string &keys);   // on the terminal
    void resize(TerminalSize size) const; // the terminal
    void closeOutput();                   // as a reader that goes away

private:
    // Takes in what there is to read. False once all output has ended.
    bool readMore();
    std::runtime_error failure(const std::string &what) const;

    const std::string name;
    const int patience;
    pid_t child = -1;
    int outFd = -1;
    int errFd = -1;
    Ending ending;
};

// Runs commands of a shell to their end, which ctest's deadline is for; what they print to either
// output is in `out`.
Ending shell(const std::string &commands);

} // namespace test
