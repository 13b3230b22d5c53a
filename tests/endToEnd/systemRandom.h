// The system's rand() with a separate state: predicts the library's draws after it has seeded the
// process's generator with a number that the test knows.
#pragma once

#include <cstdint>
#include <cstdlib>

namespace test {

class SystemRandom {
public:
    explicit SystemRandom(unsigned seed) { initstate_r(seed, state, sizeof state, &data); }
    SystemRandom(const SystemRandom &) = delete;
    SystemRandom &operator=(const SystemRandom &) = delete;

    int draw() {
        std::int32_t drawn = 0;
        random_r(&data, &drawn);
        return drawn;
    }

private:
    char state[128] = {}; // the size that rand() itself uses
    random_data data = {};
};

} // namespace test
