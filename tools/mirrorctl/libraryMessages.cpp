#include "tools/mirrorctl/libraryMessages.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace mirrorctl {

MessagesToStandardError::MessagesToStandardError()
    : output((fflush(stdout), fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0))) {
    if (output >= 0)
        dup2(STDERR_FILENO, STDOUT_FILENO);
}

MessagesToStandardError::~MessagesToStandardError() {
    fflush(stdout);
    if (output < 0)
        return;
    dup2(output, STDOUT_FILENO);
    close(output);
}

LibraryMessages::LibraryMessages() {
    fflush(stdout);
    const int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    own = kept < 0 ? nullptr : fdopen(kept, "w");
    if (!own)
        throw std::system_error(errno, std::generic_category(), "standard output");
    setvbuf(own, nullptr, _IOLBF, 0);
    dup2(printed.writeEnd(), STDOUT_FILENO);
}

LibraryMessages::~LibraryMessages() {
    fflush(stdout);
    clearerr(stdout);
    fflush(own);
    dup2(fileno(own), STDOUT_FILENO);
    fclose(own);
}

void LibraryMessages::take(bool echoes) {
    constexpr std::size_t mostSeen = 50;
    ++lines;
    if (echoes && unfinished != line)
        std::fprintf(stderr, "%s\n", unfinished.c_str());
    if (seen.size() < mostSeen)
        seen.insert(unfinished);
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
