// A copy of the sources, in a folder whose name has spaces and umlauts.
#pragma once

#include "tests/support/process.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <string>

namespace test {

class TreeCopy {
public:
    // Throws std::runtime_error when it cannot be made.
    TreeCopy();

    // A path in the folder, in which the copy is "tree", as a word of the shell's.
    std::string at(const std::string &name) const { return '"' + path(name) + '"'; }
    std::string path(const std::string &name) const { return folder.file("Haus und Höfe/" + name); }

    // What a compiler, or a build that this one is started by, would leave in the environment.
    static constexpr const char *plain = "env -u CC -u CXX -u DESTDIR -u MAKEFLAGS ";

private:
    Folder folder;
};

} // namespace test
