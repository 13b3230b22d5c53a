#include "tests/platform/processUsage.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>

namespace test {

namespace {

bool becomes(const std::function<bool()> &condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::yield();
    }
    return true;
}

// The kernel still lists a thread for a moment after its join, marked as exiting.
bool isAlive(const std::filesystem::path &task) {
    constexpr unsigned exiting = 4; // PF_EXITING
    std::ifstream file(task / "stat");
    std::string text;
    std::getline(file, text);
    std::istringstream fields(text.substr(text.rfind(')') + 1)); // after the thread's name
    std::string skipped;
    for (int field = 0; field < 6; ++field)
        fields >> skipped;
    unsigned flags = exiting; // of a thread that is already gone
    fields >> flags;
    return (flags & exiting) == 0;
}

} // namespace

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t threads() {
    return threadIds().size();
}

bool openDescriptorsBecome(std::size_t number) {
    return becomes([=] { return openDescriptors() == number; });
}

bool threadsBecome(std::size_t number) {
    return becomes([=] { return threads() == number; });
}

std::size_t systemSharedSegments() {
    std::ifstream stream("/proc/sysvipc/shm");
    std::string line;
    std::getline(stream, line);
    std::size_t count = 0;
    while (std::getline(stream, line)) {
        std::istringstream fields(line);
        long key = 0, id = 0, mode = 0, size = 0, creator = 0;
        fields >> key >> id >> mode >> size >> creator;
        if (creator == getpid())
            ++count;
    }
    return count;
}

std::size_t mappings(const std::string &text, int process) {
    std::ifstream maps("/proc/" + (process == 0 ? "self" : std::to_string(process)) + "/maps");
    std::size_t count = 0;
    for (std::string line; std::getline(maps, line);)
        count += line.find(text) != std::string::npos;
    return count;
}

std::set<int> threadIds(const std::set<int> &others) {
    // A sanitizer may start a thread of its own together with the first thread.
    [[maybe_unused]] static const bool started = [] {
        std::thread([] {}).join();
        return true;
    }();
    std::set<int> ids;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        const int id = std::stoi(task.path().filename());
        if (!others.contains(id) && isAlive(task.path()))
            ids.insert(id);
    }
    return ids;
}

long long runTimeOf(const std::set<int> &threads) {
    long long sum = 0;
    for (const int thread : threads) {
        std::ifstream statistics("/proc/self/task/" + std::to_string(thread) + "/schedstat");
        long long time = 0;
        if (!(statistics >> time))
            throw std::runtime_error("no thread statistics");
        sum += time;
    }
    return sum;
}

bool comeToRest(const std::set<int> &threads) {
    // Many short checks: one second without run time may mean that the whole machine stood still.
    constexpr int looks = 150;
    int quietLooks = 0;
    long long last = runTimeOf(threads);
    return becomes([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const long long now = runTimeOf(threads);
        quietLooks = now == last ? quietLooks + 1 : 0;
        last = now;
        return quietLooks == looks;
    });
}

} // namespace test
