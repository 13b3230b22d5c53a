// Files of tests.
#pragma once

#include <string>
#include <vector>

namespace test {

// What a file holds; nothing when it cannot be read.
std::string fileText(const std::string &path);

// A folder of its own, removed with all that is in it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    std::string file(const std::string &name) const { return path + "/" + name; }

    // Writes a file and returns its path.
    std::string write(const std::string &name, const std::string &text) const;

    // The names of the files in it, sorted.
    std::vector<std::string> list() const;

private:
    std::string path;
};

} // namespace test
