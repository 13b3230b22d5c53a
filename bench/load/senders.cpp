#include "bench/load/senders.h"

#include "bench/measure.h"
#include "mirror/mirrorInterface.h"
#include "mirror/screenMirrorMac.h"

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace load {

Sender::Sender(SharedSendState &sharedState, const Plan &plan, const std::function<int()> &work)
    : state(sharedState), text(memfd_create("output of a sender", MFD_CLOEXEC)) {
    std::fflush(nullptr);
    child = fork();
    if (child < 0)
        throw std::runtime_error("fork");
    if (child > 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(text, STDOUT_FILENO);
    close_range(3, ~0u, 0);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const rlimit limit{plan.descriptors, plan.descriptors};
    setrlimit(RLIMIT_NOFILE, &limit);
    recordSendsTo(state);
    const int result = work();
    std::fflush(stdout);
    std::_Exit(result);
}

Sender::~Sender() {
    if (child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    close(text);
}

std::string Sender::output() const {
    std::string result;
    char bytes[4096];
    ssize_t got = 0;
    while ((got = pread(text, bytes, sizeof bytes, static_cast<off_t>(result.size()))) > 0)
        result.append(bytes, static_cast<std::size_t>(got));
    return result;
}

bool Sender::hasEnded() {
    if (child > 0 && waitpid(child, &status, WNOHANG) == child)
        child = -1;
    return child < 0;
}

void Sender::stop() {
    state.stop = true;
    sem_post(&state.stopped);
}

bool Sender::succeeded() const {
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The panels of all devices form a grid over the whole screen; each is as wide as its column.
static std::string documentFor(const Plan &plan) {
    char displays[65536] = "";
    getDisplays(displays, sizeof displays - 1);
    const char *first = std::strstr(displays, "\"displayID\":");
    const std::string id =
        first != nullptr ? std::to_string(std::strtoul(first + 12, nullptr, 10)) : std::string("0");
    const int all = plan.devices * plan.panels;
    const int columns =
        static_cast<int>(std::ceil(std::sqrt(static_cast<double>(all) * plan.width / plan.height)));
    const int rows = (all + columns - 1) / columns;
    const std::string scale = std::to_string(static_cast<double>(plan.width) / columns / 150.0);
    std::string text = "{\"displayID\":" + id + ",\"mode\":0,\"devices\":[";
    for (int d = 0; d < plan.devices; ++d) {
        text += std::string(d > 0 ? "," : "") + "{\"ip\":\"" + addressOf(d) +
                "\",\"controlVersion\":2,\"shapeType\":0,\"scaleFactor\":" + scale +
                ",\"panels\":[";
        for (int p = 0; p < plan.panels; ++p) {
            const int place = d * plan.panels + p;
            const int x = (2 * (place % columns) + 1) * plan.width / (2 * columns);
            const int y = (2 * (place / columns) + 1) * plan.height / (2 * rows);
            text += std::string(p > 0 ? "," : "") + "{\"panelID\":" + std::to_string(p + 1) +
                    ",\"centroidX\":" + std::to_string(x) + ",\"centroidY\":" + std::to_string(y) +
                    "}";
        }
        text += "]}";
    }
    return text + "]}";
}

int mirror(SharedSendState &state, const Plan &plan) {
    mirrorManager.matchFrameDelay = plan.frameDelay;
    mirrorManager.minimumFrameTime = plan.minimumFrameTime;
    std::string document = documentFor(plan);
    if (setMirrorConfig(document.data()) != 1 || startMirror() != 1)
        return 1;
    state.begun = true;
    while (sem_wait(&state.stopped) != 0) {
    }
    return stopMirror() == 1 ? 0 : 1;
}

int sendBare(SharedSendState &state, const SharedSendState &model,
             std::chrono::nanoseconds period) {
    std::vector<int> sockets;
    std::vector<sockaddr_in> addresses;
    for (int d = 0; d < state.devices; ++d) {
        sockets.push_back(socket(AF_INET, SOCK_DGRAM, 0));
        UdpSocket address;
        address.setRemote(addressOf(d), port);
        addresses.push_back(reinterpret_cast<const sockaddr_in &>(address.remoteAddr));
    }
    state.begun = true;
    bench::Pace pace(period);
    while (!state.stop) {
        for (int d = 0; d < state.devices; ++d)
            sendto(sockets[static_cast<std::size_t>(d)], model.to[d].first, model.to[d].length, 0,
                   reinterpret_cast<const sockaddr *>(&addresses[static_cast<std::size_t>(d)]),
                   sizeof(sockaddr_in));
        pace.wait();
    }
    return 0;
}

} // namespace load
