// Files for pixels that a display server writes and this process reads.
#pragma once

#include "platform/objects/descriptor.h"

#include <cstddef>

namespace platform {

// A file without a name, of `bytes` bytes that are already allocated, which no other user can open.
// Its size is sealed: a server that holds it cannot shrink it, which would turn a read of the
// pixels into a fault. Invalid when there is no memory or descriptor for it. Any thread.
Descriptor makePixelFile(std::size_t bytes);

} // namespace platform
