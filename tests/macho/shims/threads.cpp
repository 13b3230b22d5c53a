#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"
#include "tests/macho/shims/threadKeys.h"

#include <atomic>
#include <memory>
#include <pthread.h>

namespace macho {

namespace {

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
    (void)start.release(); // the thread's now
    return 0;
}

int shimSetSpecific(std::uint64_t key, const void *value) {
    return pthread_setspecific(keyHere(key), value) == 0 ? 0 : darwinEinval;
}

} // namespace

void addThreads(Imports &imports) {
    imports.add(libSystem, "_pthread_create", shimCreate);
    imports.add(libSystem, "_pthread_setspecific", shimSetSpecific);
    imports.unloadChecks.emplace_back([](const Image &) {
        if (running != 0)
            refuse("unload while a thread of the library runs");
    });
}

} // namespace macho
