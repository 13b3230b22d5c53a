// The manager under test: fresh settings on the fake platform.
#pragma once

#include "mirror/screenMirrorMac.h"
#include "tests/fakes/fakePlatform.h"

#include <future>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

// Every test starts with no devices, no buffer and no run, and with a display of 64 x 48 whose
// identifier is 1.
class ManagerTest : public testing::Test {
protected:
    ManagerTest() {
        clear();
        fake::reset(64, 48);
    }
    ~ManagerTest() override { clear(); }

    struct PanelSetup {
        int id, x, y;
    };
    struct DeviceSetup {
        std::string ip;
        int controlVersion;
        std::vector<PanelSetup> panels = {};
    };

    static std::string textOf(const PanelSetup &panel) {
        return "{\"panelID\":" + std::to_string(panel.id) +
               ",\"centroidX\":" + std::to_string(panel.x) +
               ",\"centroidY\":" + std::to_string(panel.y) + "}";
    }
    static std::string textOf(const DeviceSetup &device) {
        return "{\"ip\":\"" + device.ip +
               "\",\"controlVersion\":" + std::to_string(device.controlVersion) +
               ",\"shapeType\":0,\"scaleFactor\":0.1,\"panels\":" + textOf(device.panels) + "}";
    }
    template <class Setup> static std::string textOf(const std::vector<Setup> &setups) {
        std::string text;
        for (const Setup &setup : setups)
            text += (text.empty() ? "" : ",") + textOf(setup);
        return "[" + text + "]";
    }
    static std::string document(const std::vector<DeviceSetup> &devices, int mode = 0,
                                int display = 1) {
        return "{\"displayID\":" + std::to_string(display) + ",\"mode\":" + std::to_string(mode) +
               ",\"devices\":" + textOf(devices) + "}";
    }

    static int configure(std::string json) { return mirrorManager.setMirrorConfig(json.data()); }
    static int setDevices(const std::vector<DeviceSetup> &devices, int mode = 0, int display = 1) {
        return configure(document(devices, mode, display));
    }

    // Makes a call on a thread that stands in for the mirroring thread; returns its result.
    template <class Call> static int onMirroringThread(Call call) {
        int result = 0;
        std::promise<void> handleIsThere;
        mirrorManager.mirrorThread = std::thread([&] {
            handleIsThere.get_future().wait();
            result = call();
        });
        handleIsThere.set_value();
        mirrorManager.mirrorThread.join();
        return result;
    }

private:
    static void clear() {
        mirrorManager.stopMirror();
        mirrorManager.deInitScreen();
        mirrorManager.devices.clear();
        mirrorManager.streamFrames.clear();
        mirrorManager.palette.clear();
        mirrorManager.streamFrameJsonSize = 0;
        mirrorManager.captureRequested = false;
        mirrorManager.mode = 0;
        mirrorManager.displayID = 0;
        mirrorManager.displayStream = nullptr;
        mirrorManager.matchTransitionTime = 1;
        mirrorManager.matchFrameDelay = 42;
        mirrorManager.paletteSize = 8;
        mirrorManager.minimumFrameTime = 0.03;
        std::fill(std::begin(mirrorManager.samplePixels), std::end(mirrorManager.samplePixels), 0);
    }
};
