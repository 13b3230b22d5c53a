// Commands of a shell.
#pragma once

#include <string>

namespace test {

struct Output {
    std::string text; // with standard error
    int status = -1;  // the exit status, or minus the signal that ended the shell
};

// Runs the commands with /bin/sh and waits for their end. Throws std::system_error when they cannot
// be run.
Output outputOf(const std::string &commands);

} // namespace test
