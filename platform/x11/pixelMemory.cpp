#include "platform/x11/pixelMemory.h"

#include "platform/objects/pixelFile.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace platform::x11 {

namespace {

constexpr std::uint32_t allPlanes = 0xffffffff;

// Bytes of the screen per request when reading over the connection, but at least one row.
constexpr std::size_t chunkBytes = std::size_t{1} << 20;

} // namespace

PixelMemory::PixelMemory(Connection &connection, std::size_t bytes, Sharing sharing)
    : connection(connection), bytes(bytes) {
    if (bytes == 0)
        return;
    int flags = MAP_PRIVATE | MAP_ANONYMOUS;
    if (sharing == Sharing::WhenPossible && connection.isLocal()) {
        file = makePixelFile(bytes);
        if (file.valid())
            flags = MAP_SHARED | MAP_POPULATE;
    }
    base = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, flags, file.get(), 0);
    if (base == MAP_FAILED)
        throw std::bad_alloc();
    if (file.valid()) {
        share();
        file.reset();
    } else { // in few large pages where available: the cost depends on the number of pages
        madvise(base, bytes, MADV_HUGEPAGE);
        madvise(base, bytes, MADV_POPULATE_WRITE);
    }
}

PixelMemory::~PixelMemory() {
    unshare();
    if (bytes != 0)
        munmap(base, bytes);
}

std::shared_ptr<const std::uint8_t> PixelMemory::take() {
    unshare();
    const std::size_t size = std::exchange(bytes, 0);
    return {static_cast<const std::uint8_t *>(std::exchange(base, nullptr)),
            [size](const std::uint8_t *pixels) {
                if (size != 0)
                    munmap(const_cast<std::uint8_t *>(pixels), size);
            }};
}

void PixelMemory::share() {
    xcb_connection_t *xcb = connection.get();
    if (!connection.has(xcb_shm_id))
        return;
    const Reply<xcb_shm_query_version_reply_t> version(
        xcb_shm_query_version_reply(xcb, xcb_shm_query_version(xcb), nullptr));
    connection.extendWatch();
    const bool takesDescriptors =
        version && (version->major_version > 1 || version->minor_version >= 2);
    if (!takesDescriptors)
        return;
    // XCB closes the descriptor that it is given.
    const xcb_shm_seg_t candidate = xcb_generate_id(xcb);
    const Reply<xcb_generic_error_t> error(xcb_request_check(
        xcb, xcb_shm_attach_fd_checked(xcb, candidate, file.release(), /*read_only=*/0)));
    if (!error && !connection.failed())
        segment = candidate;
}

void PixelMemory::unshare() {
    if (segment != 0)
        xcb_shm_detach(connection.get(), segment);
    segment = 0;
}

ReadOutcome PixelMemory::read(const Rect &area, const PixelFormat &format, std::size_t offset) {
    if (area.empty())
        return ReadOutcome::Done;
    const std::size_t needed = format.rowBytes(area.width) * static_cast<std::size_t>(area.height);
    if (offset > bytes || needed > bytes - offset)
        return ReadOutcome::Refused;
    if (isShared()) {
        bool usable = true;
        const ReadOutcome outcome = readShared(area, offset, usable);
        if (usable)
            return outcome;
        unshare();
    }
    return readOverConnection(area, format, offset);
}

ReadOutcome PixelMemory::readShared(const Rect &area, std::size_t offset, bool &usable) {
    xcb_connection_t *xcb = connection.get();
    xcb_generic_error_t *answer = nullptr;
    const Reply<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(
        xcb,
        xcb_shm_get_image(xcb, connection.root(), static_cast<std::int16_t>(area.x),
                          static_cast<std::int16_t>(area.y), static_cast<std::uint16_t>(area.width),
                          static_cast<std::uint16_t>(area.height), allPlanes,
                          XCB_IMAGE_FORMAT_Z_PIXMAP, segment, static_cast<std::uint32_t>(offset)),
        &answer));
    const Reply<xcb_generic_error_t> error(answer);
    if (reply)
        return ReadOutcome::Done;
    if (!error)
        return ReadOutcome::Gone;
    usable = error->error_code == XCB_MATCH;
    return ReadOutcome::Refused;
}

ReadOutcome PixelMemory::readOverConnection(const Rect &area, const PixelFormat &format,
                                            std::size_t offset) {
    xcb_connection_t *xcb = connection.get();
    const std::size_t rowBytes = format.rowBytes(area.width);
    const int rowsAtOnce = static_cast<int>(std::max<std::size_t>(1, chunkBytes / rowBytes));
    for (int row = 0; row < area.height; row += rowsAtOnce) {
        const int rows = std::min(rowsAtOnce, area.height - row);
        xcb_generic_error_t *answer = nullptr;
        const Reply<xcb_get_image_reply_t> reply(
            xcb_get_image_reply(xcb,
                                xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, connection.root(),
                                              static_cast<std::int16_t>(area.x),
                                              static_cast<std::int16_t>(area.y + row),
                                              static_cast<std::uint16_t>(area.width),
                                              static_cast<std::uint16_t>(rows), allPlanes),
                                &answer));
        const Reply<xcb_generic_error_t> error(answer);
        if (!reply)
            return error ? ReadOutcome::Refused : ReadOutcome::Gone;
        connection.extendWatch();
        const std::size_t wanted = rowBytes * static_cast<std::size_t>(rows);
        if (static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < wanted)
            return ReadOutcome::Refused;
        std::memcpy(data() + offset + rowBytes * static_cast<std::size_t>(row),
                    xcb_get_image_data(reply.get()), wanted);
    }
    return ReadOutcome::Done;
}

} // namespace platform::x11
