#include "tools/wall/loopbackAlias.h"

namespace panelwall {

std::string loopbackAliasCommand(const std::string &ip) {
    return "sudo ip address add " + ip + " dev lo";
}

} // namespace panelwall
