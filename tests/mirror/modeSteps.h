// Runs a mode step by step on the test's thread: instead of each sleep, the test checks the
// datagrams, changes the screen and lets the mode continue.
#pragma once

#include "mirror/sharedFlag.h"
#include "tests/colour/dominantScreen.h"
#include "tests/colour/reference.h"
#include "tests/mirror/manager.h"
#include "tests/mirror/scriptedSystem.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/panelRecords.h"

#include <memory>

using Mode = void (MirrorManager::*)(int, UdpSocket *);

// The screen is one of test::Pixels. Devices are made by lights() or place().
class ModeSteps : public ManagerTest {
protected:
    ModeSteps() { fake::reset(test::screenSide, test::screenSide); }
    ~ModeSteps() override {
        mirrorManager.meltTransitionTimeMin = 2;
        mirrorManager.meltTransitionTimeRange = 9;
        mirrorManager.fadeTransitionTime = 5;
        mirrorManager.paletteTransitionTimeMin = 10;
        mirrorManager.paletteTransitionTimeRange = 5;
        mirrorManager.meltFrameDelay = 99;
        mirrorManager.fadeFrameDelay = 149;
        mirrorManager.paletteFrameDelay = 99;
    }

    struct Light {
        int controlVersion;
        std::vector<int> panelIDs;
    };

    // Configures these devices, each with a receiver and a socket that sends to it. All panels are
    // in the middle of the screen.
    void lights(const std::vector<Light> &wanted) {
        std::vector<DeviceSetup> setups;
        for (const Light &light : wanted) {
            setups.push_back({"127.0.57.1", light.controlVersion});
            for (const int id : light.panelIDs)
                setups.back().panels.push_back({id, 50, 50});
        }
        place(setups);
        all = wanted;
    }

    // The same with panels anywhere.
    void place(const std::vector<DeviceSetup> &setups) {
        ASSERT_EQ(setDevices(setups), 1);
        sockets = std::make_unique<UdpSocket[]>(setups.size());
        receivers.clear();
        for (std::size_t d = 0; d < setups.size(); ++d) {
            receivers.push_back(std::make_unique<test::LightReceiver>("127.0.57.1", 0));
            sockets[d].setRemote("127.0.57.1", receivers[d]->port());
        }
    }

    void show(const test::Pixels &screen) {
        fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &screen);
    }

    int count() const { return static_cast<int>(receivers.size()); }

    // Runs the mode; `atSleep(n)` replaces its n-th sleep, counted from 0, and ends the run by
    // returning false.
    template <class AtSleep> void run(Mode mode, AtSleep atSleep) {
        int sleep = 0;
        system.atSleep = [&] {
            if (!atSleep(sleep++))
                writeFlag(mirrorManager.running, false);
        };
        mirrorManager.running = true;
        (mirrorManager.*mode)(count(), sockets.get());
        system.atSleep = nullptr;
    }

    // The datagrams that light `d` has received since the last call.
    std::vector<test::Datagram> arrived(int d) {
        std::vector<test::Datagram> datagrams;
        while (const auto datagram =
                   receivers[static_cast<std::size_t>(d)]->next(std::chrono::milliseconds(0)))
            datagrams.push_back(*datagram);
        return datagrams;
    }

    // Whether another thread can lock the manager's mutex.
    static bool mutexIsFree() {
        bool free = false;
        std::thread([&] {
            free = mirrorManager.mutex.try_lock();
            if (free)
                mirrorManager.mutex.unlock();
        }).join();
        return free;
    }

    std::vector<Light> all;
    std::unique_ptr<UdpSocket[]> sockets;
    std::vector<std::unique_ptr<test::LightReceiver>> receivers;
    test::ScriptedSystem system;
};
