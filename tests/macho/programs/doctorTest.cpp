// What mirrorctl says only on macOS.
#include "tests/tools/mirrorctl/mirrorSetup.h"

using test::expectOutput;

namespace {

class MacDoctor : public test::ScreenTest {
protected:
    test::ProcessResult doctor(const test::Variables &variables = {}) const {
        return test::doctor(screen.display(), {}, variables);
    }
};

} // namespace

TEST_F(MacDoctor, FindsAHealthyScreenHealthy) {
    screen.fill(0xFF0000);
    expectOutput(doctor(), 0,
                 {"  good    screen recording: permitted.\n",
                  "  good    display streams: this macOS has them.\n", ": 640 x 480.\n",
                  "this program draws no marks on this system"});
}

TEST_F(MacDoctor, TellsThatScreenRecordingIsNotPermitted) {
    expectOutput(doctor({{"MAC_REFUSES_CAPTURE", "1"}}), 77,
                 {"  bad     screen recording: not permitted for this program, or for the terminal",
                  "System Settings, Privacy & Security, Screen Recording"});
}

TEST_F(MacDoctor, TellsThatDisplayStreamsAreMissing) {
    const test::Variables lacking = {{"MAC_LACKS", "CGDisplayStreamCreateWithDispatchQueue"}};
    expectOutput(doctor(lacking), 77,
                 {"  bad     display streams: this macOS has them no longer",
                  "mirror from a Mac whose macOS has them"});
}
