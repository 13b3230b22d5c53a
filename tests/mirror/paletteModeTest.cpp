#include "tests/mirror/modeSteps.h"

#include <deque>
#include <future>
#include <poll.h>
#include <stdexcept>

using test::Datagram;
using test::Pixels;
using test::Record;

namespace {

// A screen of six plain stripes of different sizes and hues.
Pixels stripes(std::uint32_t shift = 0) {
    const std::uint32_t colours[] = {0xff0000, 0x00c000, 0x2020ff, 0xffff00, 0x00ffff, 0xff40a0};
    Pixels screen;
    for (int row = 0; row < test::screenSide; ++row)
        for (int column = 0; column < test::screenSide; ++column) {
            int stripe = 0;
            while (stripe < 5 && column >= 10 + (stripe + 1) * (stripe + 6))
                ++stripe;
            screen.push_back(colours[(static_cast<std::uint32_t>(stripe) + shift) % 6]);
        }
    return screen;
}

class PaletteMode : public ModeSteps {
protected:
    // A plain model of the mode, tick by tick. It takes its random numbers from those that the mode
    // has drawn, and must use up exactly these.
    class Model {
    public:
        explicit Model(const std::vector<Light> &lights_) : lights(lights_) {
            for (const Light &light : lights)
                counters.emplace_back(light.panelIDs.size(), 0);
        }

        // The records for each device in one tick; none for a device without changing panels.
        std::vector<std::vector<Record>> tick(const std::vector<RGB> &colours,
                                              std::deque<int> &draws) {
            const auto draw = [&] {
                EXPECT_FALSE(draws.empty());
                const int drawn = draws.empty() ? 0 : draws.front();
                if (!draws.empty())
                    draws.pop_front();
                return drawn;
            };
            std::vector<std::vector<Record>> all_;
            for (std::size_t d = 0; d < lights.size(); ++d) {
                std::vector<std::size_t> flagged;
                for (std::size_t p = 0; p < counters[d].size(); ++p) {
                    const int before = counters[d][p];
                    counters[d][p] = before - 1;
                    if (before >= 2)
                        continue;
                    flagged.push_back(p);
                    counters[d][p] = draw() % mirrorManager.paletteTransitionTimeRange +
                                     mirrorManager.paletteTransitionTimeMin;
                }
                all_.emplace_back();
                const int mask = lights[d].controlVersion == 1 ? 0xff : 0xffff;
                for (const std::size_t p : flagged) {
                    const RGB colour = colours[static_cast<std::size_t>(draw()) % colours.size()];
                    all_[d].push_back({lights[d].panelIDs[p] & mask, reference::packed(colour), 0,
                                       counters[d][p] & mask});
                }
            }
            return all_;
        }

    private:
        std::vector<Light> lights;
        std::vector<std::vector<int>> counters;
    };

    // The draws since the last call.
    std::deque<int> newDraws() {
        std::deque<int> fresh(system.draws.begin() + static_cast<long>(drawsSeen),
                              system.draws.end());
        drawsSeen = system.draws.size();
        return fresh;
    }

    // The only datagram that light `d` has received, or nothing; more than one is a failure.
    std::optional<Datagram> only(int d) {
        const std::vector<Datagram> datagrams = arrived(d);
        EXPECT_LE(datagrams.size(), 1u);
        return datagrams.empty() ? std::nullopt : std::optional(datagrams[0]);
    }

    // Compares this tick with the model; returns the number of devices that received a datagram.
    int expectTick(Model &model, const Pixels &screen) {
        const std::vector<RGB> colours =
            reference::paletteOf(test::samplesOf(screen), mirrorManager.paletteSize);
        std::deque<int> draws = newDraws();
        const auto wanted = model.tick(colours, draws);
        EXPECT_TRUE(draws.empty()) << draws.size() << " draws too many";
        int sent = 0;
        for (int d = 0; d < count(); ++d) {
            const std::optional<Datagram> got = only(d);
            const std::vector<Record> &records = wanted[static_cast<std::size_t>(d)];
            EXPECT_EQ(got.has_value(), !records.empty());
            if (!got)
                continue;
            ++sent;
            EXPECT_EQ(*got, test::encode(all[static_cast<std::size_t>(d)].controlVersion, records));
        }
        EXPECT_EQ(mirrorManager.palette.size(), colours.size());
        for (std::size_t i = 0; i < colours.size(); ++i)
            EXPECT_EQ(reference::packed(mirrorManager.palette[i]), reference::packed(colours[i]));
        return sent;
    }

