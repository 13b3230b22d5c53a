#include "bench/modeCycles.h"

#include "bench/standIn.h"
#include "mirror/screenMirrorMac.h"
#include "mirror/sharedFlag.h"

#include <arpa/inet.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace {

std::function<void()> betweenCycles;

} // namespace

// Replaces the system's nanosleep() through a linker option.
extern "C" int __wrap_nanosleep(const timespec *, timespec *) {
    betweenCycles();
    return 0;
}

namespace bench {

Loopback::Loopback(int devices)
    : receiver(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    for (int d = 0; d < devices; ++d)
        senders.push_back(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const int room = 4 << 20;
    setsockopt(receiver, SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(receiver, reinterpret_cast<sockaddr *>(&address), sizeof address);
    socklen_t length = sizeof address;
    getsockname(receiver, reinterpret_cast<sockaddr *>(&address), &length);
    receiverPort = ntohs(address.sin_port);
}

Loopback::~Loopback() {
    close(receiver);
    for (const int sender : senders)
        close(sender);
}

Datagrams Loopback::receiveAll() {
    Datagrams datagrams;
    std::vector<char> bytes(65536);
    for (;;) {
        const ssize_t got = recv(receiver, bytes.data(), bytes.size(), 0);
        if (got < 0)
            return datagrams;
        datagrams.emplace_back(bytes.begin(), bytes.begin() + got);
    }
}

void Loopback::send(std::size_t device, const Datagram &datagram) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(receiverPort));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    sendto(senders[device], datagram.data(), datagram.size(), 0,
           reinterpret_cast<const sockaddr *>(&address), sizeof address);
}

CycleTimes measureCycles(const ScreenSize &size, const CycleTask &task) {
    mirrorManager.deInitScreen();
    setStandInSize(static_cast<std::size_t>(size.width), static_cast<std::size_t>(size.height));
    std::string document =
        configuration(standInDisplay, size, task.mode, task.panels, task.devices);
    mirrorManager.setMirrorConfig(document.data());

    Loopback loopback(task.devices);
    const auto sockets = std::make_unique<UdpSocket[]>(mirrorManager.devices.size());
    for (int d = 0; d < task.devices; ++d)
        sockets[static_cast<std::size_t>(d)].setRemote("127.0.0.1", loopback.port());

    std::vector<double> modeTimes, floorTimes;
    int cycle = -1; // the first cycle finds the buffer black and everything cold
    Clock::time_point begin = Clock::now();
    betweenCycles = [&] {
        const std::chrono::duration<double, std::micro> taken = Clock::now() - begin;
        const Datagrams sent = loopback.receiveAll();
        if (cycle >= 0) {
            modeTimes.push_back(taken.count());
            task.prepare(cycle);
            floorTimes.push_back(microseconds([&] { task.floor(loopback, sent); }));
            loopback.receiveAll();
        }
        if (++cycle == task.cycles)
            writeFlag(mirrorManager.running, false);
        else
            task.prepare(cycle);
        begin = Clock::now();
    };

    writeFlag(mirrorManager.running, true);
    switch (task.mode) {
    case 0:
        mirrorManager.mirrorModeMatch(task.devices, sockets.get());
        break;
    case 1:
        mirrorManager.mirrorModeMelt(task.devices, sockets.get());
        break;
    case 2:
        mirrorManager.mirrorModeFade(task.devices, sockets.get());
        break;
    default:
        mirrorManager.mirrorModePalette(task.devices, sockets.get());
        break;
    }
    return {median(modeTimes), median(floorTimes)};
}

} // namespace bench
