// An untrusted Wayland compositor: whatever events it sends, displays are listed, captured and
// painted without memory errors. The events come in over a socket, a few whenever the client reads,
// so that they also reach objects that the client has made meanwhile.
#include "fuzz/require.h"
#include "platform/wayland/capture.h"
#include "platform/wayland/client.h"
#include "platform/wayland/compositorSocket.h"

#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <sys/socket.h>
#include <utility>
#include <vector>

using fuzz::require;
using platform::Descriptor;
namespace wayland = platform::wayland;

namespace {

FuzzedDataProvider *input = nullptr;
Descriptor server;
int (*realRead)(wl_display *) = nullptr;

void append(std::vector<std::uint32_t> &message, const std::string &text) {
    const std::size_t bytes = text.size() + 1;
    message.push_back(static_cast<std::uint32_t>(bytes));
    const std::size_t begin = message.size();
    message.resize(begin + (bytes + 3) / 4);
    std::memcpy(&message[begin], text.c_str(), bytes);
}

// An event of the registry, or of any object.
std::vector<std::uint32_t> nextEvent() {
    static const char *const interfaces[] = {"wl_output", "wl_shm", "zwlr_screencopy_manager_v1",
                                             "zxdg_output_manager_v1", "wl_seat"};
    std::vector<std::uint32_t> message(2);
    std::uint32_t object = 2;
    std::uint32_t opcode = 0;
    if (input->ConsumeBool()) {
        message.push_back(input->ConsumeIntegral<std::uint8_t>());
        append(message, input->PickValueInArray(interfaces));
        message.push_back(input->ConsumeIntegralInRange(0u, 5u));
    } else {
        object = input->ConsumeIntegralInRange(0u, 12u);
        opcode = input->ConsumeIntegralInRange(0u, 7u);
        for (int words = input->ConsumeIntegralInRange(0, 10); words > 0; --words)
            if (input->ConsumeIntegralInRange(0, 3) == 0)
                append(message, input->ConsumeRandomLengthString(12));
            else
                message.push_back(input->ConsumeBool() ? input->ConsumeIntegralInRange(0u, 64u)
                                                       : input->ConsumeIntegral<std::uint32_t>());
    }
    message[0] = object;
    message[1] = static_cast<std::uint32_t>(message.size() * 4) << 16 | opcode;
    return message;
}

int readEvents(wl_display *display) {
    const int result = realRead(display);
    for (int events = 0; events < 3 && input->remaining_bytes() > 0; ++events) {
        const std::vector<std::uint32_t> message = nextEvent();
        send(server.get(), message.data(), message.size() * 4, MSG_NOSIGNAL | MSG_DONTWAIT);
    }
    if (input->remaining_bytes() == 0)
        shutdown(server.get(), SHUT_WR);
    return result;
}

void capture(std::uint32_t display) {
    platform::FrameGate gate;
    const int width = input->ConsumeIntegralInRange(1, 60);
    const int height = input->ConsumeIntegralInRange(1, 60);
    const auto running = wayland::Capture::open({display, width, height, {}}, gate);
    if (!running)
        return;
    std::vector<std::uint8_t> copy(static_cast<std::size_t>(width * height) * 4);
    running->run([&](platform::CaptureEvent event) {
        if (event != platform::CaptureEvent::Frame)
            return;
        std::memcpy(copy.data(), running->pixels(), copy.size());
        gate.begin();
        gate.giveBack();
    });
}

} // namespace

wayland::CompositorSocket wayland::openCompositorSocket() {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "there are sockets");
    server = Descriptor(ends[1]);
    return {Descriptor(ends[0]), false};
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const wayland::Library library;
    require(library.isLoaded(), "the client library is installed");
    if (realRead == nullptr)
        realRead = std::exchange(wl_display_read_events, readEvents);
    FuzzedDataProvider provider(data, size);
    input = &provider;
    const bool takesPicture = provider.ConsumeBool();
    // The identifier of the name "a".
    constexpr std::uint32_t display = 0x640c292c;
    if (!takesPicture) {
        capture(display);
        return 0;
    }
    const auto picture = wayland::Capture::picture(display);
    if (!picture)
        return 0;
    std::vector<std::uint8_t> copy(picture->width * picture->height * 4);
    std::memcpy(copy.data(), picture->pixels.get(), copy.size());
    return 0;
}
