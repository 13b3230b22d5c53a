#include "tools/config/textFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace config {

static std::optional<std::string> readStream(std::FILE *stream, std::string &reason) {
    std::string text;
    char part[16384];
    while (std::size_t size = std::fread(part, 1, sizeof part, stream)) {
        if (text.size() + size > largestText) {
            reason = "larger than " + std::to_string(largestText >> 20) + " MiB";
            return std::nullopt;
        }
        text.append(part, size);
    }
    if (std::ferror(stream)) {
        reason = std::strerror(errno);
        return std::nullopt;
    }
    return text;
}

std::optional<std::string> readTextFile(const std::string &path, std::string &reason) {
    if (path == "-")
        return readStream(stdin, reason);
    const auto close = [](std::FILE *file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"), close);
    if (!file) {
        reason = std::strerror(errno);
        return std::nullopt;
    }
    return readStream(file.get(), reason);
}

} // namespace config
