// A host that forks while the library runs in it. A child has the library's memory and none of its
// threads.
#include "tests/faults/faultRun.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

class Fork : public test::FaultRun {
protected:
    void SetUp() override {
        start();
        ASSERT_TRUE(showsPlain(0x00ff00));
    }

    // Calls `does` in a child and sends it the signal `sent` unless 0. Returns the child's exit
    // status, the negated signal that ended it, or "hung".
    static std::string childThat(const std::function<void()> &does, int sent = 0) {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        const pid_t child = fork();
        if (child == 0) {
            close(ready[0]);
            close(ready[1]);
            does();
            _exit(99);
        }
        close(ready[1]);
        // Inside fork() a child still holds locks that a signal's handler would wait for.
        char none;
        EXPECT_EQ(read(ready[0], &none, 1), 0);
        close(ready[0]);
        if (sent != 0)
            kill(child, sent);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        int status = 0;
        while (waitpid(child, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                kill(child, SIGKILL);
                waitpid(child, &status, 0);
                return "hung";
            }
            usleep(1000);
        }
        return std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status));
    }

    void expectTheRunGoesOn() {
        receiver.drain();
        screen.fill(0x0000ff);
        EXPECT_TRUE(showsPlain(0x0000ff));
        char palette[513] = "";
        EXPECT_EQ(getPalette(palette), 0);
        EXPECT_EQ(captureCurrentStreamFrames(), 0);
        EXPECT_EQ(stopMirror(), 1);
        start();
        EXPECT_TRUE(showsPlain(0x0000ff));
    }
};

TEST_F(Fork, AChildThatExits) {
    EXPECT_EQ(childThat([] { std::exit(7); }), "7");
    expectTheRunGoesOn();
}

TEST_F(Fork, AChildThatExitsAtOnce) {
    EXPECT_EQ(childThat([] { _exit(8); }), "8");
    expectTheRunGoesOn();
}

TEST_F(Fork, AChildThatRunsAnotherProgram) {
    EXPECT_EQ(childThat([] { execl("/bin/true", "true", nullptr); }), "0");
    expectTheRunGoesOn();
}

TEST_F(Fork, AChildThatStops) {
    EXPECT_EQ(childThat([] {
                  const int first = stopMirror();
                  std::exit(10 * first + stopMirror());
              }),
              "11");
    expectTheRunGoesOn();
}

TEST_F(Fork, AChildThatIsTerminated) {
    EXPECT_EQ(childThat(
                  [] {
                      for (;;)
                          pause();
                  },
                  SIGTERM),
              std::to_string(SIGTERM));
    expectTheRunGoesOn();
}

// A child may run the library itself.
TEST_F(Fork, AChildThatConfiguresAndStarts) {
    stopMirror(); // so that the datagrams are the child's
    receiver.drain();
    start();
    std::string text = document();
    int result = -1;
    EXPECT_EQ(childThat([&] {
                  result = setMirrorConfig(text.data());
                  result = 10 * result + startMirror();
                  result = 10 * result + (captureCurrentStreamFrames() == 0);
                  result = 10 * result + stopMirror();
                  std::exit(result == 1111 ? 11 : 12);
              }),
              "11");
    expectTheRunGoesOn();
}

// The fork may happen during any step of another thread's start or stop.
TEST_F(Fork, InTheMiddleOfStartsAndStops) {
    std::atomic<bool> over = false;
    std::thread busy([&] {
        while (!over) {
            stopMirror();
            startMirror();
        }
    });
    const int rounds = test::fullFaults() ? 2000 : 100;
    int hung = 0;
    for (int round = 0; round < rounds; ++round)
        hung += childThat([] { std::exit(7); }) != "7";
    over = true;
    busy.join();
    EXPECT_EQ(hung, 0);
    start();
    test::printMeasurement("children forked amid starts and stops: " + std::to_string(rounds) +
                           ", hung or killed: " + std::to_string(hung));
    expectTheRunGoesOn();
}

} // namespace
