// A compositor that does what a test tells it to: nothing, something wrong, or its end at any step.
#pragma once

#include "tests/support/files.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace test {

// By default it has one output, HEADLESS-1, of 4 x 3 pixels, and copies them well.
struct StandInPlan {
    enum class Step { Never, Connecting, Naming, Offering, Copying };
    Step hangsUpAt = Step::Never;
    Step silentFrom = Step::Never; // it answers no more; the connection stays

    int outputVersion = 4; // a name of its own from 4 on; below, its details tell it
    bool hasName = true;
    bool hasMemory = true;
    int copyVersion = 3; // 0: none

    // The copies that it offers; none when empty.
    struct Offer {
        std::uint32_t format = 1;
        std::uint32_t width = 4;
        std::uint32_t height = 3;
        std::uint32_t stride = 16;
    };
    std::vector<Offer> offers = {{}};
    // GivesScreenAway: like sway below a window that covers the screen, it counts a request as a
    // change unless the last copy was made within its frame time.
    enum class Copies { Well, Never, Refused, WithoutRequest, OnlyAtOnce, GivesScreenAway };
    Copies copies = Copies::Well;
    std::uint32_t flags = 0;
    std::int32_t transform = 0;
    // Writes the pixels of a copy; by default their bytes are 0, 1, 2 and so on.
    std::function<void(std::uint8_t *pixels, std::size_t bytes)> paint;
};

class StandInCompositor {
public:
    // Runs on a thread of its own, and is the compositor in use.
    explicit StandInCompositor(const StandInPlan &plan);
    ~StandInCompositor();
    StandInCompositor(const StandInCompositor &) = delete;
    StandInCompositor &operator=(const StandInCompositor &) = delete;

    // Return once it is done.
    void unplug();
    void plugIn();
    void turn(std::int32_t transform, bool completely); // or without the end of the report
    void draw();                                        // ends a wait for a change

    // The number of copies made and refused so far.
    int copies() const;
    // The number of copies requested for what was offered before the last turn.
    int outdatedCopies() const;

    struct Server;

private:
    const Folder folder;
    const std::unique_ptr<Server> server;
};

} // namespace test
