// A copy of the sources, in a folder whose name has spaces and umlauts.
#pragma once

#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

#include <stdexcept>
#include <string>

namespace test {

class TreeCopy {
public:
    // Throws std::runtime_error when copying fails.
    TreeCopy() {
        // Without build folders and tests, to keep it small.
        const ProcessResult made =
            shell("mkdir -p " + at("tree") +
                  " && cd " SOURCE " && cp -R "
                  "CHANGELOG.md CMakeLists.txt LICENSE README.md cmake colour copyright "
                  "device docs examples mirror net platform scripts tools " +
                  at("tree"));
        if (made.status != 0)
            throw std::runtime_error(made.out);
    }

    // A path in the folder, quoted for the shell. The copy itself is at "tree".
    std::string at(const std::string &name) const { return '"' + path(name) + '"'; }
    std::string path(const std::string &name) const { return folder.file("Haus und Höfe/" + name); }

    // Removes variables that the choice of a compiler or an enclosing build leaves in the
    // environment.
    static constexpr const char *plain = "env -u CC -u CXX -u DESTDIR -u MAKEFLAGS ";

private:
    Folder folder;
};

} // namespace test
