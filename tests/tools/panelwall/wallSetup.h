// Shared by the tests of the whole program: its configurations, and the program as a process.
#pragma once

#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/process.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace test {

// A device object with scale factor 1 and shape type 0; each panel is {id, x, y}.
std::string deviceText(const std::string &ip, int controlVersion,
                       const std::vector<std::vector<int>> &panels);

// A document with these device objects.
std::string documentText(const std::vector<std::string> &devices, int mode = 0);

class WallTest : public testing::Test {
protected:
    static Process start(std::vector<std::string> arguments, const LaunchOptions &options = {});

    // Starts panelwall and waits for its end.
    // Runs it in a new network namespace, whose loopback interface is down and has no IPv6 address.
    // If the system refuses to make one, the status is 1 and standard error names unshare.
    static ProcessResult runWithoutNetwork(std::vector<std::string> arguments);
    static ProcessResult run(const std::vector<std::string> &arguments);

    // Ends the program by a signal; expects exit status 0.
    static void end(Process &wall, int signal = SIGINT);

    // Writes a configuration and returns its path.
    std::string writeConfig(const std::vector<std::string> &devices, int mode = 0) const;

    // Writes the configuration of a wide device with a single panel, number 1 at (100, 100).
    std::string writeOnePanel(const std::string &ip, int mode = 0) const;

    Folder folder;
};

} // namespace test
