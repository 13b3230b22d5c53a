// The countable system resources that this process holds.
#pragma once

#include <cstddef>
#include <set>
#include <string>

namespace test {

std::size_t openDescriptors();
std::size_t threads();
std::size_t systemSharedSegments(); // System V segments, made by this process
// The mappings whose line in the system's list contains this text; of this process unless another
// is given.
std::size_t mappings(const std::string &text = {}, int process = 0);

// Wait for this number; false after a timeout.
bool openDescriptorsBecome(std::size_t number);
bool threadsBecome(std::size_t number);

// The threads of this process, except `others`.
std::set<int> threadIds(const std::set<int> &others = {});

// The total run time of these threads so far, in nanoseconds.
long long runTimeOf(const std::set<int> &threads);

// Waits until these threads have not run for a second and a half; false after a timeout.
bool comeToRest(const std::set<int> &threads);

} // namespace test
