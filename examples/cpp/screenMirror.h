// A C++ wrapper for the eight functions, with strings and exceptions. It is an example to copy and
// adapt, not part of the library's interface.
//
// Threads: like the functions themselves, use it from one thread at a time.
#pragma once

#include "mirror/mirrorInterface.h"

#include <csignal>
#include <stdexcept>
#include <string>

namespace screenMirror {

// Has an error message of one line.
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The text in a buffer. A text that fills the buffer has no terminating zero and may be cut.
inline std::string textIn(std::string buffer, const char *ifCut) {
    const auto end = buffer.find('\0');
    if (end == std::string::npos)
        throw Error(ifCut);
    buffer.resize(end);
    return buffer;
}

// The displays, as JSON.
inline std::string displays() {
    std::string buffer(4096, '\0');
    if (getDisplays(buffer.data(), static_cast<int>(buffer.size())) != 1)
        throw Error("the displays cannot be listed");
    return textIn(std::move(buffer), "the list of displays is cut");
}

// The colours on the configured screen now, as JSON.
inline std::string palette() {
    std::string buffer(512, '\0');
    if (getPalette(buffer.data()) != 0)
        throw Error("the palette could not be made");
    return textIn(std::move(buffer), "the palette is cut");
}

// Saves the process's signal handlers; the destructor restores them. startMirror() replaces them
// with the library's, which end the process and are in place when it returns.
class SignalHandlerGuard {
public:
    SignalHandlerGuard() {
        for (int i = 0; i < count; ++i)
            sigaction(replaced[i], nullptr, &saved[i]);
    }
    ~SignalHandlerGuard() {
        for (int i = 0; i < count; ++i)
            sigaction(replaced[i], &saved[i], nullptr);
    }
    SignalHandlerGuard(const SignalHandlerGuard &) = delete;
    SignalHandlerGuard &operator=(const SignalHandlerGuard &) = delete;

private:
    static constexpr int replaced[] = {SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV};
    static constexpr int count = sizeof replaced / sizeof *replaced;
    struct sigaction saved[count];
};

// Mirrors from construction to destruction. A process can have one run at a time.
class Run {
public:
    explicit Run(std::string config) {
        if (setMirrorConfig(config.data()) != 1)
            throw Error("the configuration was not applied: the screen cannot be captured");
        const SignalHandlerGuard guard;
        switch (startMirror()) {
        case 1:
            return;
        case 0:
            throw Error("mirroring was not started: a run exists already or there is no device");
        default:
            throw Error("mirroring was not started: no thread could be made");
        }
    }
    ~Run() {
        if (running)
            stopMirror();
    }
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    // For hosts that check for a failed stop, which the destructor cannot report.
    void stop() {
        running = false;
        if (stopMirror() != 1)
            throw Error("mirroring could not be stopped");
    }

    // What is being sent to each device, as JSON. Waits about a second for a frame.
    std::string sent() const {
        if (captureCurrentStreamFrames() != 0)
            throw Error("nothing was sent within a second");
        const int size = getSizeOfStreamFrameJson();
        if (size < 0)
            throw Error("the snapshot could not be made");
        if (size == 0)
            throw Error("no frame was captured");
        std::string text(static_cast<std::size_t>(size), '\0');
        if (getStreamFrameJson(text.data()) != 0)
            throw Error("the snapshot could not be fetched");
        return text;
    }

private:
    bool running = true;
};

} // namespace screenMirror
