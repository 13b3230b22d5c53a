#include "platform/x11/handshake.h"

#include "platform/x11/serverSocket.h"

#include <bit>
#include <cstdint>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace platform::x11 {

namespace {

// A server takes up new connections when its reset is over, so that the next handshake waits for
// that by itself. The pause is for a server that hangs up on everybody.
constexpr Clock::duration pauseAfterHangUp = std::chrono::milliseconds(10);

enum class Answer { Welcome, Refusal, HangUp, Silence };

// Everything in a handshake is padded to words of four bytes.
void append(std::vector<std::uint8_t> &request, const void *data, std::size_t length) {
    const auto *bytes = static_cast<const std::uint8_t *>(data);
    request.insert(request.end(), bytes, bytes + length);
    request.resize((request.size() + 3) / 4 * 4);
}

Answer shakeHands(const ServerSocket &server, Clock::time_point deadline) {
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

    const int fd = server.descriptor.get();
    if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) < 0)
        return Answer::HangUp;
    if (!waitUntilReady(fd, POLLIN, deadline))
        return Answer::Silence;
    constexpr std::uint8_t success = 1;
    std::uint8_t status = 0;
    if (recv(fd, &status, sizeof status, 0) <= 0)
        return Answer::HangUp;
    return status == success ? Answer::Welcome : Answer::Refusal;
}

} // namespace

Descriptor becomeClient(Clock::time_point deadline) {
    while (Clock::now() < deadline) {
        ServerSocket server = openServerSocket(deadline);
        if (!server.descriptor.valid())
            break;
        const Answer answer = shakeHands(server, deadline);
        if (answer == Answer::Welcome)
            return std::move(server.descriptor);
        if (answer != Answer::HangUp)
            break;
        std::this_thread::sleep_for(pauseAfterHangUp);
    }
    return Descriptor();
}

} // namespace platform::x11
