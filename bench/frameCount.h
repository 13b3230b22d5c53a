// Counts the frames that the library takes: a program that links this has its IOSurfaceLock() in
// front of the platform's (a linker option), and the library locks each frame once.
#pragma once

#include <atomic>

namespace bench {

void countFrames(std::atomic<long> &frames);

} // namespace bench
