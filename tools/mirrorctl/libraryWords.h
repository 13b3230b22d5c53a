// What the library says while it runs.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace mirrorctl {

// While it lives, the lines that the library prints on standard output are collected here, since
// they are its only word on what goes wrong. The program itself prints to output(). The library
// never waits for a reader: what does not fit is lost.
//
// One thread; lives from before the library is called until any run has been stopped.
class LibraryWords {
public:
    // Throws std::system_error when there is no pipe to be had.
    LibraryWords();
    ~LibraryWords();
    LibraryWords(const LibraryWords &) = delete;
    LibraryWords &operator=(const LibraryWords &) = delete;

    // Readable when read() has something to do.
    int descriptor() const { return readEnd; }

    // Standard output, for the program itself.
    FILE *output() const { return own; }

    // Takes in what was said, without waiting. Lines that were not said just before go to standard
    // error as well, when they are wanted there.
    void read(bool echoes);

    const std::string &last() const { return line; } // empty: nothing was said
    std::size_t lines() const { return count; }

    // Whether this line was among them since the beginning, or since forget().
    bool haveHeard(const std::string &words) const;
    void forget() { heard.clear(); }

private:
    void take(const std::string &words, bool echoes);

    int readEnd = -1;
    FILE *own = nullptr;
    std::string unfinished;
    std::string line;
    std::string heard; // the different lines, the first few of them, each with its line break
    std::size_t count = 0;
};

} // namespace mirrorctl
