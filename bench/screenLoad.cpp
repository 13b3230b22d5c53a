#include "bench/screenLoad.h"

#include "bench/measure.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

// Time to start up, which is not measured.
constexpr auto settling = std::chrono::milliseconds(1200);

constexpr Clock::duration framePeriod = std::chrono::duration_cast<Clock::duration>(
    std::chrono::duration<double>(1.0 / framesPerSecond));

// A counter shared by parent and child.
std::atomic<long> &sharedCounter() {
    static auto *counter = new (mmap(nullptr, sizeof(std::atomic<long>), PROT_READ | PROT_WRITE,
                                     MAP_SHARED | MAP_ANONYMOUS, -1, 0)) std::atomic<long>;
    return *counter;
}

// The file that programs write their standard output to.
int childOutput() {
    static const int file = memfd_create("output", MFD_CLOEXEC);
    return file;
}

// The number in the last line "frame=..." of the output, or the shared counter if there is no
// output.
long framesSoFar() {
    char tail[1024] = {};
    const off_t end = lseek(childOutput(), 0, SEEK_END);
    const off_t begin = std::max<off_t>(0, end - static_cast<off_t>(sizeof tail - 1));
    if (pread(childOutput(), tail, sizeof tail - 1, begin) <= 0)
        return sharedCounter();
    const std::string text(tail);
    const std::size_t line = text.rfind("frame=");
    return line == std::string::npos ? 0 : std::atol(text.c_str() + line + 6);
}

// To be called before this process starts another thread.
pid_t start(const Watcher &watcher, const test::VirtualScreen &screen) {
    const pid_t child = fork();
    if (child != 0)
        return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    screen.use();
    if (watcher.work) {
        watcher.work(sharedCounter());
        for (;;)
            pause();
    }
    std::vector<std::string> command = watcher.command;
    std::vector<char *> arguments;
    for (std::string &argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(childOutput(), STDOUT_FILENO);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

} // namespace

Painter::Painter(test::VirtualScreen &screen, Motion motion)
    : thread([this, &screen, motion] {
          Pace pace(framePeriod);
          for (std::uint32_t i = 1; !done && motion != Motion::Still; ++i) {
              pace.wait();
              const std::uint32_t colour = i * 2654435761u >> 8;
              if (motion == Motion::Whole)
                  screen.fill(colour);
              else
                  screen.fillRect(static_cast<int>(i * 37 % 1000), static_cast<int>(i * 23 % 900),
                                  64, 64, colour);
          }
      }) {}

Painter::~Painter() {
    done = true;
    thread.join();
}

Load measureLoad(test::VirtualScreen &screen, Motion motion, const Watcher &watcher,
                 double seconds) {
    const bool anybody = watcher.work || !watcher.command.empty();
    ftruncate(childOutput(), 0);
    lseek(childOutput(), 0, SEEK_SET);
    const pid_t child = anybody ? start(watcher, screen) : -1;
    Load load;
    {
        const Painter painter(screen, motion);
        sleepUntil(Clock::now() + settling);
        const auto ownNow = [&] { return anybody ? processorSeconds(child) : 0.0; };
        const Clock::time_point begin = Clock::now();
        const double own = ownNow();
        const double server = processorSeconds(screen.pid());
        const long frames = framesSoFar();
        sleepUntil(begin + std::chrono::duration_cast<Clock::duration>(
                               std::chrono::duration<double>(seconds)));
        const double passed = std::chrono::duration<double>(Clock::now() - begin).count();
        load.own = (ownNow() - own) / passed;
        load.server = (processorSeconds(screen.pid()) - server) / passed;
        load.frames = static_cast<double>(framesSoFar() - frames) / passed;
    }
    if (anybody) {
        // A watcher that has ended would look cheap.
        if (waitpid(child, nullptr, WNOHANG) != 0)
            throw std::runtime_error(watcher.name + " ended by itself");
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    return load;
}

std::vector<NetLoad> measureInTurns(test::VirtualScreen &screen, Motion motion,
                                    const std::vector<Watcher> &watchers, int rounds,
                                    double seconds) {
    std::vector<std::vector<double>> totals(watchers.size()), frames(watchers.size());
    for (int round = 0; round < rounds; ++round) {
        const Load nobody = measureLoad(screen, motion, {"nobody", {}, {}}, seconds);
        for (std::size_t w = 0; w < watchers.size(); ++w) {
            const Load load = measureLoad(screen, motion, watchers[w], seconds);
            totals[w].push_back(load.own + load.server - nobody.server);
            frames[w].push_back(load.frames);
        }
    }
    std::vector<NetLoad> result;
    for (std::size_t w = 0; w < watchers.size(); ++w) {
        const double counted = median(frames[w]);
        const bool counts = watchers[w].work || counted > 0;
        result.push_back({median(totals[w]), counts ? counted : framesPerSecond});
    }
    return result;
}

} // namespace bench
