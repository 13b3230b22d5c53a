// A host that runs out of descriptors at any point of the library's work.
#include "tests/faults/faultRun.h"
#include "tests/platform/processUsage.h"

#include <fcntl.h>
#include <set>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

// Limits a scope to `left` more descriptors.
class FewDescriptors {
public:
    explicit FewDescriptors(int left) {
        getrlimit(RLIMIT_NOFILE, &before);
        rlimit few = before;
        few.rlim_cur = std::min<rlim_t>(256, before.rlim_max);
        setrlimit(RLIMIT_NOFILE, &few);
        for (int fd; (fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
            taken.push_back(fd);
        for (; left > 0; --left) {
            close(taken.back());
            taken.pop_back();
        }
    }
    ~FewDescriptors() {
        for (const int fd : taken)
            close(fd);
        setrlimit(RLIMIT_NOFILE, &before);
    }
    FewDescriptors(const FewDescriptors &) = delete;
    FewDescriptors &operator=(const FewDescriptors &) = delete;

private:
    rlimit before;
    std::vector<int> taken;
};

std::set<std::string> linesOf(const std::string &text) {
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.insert(line);
    return lines;
}

// Whether anything has been printed since the capture of standard output began.
bool somethingIsSaid() {
    std::fflush(stdout);
    struct stat file {};
    return fstat(STDOUT_FILENO, &file) == 0 && file.st_size > 0;
}

class Descriptors : public test::FaultRun {
protected:
    // After the shortage: nothing is left open, and everything works.
    void expectAllWell(std::size_t before) {
        EXPECT_EQ(stopMirror(), 1);
        EXPECT_TRUE(test::openDescriptorsBecome(before));
        start();
        EXPECT_TRUE(showsPlain(0x00ff00));
        EXPECT_EQ(stopMirror(), 1);
        EXPECT_TRUE(test::openDescriptorsBecome(before));
        receiver.drain();
    }

    const std::string text = document();
};

TEST_F(Descriptors, MissingWhileConfiguring) {
    const std::size_t before = test::openDescriptors();
    int left = 0;
    for (bool enough = false; !enough; ++left) {
        ASSERT_LT(left, 50);
        CaptureStdout();
        int listed = 0, configured = 0;
        char displays[512] = "";
        {
            const FewDescriptors few(left);
            listed = getDisplays(displays, sizeof displays - 1);
            configured = configure(text);
        }
        const std::string said = GetCapturedStdout();
        EXPECT_EQ(listed, 1);
        enough = configured == 1;
        EXPECT_EQ(said, enough ? "" : "Screen Recording not allowed!\n") << left;
        if (left == 0) {
            EXPECT_STREQ(displays, R"({"numDisplays":0,"displays":[]})");
            EXPECT_FALSE(enough);
        }
        expectAllWell(before);
    }
    test::printMeasurement("descriptors missing while configuring: " + std::to_string(left) +
                           " steps");
}

TEST_F(Descriptors, MissingDuringTheRun) {
    const std::set<std::string> possible = {"cannot open socket", "socket not connected",
                                            "Stream start failed!"};
    const std::size_t before = test::openDescriptors();
    int left = 0;
    for (bool enough = false; !enough; ++left) {
        ASSERT_LT(left, 50);
        ASSERT_EQ(configure(text), 1);
        CaptureStdout();
        {
            const FewDescriptors few(left);
            EXPECT_EQ(startMirror(), 1);
            const int captured = captureCurrentStreamFrames();
            EXPECT_TRUE(captured == 0 || captured == -1);
            char palette[513] = "";
            EXPECT_EQ(getPalette(palette), 0);
            // In the end the light shows the screen, or the library prints the reason.
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
            while (!enough && !somethingIsSaid() && std::chrono::steady_clock::now() < deadline)
                enough = receiver.next(std::chrono::milliseconds(150)) == plainDatagram(0x00ff00);
            EXPECT_EQ(stopMirror(), 1);
        }
        const std::set<std::string> said = linesOf(GetCapturedStdout());
        for (const std::string &line : said)
            EXPECT_TRUE(possible.contains(line)) << line;
        EXPECT_EQ(said.empty(), enough) << left;
        if (left == 0)
            EXPECT_TRUE(said.contains("cannot open socket"));
        expectAllWell(before);
    }
    test::printMeasurement("descriptors missing during the run: " + std::to_string(left) +
                           " steps");
}

} // namespace
