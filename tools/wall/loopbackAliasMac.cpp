#include "tools/wall/loopbackAlias.h"

namespace panelwall {

std::string loopbackAliasCommand(const std::string &ip) {
    return "sudo ifconfig lo0 alias " + ip;
}

} // namespace panelwall
