#include "tools/mirrorctl/libraryMessages.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <system_error>

namespace mirrorctl {

OutputRedirection::OutputRedirection(int to)
    : kept((fflush(stdout), fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0))) {
    if (kept >= 0)
        dup2(to, STDOUT_FILENO);
}

OutputRedirection::~OutputRedirection() {
    fflush(stdout);
    clearerr(stdout); // the target may have been full
    if (kept < 0)
        return;
    dup2(kept, STDOUT_FILENO);
    close(kept);
}

LibraryMessages::LibraryMessages() {
    if (output() < 0)
        throw std::system_error(errno, std::generic_category(), "standard output");
}

void LibraryMessages::take(bool echoes) {
    ++lines;
    if (echoes && unfinished != line)
        std::fprintf(stderr, "%s\n", unfinished.c_str());
    const bool isEnd =
        unfinished == "Stream start failed!" || unfinished == "Error during runMirror";
    if (isEnd && endLine.empty())
        endLine = unfinished;
    line = std::move(unfinished);
    unfinished.clear();
}

void LibraryMessages::read(bool echoes) {
    char part[4096];
    for (;;) {
        const ssize_t size = ::read(printed.descriptor(), part, sizeof part);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return;
        for (ssize_t i = 0; i < size; ++i) {
            constexpr std::size_t longest = 200;
            if (part[i] == '\n')
                take(echoes);
            else if (unfinished.size() < longest)
                unfinished += part[i];
        }
    }
}

} // namespace mirrorctl