    const Mode palette = &MirrorManager::mirrorModePalette;
    std::size_t drawsSeen = 0;
};

std::vector<int> ids(int from, int count) {
    std::vector<int> all;
    for (int i = 0; i < count; ++i)
        all.push_back(from + i);
    return all;
}

TEST_F(PaletteMode, EveryByteOfManyTicks) {
    lights({{1, ids(250, 9)}, {2, ids(65530, 14)}, {1, {}}, {0, {-1}}, {2, {}}});
    Model model(all);
    show(stripes());
    Pixels screen = stripes();
    run(palette, [&](int tick) {
        expectTick(model, screen);
        if (tick % 7 == 3) { // the very next tick shows the change
            screen = stripes(static_cast<std::uint32_t>(tick));
            show(screen);
        }
        return tick < 300 && !HasFailure();
    });
    EXPECT_EQ(system.seeds.size(), 1u);
}

TEST_F(PaletteMode, OtherHoldTimes) {
    for (const auto &[least, range] :
         {std::pair(1, 1), {0, 1}, {2, 1}, {3, 2}, {-4, 9}, {0, 3}, {250, 20}}) {
        mirrorManager.paletteTransitionTimeMin = least;
        mirrorManager.paletteTransitionTimeRange = range;
        lights({{1, ids(0, 3)}, {2, ids(0, 4)}});
        Model model(all);
        show(stripes());
        newDraws();
        run(palette, [&](int tick) {
            expectTick(model, stripes());
            return tick < 40 && !HasFailure();
        });
        ASSERT_FALSE(HasFailure()) << least << " " << range;
    }
}

TEST_F(PaletteMode, TheFirstTickChangesEveryPanel) {
    lights({{1, ids(1, 3)}, {2, ids(1, 3)}});
    show(stripes());
    for (int round = 0; round < 2; ++round) { // a new run changes all panels again
        run(palette, [](int) { return false; });
        for (int d = 0; d < 2; ++d) {
            const auto datagram = only(d);
            ASSERT_TRUE(datagram);
            EXPECT_EQ(datagram->size(), d == 0 ? 1 + 7 * 3u : 2 + 8 * 3u);
            const auto records =
                test::decode(all[static_cast<std::size_t>(d)].controlVersion, *datagram);
            ASSERT_EQ(records.size(), 3u);
            for (const Record &record : records) {
                EXPECT_GE(record.transition, 10);
                EXPECT_LE(record.transition, 14);
            }
        }
    }
}

// Observed only from outside: a panel changes at the tick that its record announced.
TEST_F(PaletteMode, APanelComesBackAfterAsManyTicksAsItsRecordSaid) {
    lights({{1, ids(0, 40)}});
    show(stripes());
    std::vector<int> due(40, 0);
    int quiet = 0;
    run(palette, [&](int tick) {
        const auto datagram = only(0);
        quiet += !datagram;
        std::vector<bool> came(40, false);
        for (const Record &record : test::decode(1, datagram.value_or(Datagram{0}))) {
            const auto id = static_cast<std::size_t>(record.id);
            EXPECT_EQ(due[id], tick);
            EXPECT_GE(record.transition, 10);
            EXPECT_LE(record.transition, 14);
            due[id] = tick + record.transition;
            came[id] = true;
        }
        for (std::size_t id = 0; id < due.size(); ++id)
            EXPECT_TRUE(came[id] || due[id] > tick) << id;
        return tick < 200;
    });
    EXPECT_GE(quiet, 9); // nothing between the first tick and the eleventh
}

TEST_F(PaletteMode, TwelveTicksAreTwelveTicks) {
    lights({{1, {1}}, {2, {2}}});
    system.draw = [] { return 2; }; // a hold time of 12, and the third colour
    show(stripes());
    const auto colours = reference::paletteOf(test::samplesOf(stripes()), 8);
    ASSERT_GT(colours.size(), 2u);
    const Record first{1, reference::packed(colours[2]), 0, 12};
    Record second = first;
    second.id = 2;
    run(palette, [&](int tick) {
        const bool due = tick % 12 == 0;
        EXPECT_EQ(only(0), due ? std::optional(test::encode(1, {first})) : std::nullopt) << tick;
        EXPECT_EQ(only(1), due ? std::optional(test::encode(2, {second})) : std::nullopt) << tick;
        return tick < 100;
    });
}

// The order is: the hold times of a device's panels, their colours, then the next device.
TEST_F(PaletteMode, OrderOfTheDraws) {
    lights({{1, {1, 2}}, {2, {3}}});
    show(stripes());
    system.draw = [n = 0]() mutable { return n++; };
    const auto colours = reference::paletteOf(test::samplesOf(stripes()), 8);
    ASSERT_EQ(colours.size(), 6u);
    const auto colour = [&](std::size_t drawn) {
        return reference::packed(colours[drawn % colours.size()]);
    };
    run(palette, [](int) { return false; });
    EXPECT_EQ(only(0), test::encode(1, {{1, colour(2), 0, 10}, {2, colour(3), 0, 11}}));
    EXPECT_EQ(only(1), test::encode(2, {{3, colour(5), 0, 14}}));
    EXPECT_EQ(system.draws.size(), 6u);
}

TEST_F(PaletteMode, OneColourForAll) {
    lights({{1, ids(0, 20)}});
    show(test::plainScreen(0x0000ff));
    run(palette, [](int) { return false; });
    const std::uint32_t blue = reference::packed(reference::rgbOf({53, 100, 50}, 80));
    const auto datagram = only(0);
    ASSERT_TRUE(datagram);
    for (const Record &record : test::decode(1, *datagram))
        EXPECT_EQ(record.colour, blue);
}

TEST_F(PaletteMode, ABlackScreenIsAPaletteToo) {
    lights({{1, {7}}});
    show(test::plainScreen(0));
    run(palette, [](int) { return false; });
    const auto datagram = only(0);
    ASSERT_TRUE(datagram);
    EXPECT_EQ(test::decode(1, *datagram).at(0).colour, 0u);
}

TEST_F(PaletteMode, AFullTickIsCapturedWhole) {
    lights({{1, {3, 300}}, {2, {258}}, {2, {}}});
    show(test::plainScreen(0xff0000));
    mirrorManager.captureRequested = true;
    run(palette, [](int) { return false; });
    EXPECT_FALSE(mirrorManager.captureRequested);
    // The light without panels received nothing and has no line.
    EXPECT_EQ(
        mirrorManager.streamFrames,
        (std::vector<std::string>{"2 3 1 255 0 0 0 5 44 1 255 0 0 0 5", "1 258 1 255 0 0 0 5"}));
}

// The line starts with the device's panel count but holds only the records of this tick.
TEST_F(PaletteMode, APartialTickIsCapturedInPart) {
    lights({{1, {3, 4, 5}}, {2, {6}}, {2, {258, 259}}});
    show(test::plainScreen(0xff0000));
    // Each device's draws of the first tick, hold times before colours: 10, 14 and 11; 13; 14 and
    // 10. The colour drawn does not matter: there is only one.
    system.draw = [script = std::deque<int>{0, 4, 1, 0, 0, 0, 3, 0, 4, 0, 0, 0}]() mutable {
        const int drawn = script.empty() ? 0 : script.front();
        if (!script.empty())
            script.pop_front();
        return drawn;
    };
    run(palette, [&](int tick) {
        if (tick == 9) // before the eleventh tick, in which two panels come back
            writeFlag(mirrorManager.captureRequested, true);
        if (tick >= 10)
            EXPECT_FALSE(readFlag(mirrorManager.captureRequested));
        return tick < 12;
    });
    EXPECT_EQ(mirrorManager.streamFrames,
              (std::vector<std::string>{"3 3 1 255 0 0 0 5", "2 259 1 255 0 0 0 5"}));
}

TEST_F(PaletteMode, AQuietTickConsumesACaptureWithoutALine) {
    lights({{1, {3}}, {2, {4}}});
    show(test::plainScreen(0xff0000));
    run(palette, [&](int tick) {
        if (tick == 2)
            writeFlag(mirrorManager.captureRequested, true);
        return tick < 3;
    });
    EXPECT_FALSE(mirrorManager.captureRequested);
    EXPECT_TRUE(mirrorManager.streamFrames.empty());
}

TEST_F(PaletteMode, ACaptureWithdrawnInMidTickIsStillTaken) {
    lights({{1, {1}}, {2, {2}}});
    show(test::plainScreen(0xff0000));
    system.draw = [] {
        writeFlag(mirrorManager.captureRequested, false);
        return 0;
    };
    mirrorManager.captureRequested = true;
    run(palette, [](int) { return false; });
    EXPECT_EQ(mirrorManager.streamFrames.size(), 2u);
}

TEST_F(PaletteMode, ACaptureAskedForInMidTickTakesALaterOne) {
    lights({{1, {1}}, {2, {2}}});
    show(test::plainScreen(0xff0000));
    system.draw = [] {
        writeFlag(mirrorManager.captureRequested, true);
        return 0;
    };
    run(palette, [](int) { return false; });
    EXPECT_TRUE(mirrorManager.captureRequested);
    EXPECT_TRUE(mirrorManager.streamFrames.empty());
}

// A thread that holds the manager's mutex from construction until release().
class MutexHolder {
public:
    MutexHolder() { locked.get_future().wait(); }
    void release() {
        enough.set_value();
        thread.join();
    }

private:
    std::promise<void> locked, enough;
    std::thread thread{[this] {
        const std::lock_guard lock(mirrorManager.mutex);
        locked.set_value();
        enough.get_future().wait();
    }};
};

// While another thread holds the lock, the mode sends nothing, keeps its tick and does not spin.
TEST_F(PaletteMode, WaitsForTheMutex) {
    lights({{1, {7}}});
    show(test::plainScreen(0xff0000));
    MutexHolder holder;
    run(palette, [&](int sleep) {
        if (sleep == 3) {
            EXPECT_TRUE(arrived(0).empty());
            holder.release();
        }
        return sleep <= 3; // the next one is the tick's own
    });
    EXPECT_TRUE(only(0));
    EXPECT_EQ(system.sleeps.back(), std::chrono::milliseconds(99));
    EXPECT_EQ(system.sleeps.size(), 5u);
}

TEST_F(PaletteMode, AStopEndsTheWaitForTheMutex) {
    lights({{1, {7}}});
    show(test::plainScreen(0xff0000));
    MutexHolder holder;
    run(palette, [](int) { return false; });
    EXPECT_TRUE(arrived(0).empty());
    holder.release();
}

// Without colours the mode spins: it neither sends nor sleeps, and ends only when stopped.
TEST_F(PaletteMode, WithoutColoursItSpinsUntilStopped) {
    lights({{1, {1}}});
    show(stripes());
    mirrorManager.paletteSize = 0;
    mirrorManager.palette = {{1, 2, 3}};
    mirrorManager.captureRequested = true;
    mirrorManager.running = true;
    std::thread mode([&] { mirrorManager.mirrorModePalette(1, sockets.get()); });
    for (bool emptied = false; !emptied;) {
        poll(nullptr, 0, 1); // leaves the mutex to the mode, which needs it most of the time
        const std::lock_guard lock(mirrorManager.mutex);
        emptied = mirrorManager.palette.empty();
    }
    writeFlag(mirrorManager.running, false);
    mode.join();
    EXPECT_TRUE(arrived(0).empty());
    EXPECT_TRUE(system.sleeps.empty());
    EXPECT_TRUE(system.draws.empty());
    EXPECT_TRUE(mirrorManager.captureRequested);
}

TEST_F(PaletteMode, AWholeRunWithoutColoursStops) {
    lights({{1, {1}}});
    mirrorManager.mode = 3;
    mirrorManager.paletteSize = 0;
    ASSERT_EQ(mirrorManager.startMirror(), 1);
    EXPECT_EQ(mirrorManager.stopMirror(), 1);
}

TEST_F(PaletteMode, ANegativeSizeLeavesTheModeAndTheMutexFree) {
    lights({{1, {1}}});
    mirrorManager.paletteSize = -1;
    EXPECT_THROW(run(palette, [](int) { return false; }), std::length_error);
    EXPECT_TRUE(mutexIsFree());
}

TEST_F(PaletteMode, ANegativePanelCountLeavesTheMode) {
    lights({{1, {1}}});
    mirrorManager.devices[0].numPanels = -1;
    EXPECT_THROW(run(palette, [](int) { return false; }), std::length_error);
}

TEST_F(PaletteMode, TheMutexIsFreeBetweenTicks) {
    lights({{1, {1}}});
    run(palette, [&](int tick) {
        EXPECT_TRUE(mutexIsFree());
        return tick < 3;
    });
}

// The host asks for the palette while the mode makes its own.
TEST_F(PaletteMode, TheHostMayAskInMidRun) {
    lights({{1, ids(0, 10)}});
    show(stripes());
    mirrorManager.paletteFrameDelay = 1;
    mirrorManager.running = true;
    std::thread mode([&] { mirrorManager.mirrorModePalette(1, sockets.get()); });
    EXPECT_TRUE(receivers[0]->next()); // the grid exists now
    char first[512];
    ASSERT_EQ(mirrorManager.getPalette(first), 0);
    for (int i = 0; i < 200; ++i) {
        char text[512];
        EXPECT_EQ(mirrorManager.getPalette(text), 0);
        EXPECT_STREQ(text, first);
    }
    writeFlag(mirrorManager.running, false);
    mode.join();
}

} // namespace
