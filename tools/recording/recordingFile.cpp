#include "tools/recording/recordingFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace panelwall {

bool RecordingFile::open() {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        obstacle = "is no regular file";
        return false;
    }
    errno = 0;
    stream.open(path, std::ios::binary);
    if (!stream) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
        obstacle = "cannot be read: " + std::string(std::strerror(errno));
        return false;
    }
    return reader.readHead();
}

} // namespace panelwall
