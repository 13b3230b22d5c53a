#include "tests/support/files.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace test {

std::string fileText(const std::string &path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

Folder::Folder() : path(std::filesystem::temp_directory_path() / "test.XXXXXX") {
    if (mkdtemp(path.data()) == nullptr)
        throw std::runtime_error("no folder");
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string Folder::write(const std::string &name, const std::string &text) const {
    std::ofstream(file(name), std::ios::binary) << text;
    return file(name);
}

std::vector<std::string> Folder::list() const {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace test
