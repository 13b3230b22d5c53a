// Temporary files and folders for tests.
#pragma once

#include <string>
#include <vector>

namespace test {

// The contents of a file; empty if it cannot be read.
std::string fileText(const std::string &path);

// A temporary folder, removed with its contents.
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
