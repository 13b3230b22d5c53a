#include "tests/tools/panelwall/readPng.h"

#include <png.h>

namespace test {

Picture readPng(const std::string &path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        return {};
    image.format = PNG_FORMAT_RGB;
    Picture picture;
    picture.bytes.resize(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, picture.bytes.data(), 0, nullptr))
        return {};
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    return picture;
}

} // namespace test
