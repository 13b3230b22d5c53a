// What the library prints on standard output while it is called.
//
// Both classes are made before the library is called, last until any run has been stopped, and are
// used by one thread.
#pragma once

#include "tools/mirrorctl/waiting.h"

#include <cstddef>
#include <string>
#include <unistd.h>

namespace mirrorctl {

// Sends it elsewhere, such as to standard error, so that a program that reads the output gets the
// answer and nothing else. Nothing else may be printed on standard output meanwhile.
class OutputRedirection {
public:
    explicit OutputRedirection(int to);
    ~OutputRedirection();
    OutputRedirection(const OutputRedirection &) = delete;
    OutputRedirection &operator=(const OutputRedirection &) = delete;

    // Standard output as it was; -1: it was closed, and still is.
    int before() const { return kept; }

private:
    int kept;
};

// Collects it line by line, since there is no other report of what goes wrong during a run. The
// library never waits for a reader: what does not fit into the pipe is lost.
class LibraryMessages {
public:
    // Throws std::system_error when there is no pipe to be had, or no standard output.
    LibraryMessages();

    // Readable when read() has something to do.
    int descriptor() const { return printed.descriptor(); }

    // Standard output, for the program itself.
    int output() const { return redirection.before(); }

    // Takes in what was printed, without waiting. With `echoes`, lines that differ from the one
    // before are copied to standard error.
    void read(bool echoes);

    const std::string &last() const { return line; } // empty: there was none
    std::size_t count() const { return lines; }

    // The first that says that mirroring ended by itself, since the beginning or since forget();
    // empty: there was none.
    const std::string &endMessage() const { return endLine; }
    void forget() { endLine.clear(); }

private:
    void take(bool echoes);

    WakeUp printed;
    OutputRedirection redirection{printed.writeEnd()};
    std::string unfinished;
    std::string line;
    std::string endLine;
    std::size_t lines = 0;
};

} // namespace mirrorctl
