#include "platform/x11/handshake.h"

#include "platform/objects/wakeUp.h"
#include "platform/x11/serverSocket.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace platform::x11 {

namespace {

// A server handles new connections only after its reset, so the next handshake waits for that by
// itself. The pause is for a server that hangs up on every client.
constexpr Clock::duration pauseAfterHangUp = std::chrono::milliseconds(10);

// Everything in a handshake is padded to words of four bytes.
void append(std::vector<std::uint8_t> &request, const void *data, std::size_t length) {
    const auto *bytes = static_cast<const std::uint8_t *>(data);
    request.insert(request.end(), bytes, bytes + length);
    request.resize((request.size() + 3) / 4 * 4);
}

// Receives exactly `size` bytes; false when the connection ended or the deadline passed first.
bool receive(int fd, void *data, std::size_t size, Clock::time_point deadline) {
    auto *bytes = static_cast<std::uint8_t *>(data);
    while (size > 0) {
        if (!waitUntilReady(fd, POLLIN, deadline))
            return false;
        const ssize_t received = recv(fd, bytes, size, 0);
        if (received <= 0)
            return false;
        bytes += received;
        size -= static_cast<std::size_t>(received);
    }
    return true;
}

// The text up to its first character that is not printable ASCII: a terminal might take it for a
// command.
std::string printable(const std::string &text) {
    return {text.begin(), std::find_if(text.begin(), text.end(), [](unsigned char letter) {
                return letter < 32 || letter > 126;
            })};
}

std::vector<std::uint8_t> requestOf(const ServerSocket &server) {
    const std::string &name = server.authorisationName;
    const std::string &data = server.authorisationData;
    xcb_setup_request_t head{};
    head.byte_order = std::endian::native == std::endian::little ? 'l' : 'B';
    head.protocol_major_version = X_PROTOCOL;
    head.protocol_minor_version = X_PROTOCOL_REVISION;
    head.authorization_protocol_name_len = static_cast<std::uint16_t>(name.size());
    head.authorization_protocol_data_len = static_cast<std::uint16_t>(data.size());
    std::vector<std::uint8_t> request;
    append(request, &head, sizeof head);
    append(request, name.data(), name.size());
    append(request, data.data(), data.size());
    return request;
}

Handshake tryOnce(Clock::time_point deadline) {
    Handshake result;
    ServerSocket server = openServerSocket(deadline);
    if (!server.descriptor.valid()) {
        result.answer = server.silent ? Answer::Silence : Answer::NoServer;
        return result;
    }
    result.hadKey = !server.authorisationName.empty();
    const int fd = server.descriptor.get();
    const std::vector<std::uint8_t> request = requestOf(server);
    result.answer = Answer::HangUp;
    if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) < 0)
        return result;
    xcb_setup_failed_t reply{};
    if (!receive(fd, &reply, sizeof reply, deadline)) {
        if (Clock::now() >= deadline)
            result.answer = Answer::Silence;
        return result;
    }
    constexpr std::uint8_t success = 1;
    if (reply.status == success) {
        result.answer = Answer::Welcome;
        result.client = std::move(server.descriptor);
        return result;
    }
    result.answer = Answer::Refusal;
    std::string text(std::size_t{reply.length} * 4, '\0');
    if (receive(fd, text.data(), text.size(), deadline))
        result.reason = printable(text);
    return result;
}

} // namespace

Handshake shakeHands(Clock::time_point deadline) {
    for (bool hungUp = false;; hungUp = true) {
        Handshake result = tryOnce(deadline);
        // The last try may have had no time to get an answer.
        if (hungUp && result.answer == Answer::Silence)
            result.answer = Answer::HangUp;
        if (result.answer != Answer::HangUp || Clock::now() + pauseAfterHangUp >= deadline)
            return result;
        std::this_thread::sleep_for(pauseAfterHangUp);
    }
}

Descriptor becomeClient(Clock::time_point deadline) {
    return std::move(shakeHands(deadline).client);
}

} // namespace platform::x11
