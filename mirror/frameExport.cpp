// Captures a sent frame and returns it as JSON.
#include "mirror/jsonMemory.h"
#include "mirror/panelFrame.h"
#include "mirror/screenMirrorMac.h"
#include "mirror/sharedFlag.h"

#include <chrono>
#include <cstdio>
#include <cstring>

void MirrorManager::getAnimDataFromFrame(unsigned char *frame, int numPanels, int controlVersion) {
    streamFrames.push_back(animDataLine(frame, numPanels, numPanels, controlVersion));
}

// Host thread.
int MirrorManager::captureCurrentStreamFrames() {
    constexpr int looks = 100;
    streamFrames.clear();
    writeFlag(captureRequested, true);
    for (int look = 0; look < looks; ++look) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (!readFlag(captureRequested))
            return 0;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    writeFlag(captureRequested, false);
    return -1;
}

// Host thread.
int MirrorManager::getSizeOfStreamFrameJson() {
    try {
        streamFrameJson.Clear();
        if (streamFrames.empty())
            return 0;
        JsonText text;
        JsonWriter writer(text);
        writer.StartObject();
        writer.Key("numDevices");
        writer.Uint(static_cast<unsigned>(devices.size()));
        writer.Key("devices");
        writer.StartArray();
        for (std::size_t i = 0; i < devices.size(); ++i) {
            writer.StartObject();
            writer.Key("ip");
            writer.String(devices[i].ip.c_str());
            writer.Key("animData");
            // A frame may have been captured for fewer devices than there are.
            writer.String(i < streamFrames.size() ? streamFrames[i].c_str() : "");
            writer.EndObject();
        }
        writer.EndArray();
        writer.EndObject();
        keep(text, streamFrameJson);
        streamFrameJsonSize = static_cast<std::int32_t>(streamFrameJson.GetSize());
        return streamFrameJsonSize;
    } catch (...) {
        std::printf("Error writing stream frame(s) to json");
        return -1;
    }
}

// Host thread.
int MirrorManager::getStreamFrameJson(char *buffer) {
    try {
        std::strncpy(buffer, terminated(streamFrameJson),
                     static_cast<std::size_t>(streamFrameJsonSize));
        return 0;
    } catch (...) {
        std::printf("Error copying stream frames");
        return -1;
    }
}
