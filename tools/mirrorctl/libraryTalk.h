// The library's own words.
#pragma once

namespace mirrorctl {

// While it lives, what the library prints on standard output goes to standard error, so that a
// program that reads the output gets the answer and nothing else. Begins before the library is
// called and ends after any run has been stopped; nothing else may be printed meanwhile.
class LibraryTalk {
public:
    LibraryTalk();
    ~LibraryTalk();
    LibraryTalk(const LibraryTalk &) = delete;
    LibraryTalk &operator=(const LibraryTalk &) = delete;

private:
    int output; // standard output, kept aside; -1: it was closed, and there is nothing to do
};

} // namespace mirrorctl
