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

// How a program ended, and all its output.
struct ProcessResult {
    int status = -1; // the exit status, or minus the number of the signal that ended it
    std::string out;
    std::string err;

    bool operator==(const ProcessResult &) const = default;
};

// For tests that compare results.
void PrintTo(const ProcessResult &result, std::ostream *stream);

struct TerminalSize {
    int columns = 80;
    int rows = 24;
};

// How a program is started.
struct LaunchOptions {
    std::map<std::string, std::string> variables = {}; // set, or removed when empty
    std::string input = {};                            // standard input; not used with a terminal
    std::optional<TerminalSize> terminal = {}; // instead of pipes; `out` then holds all output
    int ignoredSignal = 0;                     // 0: none, as in a terminal
    int patience = 60;                         // seconds without any output
};

// Use it only in the thread that created it: the kernel ends the child when that thread ends. When
// the program is silent for too long, or ends before the awaited output, std::runtime_error is
// thrown with all that the program has printed.
class Process {
public:
    // The program, looked up in PATH, and its arguments. Throws std::runtime_error when it cannot
    // be started; a missing program ends with status 127.
    explicit Process(std::vector<std::string> command, const LaunchOptions &options = {});
    // Ends the child (SIGKILL) if it still runs.
    ~Process();
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    pid_t pid() const { return child; }
    const std::string &out() const { return result.out; }
    const std::string &err() const { return result.err; }

    // A field of the system's status of the running program, such as "State".
    std::string status(const std::string &field) const;

    // Wait until standard output contains `text` at or after position `from`; until standard error
    // contains it.
    void waitFor(const std::string &text, std::size_t from = 0);
    void waitForError(const std::string &text);

    // Waits for the end of the output and of the program.
    ProcessResult finish();

    void signal(int number) const;
    void type(const std::string &keys);   // on the terminal
    void resize(TerminalSize size) const; // the terminal
    void closeOutput();                   // like a reader that exits

private:
    // Waits for output and reads it. False once all output has ended.
    bool readMore();
    std::runtime_error failure(const std::string &what) const;

    const std::string name;
    const int patience;
    pid_t child = -1;
    int outFd = -1;
    int errFd = -1;
    ProcessResult result;
};

// Runs shell commands to their end, with ctest's deadline as the limit. `out` holds both standard
// output and standard error.
ProcessResult shell(const std::string &commands);

} // namespace test
