// Owner of one file descriptor.
#pragma once

#include <unistd.h>
#include <utility>

namespace platform {

class Descriptor {
public:
    explicit Descriptor(int fd = -1) : fd(fd) {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor(Descriptor &&other) noexcept : fd(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept {
        reset();
        fd = other.release();
        return *this;
    }

    int get() const { return fd; }
    bool valid() const { return fd >= 0; }
    int release() { return std::exchange(fd, -1); }
    void reset() {
        if (fd >= 0)
            close(fd);
        fd = -1;
    }

private:
    int fd;
};

} // namespace platform
