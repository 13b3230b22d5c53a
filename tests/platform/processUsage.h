// What this process holds of the system's countable goods.
#pragma once

#include <cstddef>
#include <ctime>
#include <string>

namespace test {

std::size_t openDescriptors();
std::size_t threads();
std::size_t systemSharedSegments();
std::size_t mappings();

// How often any thread of the process but the caller has gone to sleep so far.
long sleepsOfOtherThreads();

// Processor time of the whole process, in seconds.
double processorSeconds();

} // namespace test
