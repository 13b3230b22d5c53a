// Datagrams that reached this machine and were dropped because a socket's receive queue was full.
#pragma once

#include <cstdint>
#include <optional>

namespace panelwall {

// How many a UDP socket of this process has lost so far; nullopt if the system does not report it.
std::optional<std::uint64_t> droppedDatagrams(int socket);

} // namespace panelwall
