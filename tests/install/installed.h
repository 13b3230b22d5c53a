// An installation in a temporary folder, moved after it was made.
#pragma once

#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {

// The files and links below a folder, sorted, as paths relative to it.
inline std::vector<std::string> filesBelow(const std::string &folder) {
    std::vector<std::string> files;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder))
        if (!entry.is_directory())
            files.push_back(std::filesystem::relative(entry.path().parent_path(), folder) /
                            entry.path().filename());
    std::sort(files.begin(), files.end());
    return files;
}

class Installed {
public:
    // Throws std::runtime_error when the installation fails.
    Installed() {
        const ProcessResult result =
            shell(CMAKE " --install " BUILD " --prefix " + folder.file("first") + " && mv " +
                  folder.file("first") + " " + folder.file("moved"));
        if (result.status != 0)
            throw std::runtime_error(result.out);
    }

    // A path below the prefix, as it is after the move.
    std::string at(const std::string &name) const { return folder.file("moved/" + name); }
    // A path beside the prefix.
    std::string beside(const std::string &name) const { return folder.file(name); }
    std::string manual() const { return at("share/doc/screen-mirror"); }
    std::string examples() const { return manual() + "/examples"; }

private:
    Folder folder;
};

} // namespace test
