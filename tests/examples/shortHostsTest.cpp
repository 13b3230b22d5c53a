// The short hosts printed in the README and the header, with a library that fails on request and a
// sleep() that returns at once.
#include "tests/support/process.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

// The failing library replaces the one that the hosts are linked to.
test::Process run(const std::vector<std::string> &command, const char *function = "",
                  const char *result = "") {
    return test::Process({"/usr/bin/env", "FAIL=" + std::string(function),
                          "FAIL_WITH=" + std::string(result),
                          "LD_PRELOAD=" FAILING_LIBRARY ":" SHORT_SLEEP, command[0],
                          command.size() > 1 ? command[1] : ""});
}

} // namespace

// The failing library aborts if the configuration names another display than the one it lists.
TEST(ShortHosts, MirrorTheFirstDisplay) {
    for (const auto &command : {std::vector<std::string>{README_HOST, "127.0.0.1"}, {HEADER_HOST}})
        EXPECT_EQ(run(command).finish(), (test::ProcessResult{0, "stopped\n", ""})) << command[0];
}

TEST(ShortHosts, SayWhyTheyEnd) {
    const struct {
        const char *function;
        const char *result;
        const char *line;
    } failures[] = {
        {"getDisplays", "-1", "the displays cannot be listed"},
        {"getDisplays", "none", "there is no display to mirror"},
        {"setMirrorConfig", "0",
         "the configuration was not applied; may this program record the screen?"},
        {"startMirror", "0", "mirroring could not be started"},
        {"stopMirror", "-1", "mirroring could not be stopped"},
    };
    for (const auto &failure : failures) {
        const test::ProcessResult host =
            run({README_HOST, "127.0.0.1"}, failure.function, failure.result).finish();
        EXPECT_EQ(host.status, 1) << failure.line;
        EXPECT_EQ(host.err, "host: " + std::string(failure.line) + "\n");
        const int status = run({HEADER_HOST}, failure.function, failure.result).finish().status;
        EXPECT_EQ(status, 1) << failure.line;
    }
    EXPECT_EQ(
        test::Process({README_HOST}).finish(),
        (test::ProcessResult{1, "", "host: name the address of a light, such as 192.0.2.7\n"}));
}
