#include "tools/mirrorctl/run/run.h"

#include <gtest/gtest.h>

using namespace mirrorctl;

namespace {

RunState matchState() {
    RunState state;
    state.elapsed = 12.4;
    state.isCounted = true;
    state.frames = 291;
    state.silence = 0.02;
    state.pace = FrameTally::Pace{23.71, 0.00044};
    return state;
}

} // namespace

TEST(MirrorctlFrameTally, TellsRateAndJitter) {
    FrameTally tally;
    EXPECT_FALSE(tally.wholePace());
    tally.add(100.0);
    tally.add(100.04);
    EXPECT_FALSE(tally.wholePace());
    tally.add(100.10);
    EXPECT_EQ(tally.frames(), 3u);
    EXPECT_NEAR(tally.wholePace()->rate, 20.0, 1e-6);
    EXPECT_NEAR(tally.wholePace()->jitter, 0.01, 1e-6);
}

TEST(MirrorctlFrameTally, ForgetsWhatIsLongAgoInTheRecentPace) {
    FrameTally tally;
    for (int i = 0; i <= 10; ++i)
        tally.add(i * 1.0);
    for (int i = 1; i <= 50; ++i)
        tally.add(10.0 + i * 0.1);
    EXPECT_NEAR(tally.recentPace()->rate, 10.0, 1e-6);
    EXPECT_NEAR(tally.recentPace()->jitter, 0.0, 1e-6);
    EXPECT_NEAR(tally.wholePace()->rate, 4.0, 1e-6);
    EXPECT_EQ(tally.frames(), 61u);
}

TEST(MirrorctlFrameTally, LeavesPausesOut) {
    FrameTally tally;
    for (int i = 0; i < 3; ++i)
        tally.add(i * 0.1);
    tally.pause();
    for (int i = 0; i < 3; ++i)
        tally.add(60.0 + i * 0.1);
    EXPECT_EQ(tally.frames(), 6u);
    EXPECT_NEAR(tally.wholePace()->rate, 10.0, 1e-6);
    EXPECT_NEAR(tally.recentPace()->jitter, 0.0, 1e-6);
    EXPECT_NEAR(tally.lastTime(), 60.2, 1e-9);
}

TEST(MirrorctlRunReport, TellsFramesRateAndJitter) {
    EXPECT_EQ(liveLine(matchState(), 200), "12 s  291 frames  23.7/s  jitter 0.4 ms  no error");
    EXPECT_EQ(liveLine(matchState(), 9), "12 s  291");
}

TEST(MirrorctlRunReport, ShowsHowFarItIs) {
    RunState state = matchState();
    state.planned = 24.0;
    EXPECT_TRUE(liveLine(state, 200).starts_with("[##########----------]  51 %  12 of 24 s  291 "));
    state.elapsed = 30.0;
    EXPECT_TRUE(liveLine(state, 200).starts_with("[####################] 100 %"));
}

TEST(MirrorctlRunReport, TellsSilenceAndErrors) {
    RunState state = matchState();
    state.silence = 3.2;
    state.errors = 2;
    state.lastError = "socket not connected";
    EXPECT_EQ(liveLine(state, 200),
              "12 s  291 frames, NOTHING SENT for 3.2 s  2 errors, last: socket not connected");
    EXPECT_EQ(summary(state), "Sent 291 frames to every device, 23.7 a second, jitter 0.44 ms.\n"
                              "The library reported 2 errors, the last: socket not connected\n");
}

TEST(MirrorctlRunReport, TellsOfTheDisplayServer) {
    RunState state = matchState();
    state.server = ServerState::Silent;
    state.outage = 3.2;
    EXPECT_EQ(liveLine(state, 200), "12 s  DISPLAY SERVER SILENT for 3 s  291 frames  23.7/s  "
                                    "jitter 0.4 ms  no error");
    state.server = ServerState::Gone;
    state.wholeOutage = 3.2;
    EXPECT_EQ(liveLine(state, 200), "12 s  DISPLAY SERVER GONE for 3 s, waiting for it  no error");
    EXPECT_EQ(summary(state), "Sent 291 frames to every device, 23.7 a second, jitter 0.44 ms.\n"
                              "The display server was gone for 3.2 s of this.\n");
}

TEST(MirrorctlRunReport, KnowsTheModesThatSendNowAndThen) {
    RunState state = matchState();
    state.silence = 5.0;
    for (const int mode : {1, 2}) {
        state.mode = mode;
        EXPECT_EQ(liveLine(state, 200), "12 s  291 frames, last change 5.0 s ago  no error");
        EXPECT_EQ(summary(state), "Sent 291 frames to every device.\n");
    }
    state.mode = 3;
    EXPECT_EQ(liveLine(state, 200), "12 s  running, last datagram 5.0 s ago  no error");
    state.isCounted = false;
    EXPECT_EQ(liveLine(state, 200), "12 s  frames not counted  no error");
    EXPECT_EQ(summary(state), "");
}

TEST(MirrorctlRunReport, PrintsForScripts) {
    RunState state = matchState();
    EXPECT_EQ(
        jsonLine("running", state),
        R"({"event":"running","mode":"match","seconds":12.4,"frames":291,"rate":23.71,)"
        R"("jitterMs":0.44,"silence":0.02,"server":"answering","errors":0,"lastError":null})");
    state.isCounted = false;
    state.pace.reset();
    state.mode = 3;
    state.errors = 1;
    state.lastError = "a \"word\"";
    state.server = ServerState::Gone;
    EXPECT_EQ(
        jsonLine("stopped", state),
        R"({"event":"stopped","mode":"palette","seconds":12.4,"signsOfLife":null,)"
        R"("rate":null,"jitterMs":null,"silence":null,"server":"gone","errors":1,"lastError":"a \"word\""})");
}
