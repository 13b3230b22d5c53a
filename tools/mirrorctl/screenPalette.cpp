#include "tools/mirrorctl/screenPalette.h"

#include "mirror/mirrorInterface.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/litDisplay.h"
#include "tools/mirrorctl/server.h"
#include "tools/mirrorctl/steps.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <rapidjson/document.h>
#include <stdexcept>

namespace mirrorctl {

static unsigned channel(const rapidjson::Value &colour, const char *name) {
    const auto found = colour.FindMember(name);
    if (found == colour.MemberEnd() || !found->value.IsUint() || found->value.GetUint() > 255)
        throw std::runtime_error("the library's palette is not understood");
    return found->value.GetUint();
}

ScreenPalette fetchPalette() {
    char buffer[512 + 1] = {}; // the last byte stays zero
    if (getPalette(buffer) != 0)
        throw std::runtime_error("the library could not make a palette");
    ScreenPalette palette;
    palette.text = buffer;
    rapidjson::Document tree;
    tree.Parse(buffer);
    if (tree.HasParseError() || !tree.IsObject() || !tree.HasMember("palette") ||
        !tree["palette"].IsArray())
        throw std::runtime_error("the library's palette is not understood");
    for (const auto &colour : tree["palette"].GetArray()) {
        if (!colour.IsObject())
            throw std::runtime_error("the library's palette is not understood");
        palette.colours.push_back(
            {channel(colour, "R"), channel(colour, "G"), channel(colour, "B")});
    }
    return palette;
}

bool isDark(const ScreenPalette &palette) {
    return palette.colours.size() <= 1 &&
           std::all_of(palette.colours.begin(), palette.colours.end(), isBlack);
}

ExitStatus awaitPalette(std::uint32_t display, const StopSignals &signals, ScreenPalette &palette) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    bool isCycling = false;
    for (;;) {
        // Answered once a cycle, sent or not; the run has filled its sample grid before the first
        // one, and no palette can be had before that.
        if (captureCurrentStreamFrames() == 0) {
            isCycling = true;
            palette = fetchPalette();
            if (!isDark(palette))
                return ExitStatus::done;
        }
        if (const int signum = signals.take()) {
            sayInterrupted(noPalette, signum);
            return ExitStatus::nothingSent;
        }
        const std::chrono::duration<double> passed = Clock::now() - begin;
        if (passed.count() < darknessSeconds)
            continue;
        // A server that hangs has shown no frame either.
        if (tellServerSilence())
            return ExitStatus::nothingSent;
        if (isCycling && passed.count() < lateFrameSeconds && isLit(display))
            continue;
        if (isCycling)
            return ExitStatus::done;
        fputs("No palette: mirroring ended by itself, or is stuck.\n", stderr);
        return ExitStatus::nothingSent;
    }
}

} // namespace mirrorctl
