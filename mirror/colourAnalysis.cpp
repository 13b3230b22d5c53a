// The colour functions, applied to the manager's frame and sample grid.
#include "colour/dominantColour.h"
#include "colour/palette.h"
#include "mirror/firstFrame.h"
#include "mirror/frameLease.h"
#include "mirror/jsonMemory.h"
#include "mirror/screenMirrorMac.h"

#include <cstdio>
#include <cstring>

void MirrorManager::setScreenSamplePixels() {
    fillScreenGrid(screenWidth, screenHeight, samplePixels);
}

RGB MirrorManager::grabPixel(int index) {
    return currentFrame().colour(index);
}

RGB MirrorManager::averagePixels(int *indices, int count) {
    return rootMeanSquare(currentFrame(), indices, count);
}

int MirrorManager::computeHSLBias(HSL hsl) {
    return hslBias(hsl);
}

RGB MirrorManager::getDominantScreenColour() {
    try {
        return readWholeFrame(running, [this] {
            return dominantColour(currentFrame(), samplePixels, screenSampleCount);
        });
    } catch (...) {
        std::puts("Error during dominant colour calculation");
        return {};
    }
}

std::vector<RGB> MirrorManager::getPaletteFromScreen(int size) {
    return readWholeFrame(running, [this, size] {
        return paletteOf(currentFrame(), samplePixels, screenSampleCount, size);
    });
}

// Host thread.
int MirrorManager::getPalette(char *buffer) {
    constexpr std::size_t bufferSize = 512;
    try {
        streamFrameJson.Clear();
        JsonText text;
        JsonWriter writer(text);
        writer.StartObject();
        writer.Key("palette");
        writer.StartArray();
        {
            const std::lock_guard lock(mutex);
            const FrameLease lease;
            palette = getPaletteFromScreen(paletteSize);
            for (const RGB &colour : palette) {
                writer.StartObject();
                writer.Key("R");
                writer.Uint(colour.r);
                writer.Key("G");
                writer.Uint(colour.g);
                writer.Key("B");
                writer.Uint(colour.b);
                writer.EndObject();
            }
        }
        writer.EndArray();
        writer.EndObject();
        keep(text, streamFrameJson);
        std::strncpy(buffer, terminated(streamFrameJson), bufferSize);
        return 0;
    } catch (...) {
        return -1;
    }
}
