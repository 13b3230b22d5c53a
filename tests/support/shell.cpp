#include "tests/support/shell.h"

#include <cerrno>
#include <cstdio>
#include <sys/wait.h>
#include <system_error>

namespace test {

Output outputOf(const std::string &commands) {
    FILE *pipe = popen(("exec 2>&1\n" + commands).c_str(), "r");
    if (!pipe)
        throw std::system_error(errno, std::generic_category(), "popen");
    Output output;
    char part[4096];
    while (const std::size_t size = fread(part, 1, sizeof part, pipe))
        output.text.append(part, size);
    const int status = pclose(pipe);
    output.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return output;
}

} // namespace test
