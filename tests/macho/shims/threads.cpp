#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <atomic>
#include <memory>

namespace macho {

namespace {

constexpr std::uint64_t keyMark = 0x4b657900'00000000;

pthread_key_t hostKey(std::uint64_t darwin) {
    if (darwin >> 32 != keyMark >> 32)
        refuse("a thread-specific value with the unknown key " + std::to_string(darwin));
    return static_cast<pthread_key_t>(darwin);
}

using Run = void *(*)(void *);

struct Start {
    Run run;
    void *argument;
};

std::atomic<int> running{0}; // threads of the library whose function has not returned

void *runThread(void *argument) {
    const std::unique_ptr<Start> start(static_cast<Start *>(argument));
    void *result = start->run(start->argument);
    --running;
    return result;
}

int shimCreate(pthread_t *thread, const void *attributes, Run run, void *argument) {
    if (attributes != nullptr)
        refuse("pthread_create with attributes");
    auto start = std::make_unique<Start>(Start{run, argument});
    ++running;
    const int error = pthread_create(thread, nullptr, runThread, start.get());
    if (error != 0) {
        --running;
        return darwinError(error);
    }
    (void)start.release(); // now owned by the thread
    return 0;
}

int shimSetSpecific(std::uint64_t key, const void *value) {
    return pthread_setspecific(hostKey(key), value) == 0 ? 0 : darwinEinval;
}

} // namespace

std::uint64_t darwinKey(pthread_key_t key) {
    return keyMark | key;
}

void addThreads(Imports &imports) {
    imports.add(libSystem, "_pthread_create", shimCreate);
    imports.add(libSystem, "_pthread_setspecific", shimSetSpecific);
    imports.unloadChecks.emplace_back([](const Image &) {
        if (running != 0)
            refuse("unload while a thread of the library runs");
    });
}

} // namespace macho
