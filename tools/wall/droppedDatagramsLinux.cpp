#include "tools/wall/receiver.h"

#include <linux/sock_diag.h>
#include <sys/socket.h>

namespace panelwall {

std::optional<std::uint64_t> droppedDatagrams(int socket) {
    std::uint32_t values[SK_MEMINFO_VARS] = {};
    socklen_t size = sizeof values;
    if (getsockopt(socket, SOL_SOCKET, SO_MEMINFO, values, &size) != 0 ||
        size <= SK_MEMINFO_DROPS * sizeof values[0])
        return std::nullopt;
    return values[SK_MEMINFO_DROPS];
}

} // namespace panelwall
