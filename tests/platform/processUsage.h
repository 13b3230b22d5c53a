// What this process holds of the system's countable goods.
#pragma once

#include <cstddef>
#include <set>
#include <string>

namespace test {

std::size_t openDescriptors();
std::size_t threads();
std::size_t systemSharedSegments(); // System V ones, made by this process
// Those whose line in the system's list holds this text, of this process unless one is given.
std::size_t mappings(const std::string &text = {}, int process = 0);

// Wait until it is so; false when it was not in time.
bool openDescriptorsBecome(std::size_t number);
bool threadsBecome(std::size_t number);

// The threads of this process, but for these.
std::set<int> threadIds(const std::set<int> &others = {});

// How long these threads have run so far, in nanoseconds.
long long runTimeOf(const std::set<int> &threads);

// Waits until these threads have not run for a second and a half; false when they went on running.
bool comeToRest(const std::set<int> &threads);

} // namespace test
