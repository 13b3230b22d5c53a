#include "fuzz/fakeServer.h"

#include "platform/objects/coreFoundation.h"
#include "platform/objects/watchdog.h"
#include "platform/x11/handshake.h"
#include "platform/x11/serverSocket.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <unistd.h>
#include <vector>
#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

namespace {

struct Request {
    const xcb_extension_t *extension = nullptr;
    int opcode = 0;
    std::uint16_t width = 0; // of a requested image
    std::uint16_t height = 0;
};

FuzzedDataProvider *input = nullptr;
std::vector<std::uint8_t> setup;
std::vector<Request> requests;
std::uint32_t lastId = 0;

constexpr std::size_t replyHead = 32;
constexpr std::size_t setupHead = 8;
constexpr int randrGetMonitors = XCB_RANDR_GET_MONITORS;

// Memory for a monitor, or its part of the root window, is allocated before its pixels are
// requested. So sizes are either small enough for a quick run or nonsensical.
constexpr unsigned longestSide = 80;
constexpr std::uint16_t nonsensicalSide = 60'000;

template <typename T> void append(std::vector<std::uint8_t> &bytes, const T &value) {
    const auto *from = reinterpret_cast<const std::uint8_t *>(&value);
    bytes.insert(bytes.end(), from, from + sizeof value);
}

// Makes the length field match the bytes, as the client library guarantees.
void finishReply(std::vector<std::uint8_t> &reply) {
    reply.resize(std::max(replyHead, (reply.size() + 3) / 4 * 4));
    const auto words = static_cast<std::uint32_t>((reply.size() - replyHead) / 4);
    reply[0] = 1;
    std::memcpy(&reply[4], &words, sizeof words);
}

void temperSize(std::uint16_t &width, std::uint16_t &height) {
    if (unsigned{width} * height > longestSide * longestSide)
        width = height = nonsensicalSide;
}

void temperRoot(std::vector<std::uint8_t> &reply) {
    xcb_get_geometry_reply_t geometry;
    static_assert(sizeof geometry <= replyHead);
    std::memcpy(&geometry, reply.data(), sizeof geometry);
    temperSize(geometry.width, geometry.height);
    std::memcpy(reply.data(), &geometry, sizeof geometry);
}

void temperMonitors(std::vector<std::uint8_t> &reply) {
    for (std::size_t at = replyHead; at + sizeof(xcb_randr_monitor_info_t) <= reply.size();) {
        xcb_randr_monitor_info_t info;
        std::memcpy(&info, &reply[at], sizeof info);
        temperSize(info.width, info.height);
        std::memcpy(&reply[at], &info, sizeof info);
        at += sizeof info + std::size_t{info.nOutput} * 4;
    }
}

std::vector<std::uint8_t> monitors() {
    std::vector<std::uint8_t> reply(replyHead);
    xcb_randr_get_monitors_reply_t head{};
    head.nMonitors = input->ConsumeIntegralInRange<std::uint32_t>(0, 4);
    std::memcpy(reply.data(), &head, sizeof head);
    for (std::uint32_t i = 0; i < head.nMonitors; ++i) {
        xcb_randr_monitor_info_t info{};
        info.name = i;
        info.x = input->ConsumeIntegralInRange<std::int16_t>(-100, 300);
        info.y = input->ConsumeIntegral<std::int16_t>();
        info.width = input->ConsumeIntegralInRange<std::uint16_t>(0, longestSide);
        info.height = input->ConsumeIntegralInRange<std::uint16_t>(0, longestSide);
        info.nOutput = input->ConsumeIntegralInRange<std::uint16_t>(0, 2);
        append(reply, info);
        reply.resize(reply.size() + info.nOutput * 4u);
    }
    return reply;
}

std::vector<std::uint8_t> anyReply(const Request &request) {
    const bool isMonitors = request.extension != nullptr && request.opcode == randrGetMonitors;
    if (isMonitors && input->ConsumeBool())
        return monitors();
    if (request.width > 0 && input->ConsumeBool()) {
        std::vector<std::uint8_t> image(replyHead + std::size_t{request.width} * request.height * 4,
                                        input->ConsumeIntegral<std::uint8_t>());
        return image;
    }
    auto reply = input->ConsumeBytes<std::uint8_t>(
        replyHead + input->ConsumeIntegralInRange<std::size_t>(0, 160));
    finishReply(reply);
    constexpr int getGeometry = XCB_GET_GEOMETRY;
    if (isMonitors)
        temperMonitors(reply);
    else if (request.extension == nullptr && request.opcode == getGeometry)
        temperRoot(reply);
    return reply;
}

// One root window, mostly with true colour, as is usual for servers.
std::vector<std::uint8_t> usualSetup() {
    xcb_setup_t head{};
    head.status = 1;
    head.roots_len = 1;
    head.pixmap_formats_len = 1;
    head.image_byte_order = input->ConsumeBool();
    head.vendor_len = input->ConsumeIntegralInRange<std::uint16_t>(0, 5);
    std::vector<std::uint8_t> bytes;
    append(bytes, head);
    bytes.resize(bytes.size() + (head.vendor_len + 3u) / 4 * 4);
    static constexpr std::uint8_t depths[] = {24, 16, 15, 30, 0};
    static constexpr std::uint8_t bits[] = {32, 16, 8, 24, 0};
    static constexpr std::uint8_t pads[] = {32, 16, 8, 0, 7, 255};
    xcb_format_t format{};
    format.depth = input->PickValueInArray(depths);
    format.bits_per_pixel = input->PickValueInArray(bits);
    format.scanline_pad = input->PickValueInArray(pads);
    append(bytes, format);
    xcb_screen_t screen{};
    screen.root = 1;
    screen.root_visual = 7;
    screen.root_depth = format.depth;
    screen.allowed_depths_len = 1;
    append(bytes, screen);
    xcb_depth_t depth{};
    depth.depth = format.depth;
    depth.visuals_len = 1;
    append(bytes, depth);
    xcb_visualtype_t visual{};
    visual.visual_id = 7;
    visual._class = input->ConsumeIntegralInRange<std::uint8_t>(0, 7) == 0 ? 3 : 4;
    if (input->ConsumeBool()) {
        visual.red_mask = 0xff0000;
        visual.green_mask = 0xff00;
        visual.blue_mask = 0xff;
    } else {
        visual.red_mask = input->ConsumeIntegral<std::uint32_t>();
        visual.green_mask = input->ConsumeIntegral<std::uint16_t>();
        visual.blue_mask = 0x1fu << input->ConsumeIntegralInRange(0, 31);
    }
    append(bytes, visual);
    return bytes;
}

void makeSetup() {
    if (input->ConsumeIntegralInRange(0, 3) > 0) {
        setup = usualSetup();
        if (input->ConsumeIntegralInRange(0, 3) == 0 && !setup.empty())
            setup[input->ConsumeIntegralInRange<std::size_t>(0, setup.size() - 1)] =
                input->ConsumeIntegral<std::uint8_t>();
    } else {
        setup = input->ConsumeBytes<std::uint8_t>(
            setupHead + input->ConsumeIntegralInRange<std::size_t>(0, 300));
    }
    setup.resize(std::max(setupHead, setup.size() / 4 * 4));
    const auto words = static_cast<std::uint16_t>((setup.size() - setupHead) / 4);
    std::memcpy(&setup[6], &words, sizeof words);
    setup.shrink_to_fit();
}

} // namespace

