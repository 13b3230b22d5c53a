#include "bench/load/receivers.h"

#include "bench/load/stepColour.h"

#include <arpa/inet.h>
#include <cerrno>
#include <climits>
#include <linux/sock_diag.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace load {

// Large enough that the kernel drops nothing while this thread waits for a processor.
static constexpr int queueBytes = 4 << 20;

static int listenAt(const std::string &ip) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    inet_pton(AF_INET, ip.c_str(), &address.sin_addr);
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        throw std::runtime_error("bind " + ip + ": " + std::strerror(errno));
    const int yes = 1;
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &queueBytes, sizeof queueBytes);
    setsockopt(fd, SOL_SOCKET, SO_TIMESTAMPNS, &yes, sizeof yes);
    return fd;
}

Receivers::Receivers(int devices, int thePanels)
    : panels(thePanels), poller(epoll_create1(EPOLL_CLOEXEC)),
      receivers(static_cast<std::size_t>(devices)) {
    for (std::size_t i = 0; i < receivers.size(); ++i) {
        receivers[i].fd = listenAt(addressOf(static_cast<int>(i)));
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = i;
        if (epoll_ctl(poller, EPOLL_CTL_ADD, receivers[i].fd, &event) != 0)
            throw std::runtime_error(std::string("epoll_ctl: ") + std::strerror(errno));
    }
    forget();
}

Receivers::~Receivers() {
    for (const Receiver &receiver : receivers)
        close(receiver.fd);
    close(poller);
}

void Receivers::forget() {
    for (Receiver &receiver : receivers) {
        receiver.received = receiver.chain = 0;
        receiver.arrival = 0;
        receiver.steps.assign(static_cast<std::size_t>(panels), 0);
    }
    keeping = false;
    between = {};
    counts = {};
    mixed = 0;
    spans.clear();
    firstSpan = 0;
    firstFault.clear();
}

void Receivers::receive(std::chrono::milliseconds patience) {
    epoll_event events[256];
    const int ready = epoll_wait(poller, events, 256, static_cast<int>(patience.count()));
    for (int e = 0; e < ready; ++e) {
        const auto device = static_cast<std::size_t>(events[e].data.u64);
        unsigned char bytes[largestDatagram];
        alignas(cmsghdr) char control[256];
        for (;;) {
            iovec part{bytes, sizeof bytes};
            msghdr message{};
            message.msg_iov = &part;
            message.msg_iovlen = 1;
            message.msg_control = control;
            message.msg_controllen = sizeof control;
            const ssize_t length = recvmsg(receivers[device].fd, &message, 0);
            if (length < 0)
                break;
            std::int64_t arrival = 0;
            for (cmsghdr *c = CMSG_FIRSTHDR(&message); c != nullptr; c = CMSG_NXTHDR(&message, c))
                if (c->cmsg_level == SOL_SOCKET && c->cmsg_type == SCM_TIMESTAMPNS) {
                    timespec time{};
                    std::memcpy(&time, CMSG_DATA(c), sizeof time);
                    arrival = time.tv_sec * 1'000'000'000 + time.tv_nsec;
                }
            take(device, bytes, static_cast<std::size_t>(length), arrival);
        }
    }
}

void Receivers::take(std::size_t device, const unsigned char *bytes, std::size_t length,
                     std::int64_t arrival) {
    Receiver &receiver = receivers[device];
    receiver.chain = chain(receiver.chain, bytes, length);
    if (keeping && receiver.arrival != 0)
        between.add(arrival - receiver.arrival);
    receiver.arrival = arrival;
    Span span{LLONG_MAX, 0, 1};
    const std::string fault = read(device, bytes, length, span);
    if (!fault.empty() && firstFault.empty())
        firstFault = addressOf(static_cast<int>(device)) + ", datagram " +
                     std::to_string(receiver.received) + ": " + fault;
    add(receiver.received, span);
    ++receiver.received;
}

// Wide records: identifier, red, green, blue, white, transition time.
std::string Receivers::read(std::size_t device, const unsigned char *bytes, std::size_t length,
                            Span &span) {
    const auto number = [bytes](std::size_t at) { return bytes[at] << 8 | bytes[at + 1]; };
    if (length != 2 + 8 * static_cast<std::size_t>(panels) || number(0) != panels)
        return std::to_string(length) + " bytes are not those of " + std::to_string(panels) +
               " panels";
    for (int p = 0; p < panels; ++p) {
        const std::size_t at = 2 + 8 * static_cast<std::size_t>(p);
        if (number(at) != p + 1 || bytes[at + 5] != 0 || number(at + 6) != 1)
            return "record " + std::to_string(p) + " is not that of its panel";
        const auto place = placeOf(bytes[at + 2], bytes[at + 3], bytes[at + 4]);
        if (!place) {
            ++mixed;
            continue;
        }
        std::int64_t &last = receivers[device].steps[static_cast<std::size_t>(p)];
        const auto step = stepAfter(last, *place);
        if (!step)
            return "panel " + std::to_string(p) + " went back from step " + std::to_string(last) +
                   " to place " + std::to_string(*place);
        last = *step;
        span.least = std::min(span.least, *step);
        span.most = std::max(span.most, *step);
    }
    return {};
}

void Receivers::add(std::uint64_t frame, const Span &span) {
    while (firstSpan + spans.size() <= frame)
        spans.push_back({LLONG_MAX, 0, 0});
    Span &whole = spans[frame - firstSpan];
    whole.least = std::min(whole.least, span.least);
    whole.most = std::max(whole.most, span.most);
    ++whole.datagrams;
    while (!spans.empty() && spans.front().datagrams == static_cast<int>(receivers.size())) {
        const Span done = spans.front();
        spans.pop_front();
        ++firstSpan;
        ++(done.most <= done.least       ? counts.whole
           : done.most == done.least + 1 ? counts.ofTwo
                                         : counts.ofMore);
    }
}

void Receivers::keepIntervals() {
    keeping = true;
}

std::uint64_t Receivers::frames() const {
    return std::min_element(
               receivers.begin(), receivers.end(),
               [](const Receiver &a, const Receiver &b) { return a.received < b.received; })
        ->received;
}

bool Receivers::allShow(std::int64_t step) const {
    return std::all_of(receivers.begin(), receivers.end(), [step](const Receiver &receiver) {
        return std::all_of(receiver.steps.begin(), receiver.steps.end(),
                           [step](std::int64_t shown) { return shown == step; });
    });
}

std::uint64_t Receivers::dropped(int device) const {
    std::uint32_t values[SK_MEMINFO_VARS] = {};
    socklen_t length = sizeof values;
    getsockopt(receivers[static_cast<std::size_t>(device)].fd, SOL_SOCKET, SO_MEMINFO, values,
               &length);
    return values[SK_MEMINFO_DROPS];
}

} // namespace load
