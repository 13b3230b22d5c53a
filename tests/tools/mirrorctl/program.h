// mirrorctl as a child process, with its output caught.
#pragma once

#include "tests/support/process.h"

#include <map>
#include <string>
#include <vector>

namespace test {

class Program {
public:
    using Variables = std::map<std::string, std::string>;

    // Starts the program with `arguments`. `variables` are set in its environment, or removed when
    // empty; `input` is what it reads. Signals arrive as in a terminal: none blocked, none ignored
    // except `ignoredSignal`, if any.
    explicit Program(std::vector<std::string> arguments, const Variables &variables = {},
                     const std::string &input = "", int ignoredSignal = 0);

    // As those of Process.
    pid_t pid() const { return process.pid(); }
    void waitFor(const std::string &text) { process.waitFor(text); }
    void waitForError(const std::string &text) { process.waitForError(text); }
    void signal(int number) const { process.signal(number); }
    Ending finish() { return process.finish(); }

    // Waits until the program holds signals back, half a minute at most: from then on a signal does
    // not end it by itself.
    void waitForSignals() const;

private:
    Process process;
};

bool contains(const std::string &text, const std::string &part);

// Starts mirrorctl and waits for its end.
Ending mirrorctl(const std::vector<std::string> &arguments,
                 const Program::Variables &variables = {}, const std::string &input = "");

} // namespace test
