// Light devices and the screen pixels that each of their panels shows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Sampled pixels per panel.
constexpr int panelSampleCount = 100;

// One light panel. A plain record, copied by value.
struct Panel {
    std::int32_t panelID = 0;   // the panel's identifier on its device
    std::int32_t centroidX = 0; // screen pixel column of the centre; may lie off the screen
    std::int32_t centroidY = 0; // screen pixel row of the centre; may lie off the screen
    std::int32_t unused = 0;
    std::int32_t samplePixels[panelSampleCount] = {}; // pixel indices: row x screen width + column
    std::int32_t numSamplePixels = 0;                 // valid entries of samplePixels
};

// One networked light device: an address and its panels. A value type that starts no thread.
class Device {
public:
    std::string ip;              // IPv4 or IPv6 address as text
    std::int32_t controlVersion; // 1: narrow datagrams, port 60221; else wide ones, port 60222
    std::int32_t shapeType;      // 0: base size 150 pixels, anything else: 100
    std::int32_t numPanels;      // the length of panels
    double scaleFactor;          // panel size relative to the base size
    std::vector<Panel> panels;   // in configuration order
    unsigned long screenWidth;   // of the mirrored display, in pixels
    unsigned long screenHeight;
    unsigned long bytesPerPixel; // of the display image; the geometry does not use it

    // Stores each argument in the field of the same name.
    Device(std::string ip, int controlVersion, int shapeType, double scaleFactor,
           std::vector<Panel> panels, int numPanels, unsigned long screenWidth,
           unsigned long screenHeight, unsigned long bytesPerPixel);

    // Fills samplePixels of every panel, in panel order.
    void calculateSamplePixels();

    // Writes exactly `maxSamples` pixel indices into `out`: a grid over a square around (x, y),
    // column by column, then copies of the centre. Defined for every x, y and scale factor;
    // arithmetic wraps at 32 bits. Returns how many of the entries are grid points.
    int sparseRectSample(int x, int y, double scaleFactor, int *out, int maxSamples);

    // y x screenWidth + x, wrapping at 32 bits.
    int coordinatesToPixelIndex(int x, int y);

    // value + delta limited to 0 ... limit - 1. With a limit of 0, a negative sum gives 0 and any
    // other sum -1. The sum wraps at 32 bits.
    int limitToBounds(int value, int delta, int limit);
};
