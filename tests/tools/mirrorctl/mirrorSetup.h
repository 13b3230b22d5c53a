// Shared by the tests of mirrorctl: the program as a process, its documents, and a screen for it.
#pragma once

#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/process.h"
#include "tests/support/virtualScreen.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <rapidjson/document.h>
#include <string>
#include <vector>

namespace test {

using Variables = std::map<std::string, std::string>;

// Starts mirrorctl and waits for its end. `variables` are set in its environment, or removed when
// empty; `input` is its standard input.
ProcessResult mirrorctl(std::vector<std::string> arguments, const Variables &variables = {},
                        const std::string &input = "");

// Runs `mirrorctl doctor` in a session that these variables name, in whatever session the tests
// run.
ProcessResult doctor(const Variables &session, std::vector<std::string> arguments = {},
                     Variables variables = {}, const std::string &input = "");
// The same on an X server.
ProcessResult doctor(const std::string &server, std::vector<std::string> arguments = {},
                     Variables variables = {}, const std::string &input = "");

// The variables that replace the library with one that has display 5 and refuses `function`; see
// refusingLibrary.cpp.
Variables refusing(const std::string &function);

// Parses a text and expects it to be JSON.
rapidjson::Document parsed(const std::string &text);

// The identifier of the only display of a session that these variables name, as mirrorctl lists it.
std::uint32_t onlyDisplay(const Variables &session);

// One device of one panel: panel 17, in wide layout, whose area lies around (100, 100).
std::string lightsText(std::uint32_t displayID, const std::string &ip, int mode = 0);

// The datagrams to that device in match mode on a red and on a green screen.
inline const Datagram redPanel = {0, 1, 0, 17, 255, 0, 0, 0, 0, 1};
inline const Datagram greenPanel = {0, 1, 0, 17, 0, 255, 0, 0, 0, 1};

// Reads datagrams until one equals `wanted`. The first ones may have been sent before the first
// frame was captured.
testing::AssertionResult receives(LightReceiver &light, const Datagram &wanted);

// Runs mirrorctl on its own virtual screen, which is one of X11 or of Wayland.
class ScreenTest : public testing::Test {
protected:
    Process start(std::vector<std::string> arguments, LaunchOptions options = {}) const;
    ProcessResult run(const std::vector<std::string> &arguments,
                      const std::string &input = "") const;

    // The server's name as mirrorctl prints it after "the" or "The".
    std::string serverName() const;

    // lightsText() for the screen.
    std::string lights(const std::string &ip, int mode = 0) const;

    VirtualScreen screen{640, 480};
    const std::uint32_t display = onlyDisplay(screen.variables());
    const Folder folder;
};

} // namespace test
