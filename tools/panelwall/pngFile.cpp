#include "tools/panelwall/pngFile.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <png.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace panelwall {

std::string encodePng(const Canvas &canvas) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(canvas.width());
    image.height = static_cast<png_uint_32>(canvas.height());
    image.format = PNG_FORMAT_RGB;
    image.flags = PNG_IMAGE_FLAG_FAST; // a third larger but far quicker, for a live program
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string bytes(size, '\0');
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, canvas.row(0), 0, nullptr) == 0)
        return {};
    bytes.resize(size);
    bytes.shrink_to_fit();
    return bytes;
}

std::string writePng(const Canvas &canvas, const std::string &path) {
    const std::string bytes = encodePng(canvas);
    if (bytes.empty())
        return "the picture is not encoded";
    const std::string draft = path + ".part-" + std::to_string(getpid());
    std::ofstream file(draft, std::ios::binary);
    file << bytes;
    file.close();
    if (file && std::rename(draft.c_str(), path.c_str()) == 0)
        return {};
    std::string reason = std::generic_category().message(errno);
    std::remove(draft.c_str());
    return reason;
}

std::string findObstacle(const std::string &path) {
    const auto slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        return "it is a folder";
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        return "folder " + folder + ": " + std::generic_category().message(errno);
    return {};
}

} // namespace panelwall
