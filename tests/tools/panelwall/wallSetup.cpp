#include "tests/tools/panelwall/wallSetup.h"

#include <algorithm>
#include <arpa/inet.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace test {

Folder::Folder() : path(testing::TempDir() + "panelwallXXXXXX") {
    if (mkdtemp(path.data()) == nullptr)
        throw std::runtime_error("no folder");
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string Folder::write(const std::string &name, const std::string &text) const {
    std::ofstream(file(name)) << text;
    return file(name);
}

std::vector<std::string> Folder::list() const {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::string deviceText(const std::string &ip, int controlVersion,
                       const std::vector<std::vector<int>> &panels) {
    std::string list;
    for (const auto &panel : panels)
        list += std::string(list.empty() ? "" : ",") + "{\"panelID\":" + std::to_string(panel[0]) +
                ",\"centroidX\":" + std::to_string(panel[1]) +
                ",\"centroidY\":" + std::to_string(panel[2]) + "}";
    return "{\"ip\":\"" + ip + "\",\"controlVersion\":" + std::to_string(controlVersion) +
           ",\"shapeType\":0,\"scaleFactor\":1,\"panels\":[" + list + "]}";
}

std::string documentText(const std::vector<std::string> &devices, int mode) {
    std::string list;
    for (const std::string &device : devices)
        list += (list.empty() ? "" : ",") + device;
    return "{\"displayID\":1,\"mode\":" + std::to_string(mode) + ",\"devices\":[" + list + "]}";
}

void sendTo(const std::string &ip, int port, const std::vector<std::uint8_t> &bytes) {
    sockaddr_in four{};
    four.sin_family = AF_INET;
    four.sin_port = htons(static_cast<in_port_t>(port));
    sockaddr_in6 six{};
    six.sin6_family = AF_INET6;
    six.sin6_port = htons(static_cast<in_port_t>(port));
    const bool isSix = ip.find(':') != std::string::npos;
    inet_pton(AF_INET, ip.c_str(), &four.sin_addr);
    inet_pton(AF_INET6, ip.c_str(), &six.sin6_addr);
    const int fd = socket(isSix ? AF_INET6 : AF_INET, SOCK_DGRAM, 0);
    const ssize_t sent = isSix ? sendto(fd, bytes.data(), bytes.size(), 0,
                                        reinterpret_cast<sockaddr *>(&six), sizeof six)
                               : sendto(fd, bytes.data(), bytes.size(), 0,
                                        reinterpret_cast<sockaddr *>(&four), sizeof four);
    close(fd);
    if (sent != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("not sent to " + ip);
}

} // namespace test
