#include "tests/tools/mirrorctl/program.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <poll.h>
#include <stdexcept>

namespace test {

static std::vector<std::string> commandOf(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), MIRRORCTL);
    return arguments;
}

Program::Program(std::vector<std::string> arguments, const Variables &variables,
                 const std::string &input, int ignoredSignal)
    : process(commandOf(std::move(arguments)),
              {.variables = variables, .input = input, .ignoredSignal = ignoredSignal}) {}

void Program::waitForSignals() const {
    // These alone: a thread that makes another holds all signals back for a moment.
    constexpr unsigned long long wanted =
        1 << (SIGHUP - 1) | 1 << (SIGINT - 1) | 1 << (SIGTERM - 1);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
        std::ifstream file("/proc/" + std::to_string(pid()) + "/status");
        for (std::string line; std::getline(file, line);)
            if (line.starts_with("SigBlk:") && std::stoull(line.substr(7), nullptr, 16) == wanted)
                return;
        poll(nullptr, 0, 2);
    }
    throw std::runtime_error("mirrorctl holds no signal back");
}

bool contains(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

Ending mirrorctl(const std::vector<std::string> &arguments, const Program::Variables &variables,
                 const std::string &input) {
    return Program(arguments, variables, input).finish();
}

} // namespace test
