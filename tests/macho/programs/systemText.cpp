#include "tests/tools/panelwall/systemText.h"
#include "tests/macho/shims/errors.h"

namespace test {

std::string errorText(int error) {
    return macho::darwinCategory().message(macho::darwinError(error));
}

std::string loopbackAliasText(const std::string &ip) {
    return "sudo ifconfig lo0 alias " + ip;
}

} // namespace test
