// A pipe within the process, for threads and signal handlers to wake one that polls.
#pragma once

namespace panelwall {

// Owns both ends, which are closed on exec and never wait: a full pipe takes no more, an empty one
// gives nothing.
class Pipe {
public:
    // Throws std::system_error when no pipe can be made.
    Pipe();
    ~Pipe();
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    int readEnd() const { return ends[0]; }
    int writeEnd() const { return ends[1]; }

private:
    int ends[2];
};

} // namespace panelwall
