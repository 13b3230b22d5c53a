// The variables of an image that every thread has for itself.
#pragma once

#include "tests/macho/loader/imageFile.h"
#include "tests/macho/loader/mapping.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <vector>

namespace macho {

// Makes the image's descriptors lead to the calling thread's copy. The mapping must outlive it.
class ThreadLocals {
public:
    ThreadLocals(const ImageFile &file, const Mapping &mapping);
    ~ThreadLocals();
    ThreadLocals(const ThreadLocals &) = delete;
    ThreadLocals &operator=(const ThreadLocals &) = delete;

    // The calling thread's copy, made at the first call. Any thread.
    std::uint8_t *block();

    // What an image has in its descriptors before it is loaded; never called.
    static void bootstrap();

private:
    Bytes initial;             // what a new copy begins with; the rest is zeros
    std::size_t blockSize = 0; // 0 when the image has no such variables
    pthread_key_t key = 0;
    std::mutex mutex;                                    // guards blocks
    std::vector<std::unique_ptr<std::uint8_t[]>> blocks; // of all threads
};

} // namespace macho
