// The system's calls that make, fill and map memory for frames, standing before the C library's for
// the whole test program, so that a test can have one refused.
#pragma once

namespace test {

enum class Refusal {
    MakeFile,    // memfd_create
    ProtectFile, // fchmod
    FillFile,    // posix_fallocate
    FillInPeace, // posix_fallocate on a thread that an alarm can interrupt, as a long one would be
    MapFrame,    // mmap of as much memory as a frame of 640 x 480 takes
};

// One kind of call fails while one of these exists; one at a time.
class Refused {
public:
    explicit Refused(Refusal what);
    ~Refused();
    Refused(const Refused &) = delete;
    Refused &operator=(const Refused &) = delete;

    // How often it has been refused.
    int times() const;
};

} // namespace test
