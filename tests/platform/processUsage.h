// What this process holds of the system's countable goods.
#pragma once

#include <cstddef>
#include <set>

namespace test {

std::size_t openDescriptors();
std::size_t threads();
std::size_t systemSharedSegments(); // System V ones, made by this process
std::size_t mappings();

// Wait until it is so; false when it was not in time.
bool openDescriptorsBecome(std::size_t number);
bool threadsBecome(std::size_t number);

// The threads of this process, and how often these have gone to sleep so far.
std::set<int> threadIds();
long sleepsOf(const std::set<int> &threads);

// Processor time of the whole process, in seconds.
double processorSeconds();

} // namespace test
