// Datagrams that reached this machine and found a socket's receive queue full.
#pragma once

#include <cstdint>
#include <optional>

namespace panelwall {

// How many a UDP socket of this process has lost so far; nothing when the system does not tell.
std::optional<std::uint64_t> droppedDatagrams(int socket);

} // namespace panelwall
