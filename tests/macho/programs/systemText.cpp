#include "tests/tools/systemText.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/signalNumbers.h"

#include <cstring>

namespace test {

std::string signalText(int signal) {
    return std::string(strsignal(signal)) + ": " + std::to_string(macho::darwinSignal(signal));
}

std::string errorText(int error) {
    return macho::darwinCategory().message(macho::darwinError(error));
}

std::string loopbackAliasText(const std::string &ip) {
    return "sudo ifconfig lo0 alias " + ip;
}

} // namespace test
