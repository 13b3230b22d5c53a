#include "platform/objects/pixelFile.h"

#include "platform/objects/signals.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace platform {

namespace {

// Growing a file beyond the process's limit raises a signal.
bool mayBeFile(std::size_t bytes) {
    rlimit limit{};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 && bytes <= limit.rlim_cur;
}

// Allocating a large file takes a while, and a signal meanwhile would undo all of it.
bool fill(int file, std::size_t bytes) {
    const QuietSignals quiet;
    return posix_fallocate(file, 0, static_cast<off_t>(bytes)) == 0;
}

} // namespace

Descriptor makePixelFile(std::size_t bytes) {
    if (!mayBeFile(bytes))
        return Descriptor();
    Descriptor file(memfd_create("screen pixels", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file.valid() || fchmod(file.get(), S_IRUSR | S_IWUSR) != 0 || !fill(file.get(), bytes) ||
        fcntl(file.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        return Descriptor();
    return file;
}

} // namespace platform
