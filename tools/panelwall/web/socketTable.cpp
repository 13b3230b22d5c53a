#include "tools/panelwall/web/socketTable.h"

#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace panelwall {

namespace {

constexpr int established = 1;
constexpr int listening = 10;

in6_addr mapFour(const void *four) {
    in6_addr six{};
    six.s6_addr[10] = 0xff;
    six.s6_addr[11] = 0xff;
    std::memcpy(&six.s6_addr[12], four, 4);
    return six;
}

bool equal(const in6_addr &a, const in6_addr &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

template <typename Number> bool readNumber(std::string_view text, Number &number, int base = 10) {
    const char *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, base);
    return result.ec == std::errc() && result.ptr == end;
}

// "0100007F:1F90": words of 32 bits in the machine's own byte order, then the port.
bool readAddress(std::string_view text, in6_addr &address, int &port) {
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || !readNumber(text.substr(colon + 1), port, 16))
        return false;
    if (colon != 8 && colon != 32)
        return false;
    std::uint32_t words[4] = {};
    for (std::size_t i = 0; i < colon / 8; ++i)
        if (!readNumber(text.substr(i * 8, 8), words[i], 16))
            return false;
    if (colon == 8)
        address = mapFour(words);
    else
        std::memcpy(&address, words, sizeof address);
    return true;
}

// The columns: number, local, remote, state, queues, timer, retransmissions, user, time-out, inode,
// then others; the last of a UDP table are the drops.
bool readRow(const std::string &line, SocketRow &row) {
    std::istringstream words(line);
    std::vector<std::string> columns;
    for (std::string word; words >> word;)
        columns.push_back(word);
    if (columns.size() < 12)
        return false;
    if (!readNumber(columns.back(), row.drops))
        row.drops = 0;
    return readAddress(columns[1], row.localAddress, row.localPort) &&
           readAddress(columns[2], row.remoteAddress, row.remotePort) &&
           readNumber(columns[3], row.state, 16) && readNumber(columns[7], row.user) &&
           readNumber(columns[9], row.inode);
}

// The process that holds a socket, if it lets us look.
std::string holderOf(std::uint64_t inode) {
    const std::string wanted = "socket:[" + std::to_string(inode) + "]";
    std::error_code error;
    for (const auto &process : std::filesystem::directory_iterator("/proc", error)) {
        int pid = 0;
        if (!readNumber(process.path().filename().string(), pid))
            continue;
        std::error_code closed;
        for (const auto &file :
             std::filesystem::directory_iterator(process.path() / "fd", closed)) {
            std::error_code gone;
            if (std::filesystem::read_symlink(file.path(), gone) != wanted)
                continue;
            std::string name;
            std::getline(std::ifstream(process.path() / "comm"), name);
            return (name.empty() ? "" : name + ", ") + "process " + std::to_string(pid);
        }
    }
    return {};
}

} // namespace

std::vector<SocketRow> readSocketTable(const std::string &text) {
    std::vector<SocketRow> rows;
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        SocketRow row;
        if (readRow(line, row))
            rows.push_back(row);
    }
    return rows;
}

std::optional<std::vector<SocketRow>> systemSockets(const std::string &name) {
    std::optional<std::vector<SocketRow>> all;
    for (const char *family : {"", "6"}) {
        std::ifstream file("/proc/net/" + name + family);
        if (!file)
            continue;
        std::ostringstream text;
        text << file.rdbuf();
        const auto rows = readSocketTable(text.str());
        if (!all)
            all.emplace();
        all->insert(all->end(), rows.begin(), rows.end());
    }
    return all;
}

std::vector<std::optional<std::uint64_t>> droppedDatagrams(const std::vector<int> &sockets) {
    std::vector<std::optional<std::uint64_t>> dropped(sockets.size());
    const auto rows = systemSockets("udp");
    if (!rows)
        return dropped;
    std::map<std::uint64_t, std::uint64_t> dropsOf;
    for (const SocketRow &row : *rows)
        dropsOf[row.inode] = row.drops;
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        struct stat status {};
        if (fstat(sockets[i], &status) != 0)
            continue;
        const auto found = dropsOf.find(status.st_ino);
        if (found != dropsOf.end())
            dropped[i] = found->second;
    }
    return dropped;
}

std::string portOwner(int port) {
    for (const SocketRow &row : systemSockets("tcp").value_or(std::vector<SocketRow>())) {
        if (row.state != listening || row.localPort != port)
            continue;
        const std::string holder = holderOf(row.inode);
        return holder.empty() ? "by a program of user " + std::to_string(row.user) : "by " + holder;
    }
    return {};
}

in6_addr sixOf(const sockaddr_storage &address) {
    in6_addr six{};
    if (address.ss_family == AF_INET6) {
        sockaddr_in6 full;
        std::memcpy(&full, &address, sizeof full);
        six = full.sin6_addr;
    } else if (address.ss_family == AF_INET) {
        sockaddr_in full;
        std::memcpy(&full, &address, sizeof full);
        six = mapFour(&full.sin_addr);
    }
    return six;
}

int portOf(const sockaddr_storage &address) {
    if (address.ss_family == AF_INET6) {
        sockaddr_in6 full;
        std::memcpy(&full, &address, sizeof full);
        return ntohs(full.sin6_port);
    }
    sockaddr_in full;
    std::memcpy(&full, &address, sizeof full);
    return ntohs(full.sin_port);
}

std::optional<std::uint32_t> connectionUser(const std::vector<SocketRow> &tcp,
                                            const sockaddr_storage &peer,
                                            const sockaddr_storage &own) {
    const in6_addr peerSix = sixOf(peer);
    const in6_addr ownSix = sixOf(own);
    for (const SocketRow &row : tcp)
        if (row.state == established && row.localPort == portOf(peer) &&
            row.remotePort == portOf(own) && equal(row.localAddress, peerSix) &&
            equal(row.remoteAddress, ownSix))
            return row.user;
    return std::nullopt;
}

} // namespace panelwall
