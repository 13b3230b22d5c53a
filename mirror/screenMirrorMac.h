// The manager that runs mirroring and owns the display, the devices and the frames.
//
// Hosts use mirrorInterface.h. This header is for the library's own sources and tests.
#pragma once

#include "colour/colour.h"
#include "colour/conversion.h"
#include "colour/frame.h"
#include "device/device.h"
#include "device/screenGrid.h"
#include "mirror/guardedBy.h"
#include "net/udpSocket.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <cstdint>
#include <mutex>
#include <rapidjson/stringbuffer.h>
#include <string>
#include <thread>
#include <vector>

// Three kinds of thread meet here: the host's (every exported function), the mirroring thread (one
// per run: runMirror and the modes) and the display stream's queue (the frame handler). A handled
// signal runs signalHandler on whichever thread receives it.
//
// Only initScreen, grabScreen, getAnimDataFromFrame, getPaletteFromScreen and the modes may throw;
// their callers catch.
class MirrorManager {
public:
    // Tuning of the modes; no configuration changes it. Transition times are in the devices' unit,
    // the palette mode's also count as hold times in its ticks, delays are in milliseconds.
    std::int32_t matchTransitionTime = 1;
    std::int32_t meltTransitionTimeMin = 2;
    std::int32_t meltTransitionTimeRange = 9;
    std::int32_t fadeTransitionTime = 5;
    std::int32_t paletteTransitionTimeMin = 10;
    std::int32_t paletteTransitionTimeRange = 5;
    std::int32_t matchFrameDelay = 42;
    std::int32_t meltFrameDelay = 99;
    std::int32_t fadeFrameDelay = 149;
    std::int32_t paletteFrameDelay = 99;
    std::int32_t paletteSize = 8;
    double minimumFrameTime = 0.03; // seconds between frames of the display stream

    // Pixel indices of the screen-wide grid; rebuilt when a mode begins.
    std::int32_t samplePixels[screenSampleCount] = {};

    std::thread mirrorThread; // joinable exactly while a run exists
    std::mutex mutex;         // guards palette, between getPalette and the palette mode

    // The mirrored display.
    unsigned long screenWidth = 0; // pixels
    unsigned long screenHeight = 0;
    unsigned long bytesPerPixel = 0;

    // Temporaries of initScreen, grabScreen and getDisplays; not valid afterwards.
    CGImageRef image = nullptr;
    CGDataProviderRef dataProvider = nullptr;
    CFDataRef imageData = nullptr;

    CGDirectDisplayID displayID = 0;
    CGDisplayStreamRef displayStream = nullptr; // one per configuration, never released
    std::int32_t mode = 0;                      // 0 match, 1 melt, 2 fade, 3 palette

    // The latest frame: rows packed, four bytes per pixel in the order blue, green, red, alpha.
    // Owned, from new[]. Written on the stream's queue and read by the modes without a lock.
    unsigned char *frameBuffer = nullptr;

    std::uint32_t displayCount = 0;

    // Plain flags: written by one thread and polled by another, without a lock.
    bool running = false;
    bool captureRequested = false;

    std::vector<Device> devices;
    std::vector<std::string> streamFrames; // captured lines, one per device sent to, in order
    rapidjson::StringBuffer streamFrameJson;
    std::int32_t streamFrameJsonSize = 0; // of the last successful getSizeOfStreamFrameJson()
    std::vector<RGB> palette MIRROR_GUARDED_BY(mutex);

    // The one manager, for static functions; set while the library is loaded.
    static MirrorManager *instance;

    MirrorManager();
    // Stops a running mirror. Leaves frameBuffer alone: the run or deInitScreen() frees it.
    ~MirrorManager();
    MirrorManager(const MirrorManager &) = delete;
    MirrorManager &operator=(const MirrorManager &) = delete;

    // The exported functions; mirrorInterface.h documents them. Host thread.
    int getDisplays(char *buffer, int bufferLength);
    int getSizeOfStreamFrameJson();
    int getStreamFrameJson(char *buffer);
    int captureCurrentStreamFrames();
    int getPalette(char *buffer);
    int setMirrorConfig(char *json);
    int startMirror();
    int stopMirror();

    // Run loop. Mirroring thread.
    static void static_runMirror();
    void runMirror();
    void initStreamControlSocket(std::string ip, int controlVersion, UdpSocket *sockets, int index);

    // Signals. Any thread. Ends the run and exits the process with the signal's number.
    static void static_signalHandler(int signum);
    void signalHandler(int signum);

    // Screen capture. Host thread, except for deInitScreen().
    // Measures the display and allocates a black frameBuffer; returns it. An earlier buffer is not
    // freed. Throws std::bad_alloc.
    void *initScreen();
    // Frees frameBuffer, unless a FrameLease is held too long. The run calls it when it ends.
    void deInitScreen();
    // Creates displayStream. 1, 0 when the system provides none, -1 on an exception.
    int initDisplayStream();
    // Copies the screen into frameBuffer once, without the stream. The buffer must exist.
    void grabScreen();

    // The frame as the colour functions read it; black when there is no buffer. Mirroring thread;
    // other threads must hold a FrameLease (mirror/frameLease.h) while they read.
    Frame currentFrame() const;

    // Rebuilds samplePixels for the current screen size.
    void setScreenSamplePixels();

    // Appends the text form of a datagram to streamFrames. `frame` must hold `numPanels` records
    // in the layout of `controlVersion`. Mirroring thread.
    void getAnimDataFromFrame(unsigned char *frame, int numPanels, int controlVersion);

    // Colours of the current frame.
    RGB grabPixel(int index);
    RGB averagePixels(int *indices, int count);
    // The weight of a sample, 1 to 20.
    int computeHSLBias(HSL hsl);
    // Mirroring thread. Black when an exception was caught.
    RGB getDominantScreenColour();
    // At most `size` colours, most frequent hue first. Throws std::length_error for a negative
    // size. Takes no lock.
    std::vector<RGB> getPaletteFromScreen(int size);

    // Modes. Mirroring thread. `sockets` holds `deviceCount` sockets; each sends to the device with
    // the same index. The modes return once they find `running` false.
    void mirrorModeMatch(int deviceCount, UdpSocket *sockets);
    void mirrorModeMelt(int deviceCount, UdpSocket *sockets);
    void mirrorModeFade(int deviceCount, UdpSocket *sockets);
    void mirrorModePalette(int deviceCount, UdpSocket *sockets);
};

extern MirrorManager mirrorManager;
