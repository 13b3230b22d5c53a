// What the tests of the whole program share: a folder, a document, and a sender of datagrams.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace test {

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

// A device object with scale factor 1 and shape type 0; each panel is {id, x, y}.
std::string deviceText(const std::string &ip, int controlVersion,
                       const std::vector<std::vector<int>> &panels);

// A document with these device objects.
std::string documentText(const std::vector<std::string> &devices, int mode = 0);

// Sends one datagram from a socket of its own; throws std::runtime_error when that fails.
void sendTo(const std::string &ip, int port, const std::vector<std::uint8_t> &bytes);

} // namespace test
