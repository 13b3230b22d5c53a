#include "tests/endToEnd/exitStatus.h"
#include "tests/macho/shims/signalNumbers.h"

int exitStatusOf(int signal) {
    return macho::darwinSignal(signal);
}
