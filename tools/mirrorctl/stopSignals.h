// Waiting for Ctrl-C and its like.
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>

namespace mirrorctl {

// From its construction on, SIGINT, SIGTERM and SIGHUP are held back on this thread and on all
// threads started afterwards. A thread of its own takes them, so that they reach nobody's handler:
// the library's would end the process with the signal's number. Construct it before the library
// starts a thread; it lasts for the process. Any thread may ask it.
//
// A SIGHUP or SIGTERM that was ignored before stays ignored, as SIGHUP is under nohup. An ignored
// SIGINT is taken all the same: shells set it so for what a script starts in the background.
class StopSignals {
public:
    // Throws std::system_error when there is no thread or pipe to be had.
    StopSignals();

    // The number of the first signal that has come, or 0. Does not wait.
    int take() const;

    // Returns as soon as one of the descriptors (those that are not -1) can be read, with 0; when a
    // signal has come, with its number; after `timeout` seconds, if given, with 0.
    int waitForInput(std::initializer_list<int> descriptors, std::optional<double> timeout) const;

private:
    struct Come;
    std::shared_ptr<Come> come;
};

} // namespace mirrorctl
