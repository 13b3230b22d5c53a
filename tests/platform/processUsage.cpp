#include "tests/platform/processUsage.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace test {

namespace {

std::size_t entriesOf(const char *folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t linesOf(const char *file) {
    std::ifstream stream(file);
    std::size_t count = 0;
    for (std::string line; std::getline(stream, line);)
        ++count;
    return count;
}

} // namespace

std::size_t openDescriptors() {
    return entriesOf("/proc/self/fd");
}

std::size_t threads() {
    return entriesOf("/proc/self/task");
}

std::size_t systemSharedSegments() {
    return linesOf("/proc/sysvipc/shm");
}

std::size_t mappings() {
    return linesOf("/proc/self/maps");
}

long sleepsOfOtherThreads() {
    long sleeps = 0;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        if (task.path().filename() == std::to_string(gettid()))
            continue;
        std::ifstream status(task.path() / "status");
        const std::string wanted = "voluntary_ctxt_switches:";
        for (std::string line; std::getline(status, line);)
            if (line.starts_with(wanted))
                sleeps += std::stol(line.substr(wanted.size()));
    }
    return sleeps;
}

double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

} // namespace test
