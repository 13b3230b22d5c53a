// Work over a long range of integers, shared among the machine's cores.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace test {

// Calls `complaintAbout(i)` for each i below `count`, in slices on parallel threads. Each slice
// ends at its first complaint, a string that is not empty. Returns the complaints, one per line.
template <class Check> std::string complaints(std::uint32_t count, Check complaintAbout) {
    const std::uint32_t cores = std::clamp(std::thread::hardware_concurrency(), 1u, 8u);
    std::vector<std::string> found(cores);
    std::vector<std::thread> threads;
    for (std::uint32_t core = 0; core < cores; ++core)
        threads.emplace_back([&, core] {
            const auto from = static_cast<std::uint32_t>(std::uint64_t{count} * core / cores);
            const auto to = static_cast<std::uint32_t>(std::uint64_t{count} * (core + 1) / cores);
            for (std::uint32_t i = from; i < to && found[core].empty(); ++i)
                found[core] = complaintAbout(i);
        });
    std::string all;
    for (std::uint32_t core = 0; core < cores; ++core) {
        threads[core].join();
        if (!found[core].empty())
            all += found[core] + "\n";
    }
    return all;
}

} // namespace test
