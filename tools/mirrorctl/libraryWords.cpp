#include "tools/mirrorctl/libraryWords.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace mirrorctl {

LibraryWords::LibraryWords() {
    fflush(stdout);
    int ends[2];
    if (pipe(ends) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    own = kept < 0 ? nullptr : fdopen(kept, "w");
    if (!own) {
        const int reason = errno;
        close(ends[0]);
        close(ends[1]);
        if (kept >= 0)
            close(kept);
        throw std::system_error(reason, std::generic_category(), "standard output");
    }
    setvbuf(own, nullptr, _IOLBF, 0);
    readEnd = ends[0];
    fcntl(readEnd, F_SETFD, FD_CLOEXEC);
    fcntl(readEnd, F_SETFL, O_NONBLOCK);
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
}

LibraryWords::~LibraryWords() {
    fflush(stdout);
    clearerr(stdout);
    fflush(own);
    dup2(fileno(own), STDOUT_FILENO);
    fclose(own);
    close(readEnd);
}

void LibraryWords::take(const std::string &words, bool echoes) {
    constexpr std::size_t mostHeard = 4096;
    ++count;
    if (echoes && words != line)
        fprintf(stderr, "%s\n", words.c_str());
    if (!haveHeard(words) && heard.size() + words.size() < mostHeard)
        heard += words + "\n";
    line = words;
}

void LibraryWords::read(bool echoes) {
    char part[4096];
    for (;;) {
        const ssize_t size = ::read(readEnd, part, sizeof part);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return;
        for (ssize_t i = 0; i < size; ++i) {
            constexpr std::size_t longest = 200;
            if (part[i] == '\n') {
                take(unfinished, echoes);
                unfinished.clear();
            } else if (unfinished.size() < longest) {
                unfinished += part[i];
            }
        }
    }
}

bool LibraryWords::haveHeard(const std::string &words) const {
    return ("\n" + heard).find("\n" + words + "\n") != std::string::npos;
}

} // namespace mirrorctl
