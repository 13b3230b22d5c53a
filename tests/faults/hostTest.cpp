// Unusual hosts: timers whose signals interrupt every call, and another locale.
#include "tests/faults/faultRun.h"

#include <atomic>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <locale>
#include <sys/time.h>
#include <unistd.h>

namespace {

std::atomic<int> alarms = 0;

void count(int) {
    ++alarms;
}

class Host : public test::FaultRun {};

// A host's timer that fires every millisecond; its handler does not restart interrupted calls.
class AlarmStorm {
public:
    AlarmStorm() {
        struct sigaction own = {};
        own.sa_handler = count;
        sigaction(SIGALRM, &own, &before);
        const itimerval often{{0, 1000}, {0, 1000}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~AlarmStorm() {
        const itimerval never{};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &before, nullptr);
    }
    AlarmStorm(const AlarmStorm &) = delete;
    AlarmStorm &operator=(const AlarmStorm &) = delete;

private:
    struct sigaction before;
};

TEST_F(Host, AlarmsInterruptNothing) {
    screen.fill(0xff0000);
    const int rounds = test::fullFaults() ? 100 : 5;
    {
        const AlarmStorm storm;
        for (int round = 0; round < rounds; ++round) {
            ASSERT_EQ(test::displayIDs().size(), 1u);
            start();
            // The system interrupts the first thread that does not block the signal: this one or
            // the library's.
            sigset_t alarm;
            sigemptyset(&alarm);
            sigaddset(&alarm, SIGALRM);
            pthread_sigmask(round % 2 ? SIG_BLOCK : SIG_UNBLOCK, &alarm, nullptr);
            ASSERT_TRUE(showsPlain(0xff0000));
            pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
            ASSERT_EQ(captureCurrentStreamFrames(), 0);
            ASSERT_EQ(stopMirror(), 1);
            receiver.drain();
        }
    }
    EXPECT_GT(alarms, 100);
    test::printMeasurement("alarms during " + std::to_string(rounds) +
                           " runs: " + std::to_string(alarms));
}

void ownHandler(int number) {
    _exit(100 + number);
}

// As documented: handlers that the host installs after the start stay, even after the run ends.
TEST_F(Host, HandlersInstalledAfterTheStartStay) {
    start();
    constexpr int numbers[] = {SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV};
    for (const int number : numbers)
        std::signal(number, ownHandler);
    screen.fill(0x0000ff);
    EXPECT_TRUE(showsPlain(0x0000ff));
    EXPECT_EQ(stopMirror(), 1);
    for (const int number : numbers)
        EXPECT_EQ(std::signal(number, SIG_DFL), ownHandler) << number;
}

// A locale in which 1.5 is written 1,5 and 1000 may be written 1.000.
class Locale : public Host {
protected:
    void SetUp() override {
        char name[] = "/tmp/faultLocaleXXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        folder = name;
        setenv("LOCPATH", name, 1);
        screen.run({"localedef", "-c", "-i", "de_DE", "-f", "UTF-8", folder + "/de_DE.UTF-8"});
        ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
        std::locale::global(std::locale("de_DE.UTF-8"));
        ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    }
    void TearDown() override {
        FaultRun::TearDown();
        std::locale::global(std::locale::classic());
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
        if (!folder.empty())
            std::filesystem::remove_all(folder);
    }

    std::string folder;
};

TEST_F(Locale, ChangesNoNumber) {
    screen.fillRect(100, 0, 100, 100, 0);
    char displays[512] = "";
    ASSERT_EQ(getDisplays(displays, sizeof displays - 1), 1);
    const char *id = std::strstr(displays, "\"displayID\":");
    ASSERT_NE(id, nullptr);
    const std::string number = std::to_string(std::strtoul(id + 12, nullptr, 10));
    EXPECT_EQ(displays, R"({"numDisplays":1,"displays":[{"displayID":)" + number +
                            R"(,"width":200,"height":100}]})");

    // A factor of 0,2 read as 0 or as 2 would sample other pixels: this panel's square ends one
    // pixel before the black half.
    light.controlVersion = 2;
    light.panels = {{12345, 90, 50}};
    test::LightReceiver wide("127.0.62.1", 60222);
    ASSERT_EQ(configure(R"({"displayID":)" + number +
                        R"(,"mode":0,"devices":[{"ip":"127.0.62.1","controlVersion":2,)"
                        R"("shapeType":0,"scaleFactor":0.199,"panels":[)"
                        R"({"panelID":12345,"centroidX":90,"centroidY":50}]}]})"),
              1);
    ASSERT_EQ(startMirror(), 1);
    EXPECT_TRUE(test::arrives(wide, {0, 1, 0x30, 0x39, 0, 255, 0, 0, 0, 1}));

    ASSERT_EQ(captureCurrentStreamFrames(), 0);
    const int size = getSizeOfStreamFrameJson();
    ASSERT_GT(size, 0);
    std::string text(static_cast<std::size_t>(size), '\0');
    ASSERT_EQ(getStreamFrameJson(text.data()), 0);
    EXPECT_EQ(text, R"({"numDevices":1,"devices":[{"ip":"127.0.62.1","animData":)"
                    R"("1 12345 1 0 255 0 0 5"}]})");
}

} // namespace
