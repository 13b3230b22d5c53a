#include "tests/endToEnd/exitStatus.h"

int exitStatusOf(int signal) {
    return signal;
}
