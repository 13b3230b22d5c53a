// mirrorctl as a child process, with its output caught.
#pragma once

#include "tests/support/process.h"

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace test {

class Program {
public:
    using Variables = std::map<std::string, std::string>;

    // Starts the program with `arguments`. `variables` are set in its environment, or removed when
    // empty; `input` is what it reads. Signals arrive as in a terminal: none blocked, none ignored
    // except `ignoredSignal`, if any. Throws std::runtime_error when it cannot be started.
    explicit Program(const std::vector<std::string> &arguments, const Variables &variables = {},
                     const std::string &input = "", int ignoredSignal = 0);
    // Ends the program if it still runs.
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    pid_t pid() const { return child; }

    // Waits until the program has printed `text` to standard output; throws std::runtime_error
    // with all of its output when it ends or half a minute passes before.
    void waitFor(const std::string &text);

    // The same with standard error.
    void waitForError(const std::string &text);

    // Waits until the program holds signals back, with the same deadline: from then on a signal
    // does not end it by itself.
    void waitForSignals() const;

    void signal(int signum) const;

    // Waits for the end, at most half a minute, after which it throws std::runtime_error.
    Ending finish();

private:
    // Takes in what there is to read. False once both outputs have ended.
    bool readMore();

    pid_t child = -1;
    int outFd = -1;
    int errFd = -1;
    Ending ending;
};

bool contains(const std::string &text, const std::string &part);

// Starts mirrorctl and waits for its end.
Ending mirrorctl(const std::vector<std::string> &arguments,
                 const Program::Variables &variables = {}, const std::string &input = "");

} // namespace test
