#include "tests/tools/panelwall/systemText.h"

#include <cstring>

namespace test {

std::string errorText(int error) {
    return std::strerror(error);
}

std::string loopbackAliasText(const std::string &ip) {
    return "sudo ip address add " + ip + " dev lo";
}

} // namespace test
