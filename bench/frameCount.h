// Counts the frames that the library takes. A linker option puts this IOSurfaceLock() in front of
// the platform's, and the library locks each frame once.
#pragma once

#include <atomic>

namespace bench {

void countFrames(std::atomic<long> &frames);

} // namespace bench
