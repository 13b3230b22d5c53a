// The memory and descriptors of another process at one moment.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/types.h>

namespace load {

struct ProcessSample {
    long residentKiB = 0;
    long descriptors = 0;
};

// Zeros for a process that has ended.
inline ProcessSample sampleOf(pid_t process) {
    const std::filesystem::path folder = "/proc/" + std::to_string(process);
    ProcessSample sample;
    std::ifstream status(folder / "status");
    const std::string wanted = "VmRSS:";
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(wanted))
            sample.residentKiB = std::stol(line.substr(wanted.size()));
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator(folder / "fd", ignored))
        sample.descriptors += entry.path().empty() ? 0 : 1;
    return sample;
}

} // namespace load
