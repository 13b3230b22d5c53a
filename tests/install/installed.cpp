#include "tests/install/installed.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace test {

std::vector<std::string> filesBelow(const std::string &folder) {
    std::vector<std::string> files;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder))
        if (!entry.is_directory())
            files.push_back(std::filesystem::relative(entry.path().parent_path(), folder) /
                            entry.path().filename());
    std::sort(files.begin(), files.end());
    return files;
}

Installed::Installed() {
    const Ending result = shell(CMAKE " --install " BUILD " --prefix " + folder.file("first") +
                                " && mv " + folder.file("first") + " " + folder.file("moved"));
    if (result.status != 0)
        throw std::runtime_error(result.out);
}

} // namespace test
