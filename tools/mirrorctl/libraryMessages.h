// Handles what the library prints on standard output.
//
// Construct both classes before the library is called, keep them until any run has been stopped,
// and use them from one thread.
#pragma once

#include "tools/mirrorctl/waiting.h"

#include <cstddef>
#include <string>
#include <unistd.h>

namespace mirrorctl {

// Redirects standard output, such as to standard error, so that a program that reads the output
// gets only the result. The program's own output is redirected too, so it must print nothing
// meanwhile.
class OutputRedirection {
public:
    explicit OutputRedirection(int to);
    ~OutputRedirection();
    OutputRedirection(const OutputRedirection &) = delete;
    OutputRedirection &operator=(const OutputRedirection &) = delete;

    // The original standard output; -1: it was closed, and still is.
    int before() const { return kept; }

private:
    int kept;
};

// Collects the library's lines, the only report of errors during a run. The library never waits for
// a reader: output that does not fit into the pipe is lost.
class LibraryMessages {
public:
    // Throws std::system_error when there is no pipe to be had, or no standard output.
    LibraryMessages();

    // Readable when there is something to read().
    int descriptor() const { return printed.descriptor(); }

    // Standard output, for the program itself.
    int output() const { return redirection.before(); }

    // Reads the printed text, without waiting. With `echoes`, lines that differ from the previous
    // one are copied to standard error.
    void read(bool echoes);

    const std::string &last() const { return line; } // empty: there was none
    std::size_t count() const { return lines; }

    // The first message that mirroring ended by itself, since construction or since forget();
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
