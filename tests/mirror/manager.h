// The manager as a test meets it: fresh settings over the stand-in platform.
#pragma once

#include "mirror/screenMirrorMac.h"
#include "tests/fakes/fakePlatform.h"

#include <gtest/gtest.h>
#include <string>

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

// Every test starts without devices, buffer and run, and with a display 1 of 64 x 48.
class ManagerTest : public testing::Test {
protected:
    ManagerTest() {
        clear();
        fake::reset(64, 48);
    }
    ~ManagerTest() override { clear(); }

    static int configure(std::string json) { return mirrorManager.setMirrorConfig(json.data()); }

    // A document with `devices` as the text of its device array.
    static std::string document(const std::string &devices, int mode = 0, int display = 1) {
        return "{\"displayID\":" + std::to_string(display) + ",\"mode\":" + std::to_string(mode) +
               ",\"devices\":" + devices + "}";
    }

    static std::string device(const std::string &ip, int controlVersion,
                              const std::string &panels) {
        return "{\"ip\":\"" + ip + "\",\"controlVersion\":" + std::to_string(controlVersion) +
               ",\"shapeType\":0,\"scaleFactor\":0.1,\"panels\":" + panels + "}";
    }

    static std::string panel(int id, int x, int y) {
        return "{\"panelID\":" + std::to_string(id) + ",\"centroidX\":" + std::to_string(x) +
               ",\"centroidY\":" + std::to_string(y) + "}";
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
