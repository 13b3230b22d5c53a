// Memory for pixels, shared with the server if possible, and functions that read the screen into
// it.
//
// Shared memory is passed as a descriptor that no other process can open. Where MIT-SHM cannot be
// used (the server is remote or old, or refuses) the same functions read over the connection.
#pragma once

#include "platform/x11/connection.h"
#include "platform/x11/pixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <xcb/shm.h>

namespace platform::x11 {

enum class ReadOutcome {
    Done,
    Refused, // the rectangle is not, or no longer, within the root window
    Gone,    // the server is gone
};

class PixelMemory {
public:
    enum class Sharing { Never, WhenPossible };

    // `bytes` zero bytes whose pages are already allocated. Throws std::bad_alloc. `connection`
    // outlives this object.
    PixelMemory(Connection &connection, std::size_t bytes, Sharing sharing);
    ~PixelMemory();
    PixelMemory(const PixelMemory &) = delete;
    PixelMemory &operator=(const PixelMemory &) = delete;

    std::uint8_t *data() const { return static_cast<std::uint8_t *>(base); }
    std::size_t size() const { return bytes; }
    bool isShared() const { return segment != 0; }

    // Hands the memory over, unshared; this object is then empty.
    std::shared_ptr<const std::uint8_t> take();

    // Reads `area` of the root window, row after row as `format` lays them out, to `offset`.
    ReadOutcome read(const Rect &area, const PixelFormat &format, std::size_t offset);

private:
    void share();
    void unshare();
    ReadOutcome readShared(const Rect &area, std::size_t offset, bool &usable);
    ReadOutcome readOverConnection(const Rect &area, const PixelFormat &format, std::size_t offset);

    Connection &connection;
    std::size_t bytes;
    Descriptor file;
    void *base = nullptr;
    xcb_shm_seg_t segment = 0;
};

} // namespace platform::x11