namespace fuzz {

void setServer(FuzzedDataProvider &theInput) {
    input = &theInput;
    requests.clear();
    lastId = 0;
}

} // namespace fuzz

namespace platform {

namespace x11 {

ServerSocket openServerSocket(Clock::time_point) {
    ServerSocket socket;
    socket.descriptor = Descriptor(dup(STDERR_FILENO));
    socket.screen = input->ConsumeIntegralInRange(0, 2);
    return socket;
}

// Reconnecting always fails.
Descriptor becomeClient(Clock::time_point) {
    return Descriptor();
}

} // namespace x11

Watchdog::Watchdog(int) {}
Watchdog::~Watchdog() {}
void Watchdog::extend() {}

// This program has no streams.
void destroyDisplayStream(ObjectHeader *) {}

} // namespace platform

extern "C" {

// Stands for the client library's opaque type.
static char connectionPlace;
static xcb_connection_t *const theConnection =
    reinterpret_cast<xcb_connection_t *>(&connectionPlace);

xcb_connection_t *xcb_connect_to_fd(int fd, xcb_auth_info_t *) {
    close(fd);
    makeSetup();
    return theConnection;
}

void xcb_disconnect(xcb_connection_t *) {}
int xcb_get_file_descriptor(xcb_connection_t *) {
    return -1;
}
int xcb_connection_has_error(xcb_connection_t *) {
    return input->remaining_bytes() == 0;
}
const xcb_setup_t *xcb_get_setup(xcb_connection_t *) {
    return reinterpret_cast<const xcb_setup_t *>(setup.data());
}
uint32_t xcb_generate_id(xcb_connection_t *) {
    return ++lastId;
}

const xcb_query_extension_reply_t *xcb_get_extension_data(xcb_connection_t *, xcb_extension_t *) {
    static xcb_query_extension_reply_t reply;
    reply.present = input->ConsumeIntegralInRange(0, 15) != 0;
    reply.first_event = 90;
    return input->ConsumeIntegralInRange(0, 31) != 0 ? &reply : nullptr;
}

static unsigned int noteRequest(const xcb_protocol_request_t *request, const struct iovec *vector) {
    Request noted;
    noted.extension = request->ext;
    noted.opcode = request->opcode;
    constexpr int getImage = XCB_GET_IMAGE;
    if (request->ext == nullptr && request->opcode == getImage) {
        xcb_get_image_request_t image;
        std::memcpy(&image, vector[0].iov_base, sizeof image);
        noted.width = image.width;
        noted.height = image.height;
    }
    requests.push_back(noted);
    return static_cast<unsigned>(requests.size());
}

unsigned int xcb_send_request(xcb_connection_t *, int, struct iovec *vector,
                              const xcb_protocol_request_t *request) {
    return noteRequest(request, vector);
}

unsigned int xcb_send_request_with_fds(xcb_connection_t *, int, struct iovec *vector,
                                       const xcb_protocol_request_t *request, unsigned int count,
                                       int *fds) {
    for (unsigned int i = 0; i < count; ++i)
        close(fds[i]);
    return noteRequest(request, vector);
}

void *xcb_wait_for_reply(xcb_connection_t *, unsigned int sequence, xcb_generic_error_t **error) {
    if (error != nullptr)
        *error = nullptr;
    const int kind = input->ConsumeIntegralInRange(0, 15);
    if (sequence == 0 || sequence > requests.size() || kind == 0 || input->remaining_bytes() == 0)
        return nullptr;
    if (kind == 1) {
        if (error != nullptr) {
            *error = static_cast<xcb_generic_error_t *>(std::calloc(1, sizeof **error));
            (*error)->error_code = input->ConsumeIntegral<std::uint8_t>();
        }
        return nullptr;
    }
    std::vector<std::uint8_t> bytes = anyReply(requests[sequence - 1]);
    finishReply(bytes);
    void *reply = std::malloc(bytes.size());
    std::memcpy(reply, bytes.data(), bytes.size());
    return reply;
}

xcb_generic_error_t *xcb_request_check(xcb_connection_t *, xcb_void_cookie_t) {
    if (input->ConsumeIntegralInRange(0, 3) != 0)
        return nullptr;
    return static_cast<xcb_generic_error_t *>(std::calloc(1, sizeof(xcb_generic_error_t)));
}
}
