// An installation in a folder of its own, moved after it was made.
#pragma once

#include "tests/support/process.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <string>
#include <vector>

namespace test {

// The files and links below a folder, sorted, by their names from there.
std::vector<std::string> filesBelow(const std::string &folder);

class Installed {
public:
    // Throws std::runtime_error when it cannot be installed.
    Installed();

    // A path below the prefix, as it is after the move.
    std::string at(const std::string &name) const { return folder.file("moved/" + name); }
    // One beside it.
    std::string beside(const std::string &name) const { return folder.file(name); }
    std::string manual() const { return at("share/doc/screen-mirror"); }
    std::string examples() const { return manual() + "/examples"; }

private:
    Folder folder;
};

} // namespace test
