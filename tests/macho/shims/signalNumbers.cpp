#include "tests/macho/shims/signalNumbers.h"
#include "tests/macho/shims/refuse.h"

namespace macho {

namespace {

struct Number {
    int host;
    int darwin; // Apple's sys/signal.h
};

constexpr Number numbers[] = {
    {SIGHUP, 1},     {SIGINT, 2},   {SIGQUIT, 3},   {SIGILL, 4},   {SIGTRAP, 5},  {SIGABRT, 6},
    {SIGFPE, 8},     {SIGKILL, 9},  {SIGBUS, 10},   {SIGSEGV, 11}, {SIGSYS, 12},  {SIGPIPE, 13},
    {SIGALRM, 14},   {SIGTERM, 15}, {SIGURG, 16},   {SIGSTOP, 17}, {SIGTSTP, 18}, {SIGCONT, 19},
    {SIGCHLD, 20},   {SIGTTIN, 21}, {SIGTTOU, 22},  {SIGIO, 23},   {SIGXCPU, 24}, {SIGXFSZ, 25},
    {SIGVTALRM, 26}, {SIGPROF, 27}, {SIGWINCH, 28}, {SIGUSR1, 30}, {SIGUSR2, 31},
};

} // namespace

int darwinSignal(int signal) {
    for (const Number &number : numbers)
        if (number.host == signal)
            return number.darwin;
    return 0;
}

int hostSignal(int darwinNumber) {
    for (const Number &number : numbers)
        if (number.darwin == darwinNumber)
            return number.host;
    refuse("the signal " + std::to_string(darwinNumber));
}

std::uint32_t darwinSignalSet(const sigset_t &set) {
    if (sigismember(&set, SIGRTMAX) == 1) // only sigfillset() adds this system's last signal
        return ~std::uint32_t{0};
    std::uint32_t darwin = 0;
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        if (sigismember(&set, signal) != 1)
            continue;
        const int number = darwinSignal(signal);
        if (number == 0)
            refuse("a set with the signal " + std::to_string(signal) + " of this system");
        darwin |= std::uint32_t{1} << (number - 1);
    }
    return darwin;
}

sigset_t hostSignalSet(std::uint32_t darwinSet) {
    sigset_t set;
    if (darwinSet == ~std::uint32_t{0}) {
        sigfillset(&set);
        return set;
    }
    sigemptyset(&set);
    for (int number = 1; number <= 32; ++number)
        if ((darwinSet >> (number - 1) & 1) != 0)
            sigaddset(&set, hostSignal(number));
    return set;
}

} // namespace macho
