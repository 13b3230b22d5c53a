// The kernel's tables of sockets, where it has such tables as files: Linux does; elsewhere nothing
// is found and nothing claimed.
//
// Functions without state, callable from any thread.
#pragma once

#include <cstdint>
#include <map>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace panelwall {

// One socket, seen from its own end. IPv4 addresses are written as IPv6 ones (::ffff:127.0.0.1).
struct SocketRow {
    in6_addr localAddress{};
    int localPort = 0;
    in6_addr remoteAddress{};
    int remotePort = 0;
    int state = 0;
    std::uint32_t user = 0;
    std::uint64_t inode = 0;
    std::uint64_t drops = 0; // datagrams that found the receive queue full; UDP tables only
};

// The rows of one table as the kernel prints it. Lines that do not read are left out.
std::vector<SocketRow> readSocketTable(const std::string &text);

// The rows of /proc/net/NAME and NAME6; nothing when there is neither.
std::optional<std::vector<SocketRow>> systemSockets(const std::string &name);

// For each socket of this process, in order, how many datagrams its full queue has cost so far;
// nothing when that cannot be known.
std::vector<std::optional<std::uint64_t>> droppedDatagrams(const std::vector<int> &sockets);

// Who listens on this TCP port, in words ("by chromium, process 4711"), or empty when that cannot
// be found out.
std::string portOwner(int port);

// The user at the other end of a TCP connection on this machine. Nothing when no open end of it is
// in the tables.
std::optional<std::uint32_t> connectionUser(const std::vector<SocketRow> &tcp,
                                            const sockaddr_storage &peer,
                                            const sockaddr_storage &own);

// The IPv6 form and the port of an address of either family.
in6_addr sixOf(const sockaddr_storage &address);
int portOf(const sockaddr_storage &address);

} // namespace panelwall
