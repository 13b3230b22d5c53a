#include "tools/panelwall/steps.h"

#include "tools/recording/compareRecordings.h"

#include <exception>
#include <iostream>

namespace panelwall {

// The exit statuses of comparing programs.
enum { theSame = 0, different = 1, failed = 2 };

// What is wrong with the file's head; empty when it can be read.
static std::string headError(const std::string &path) {
    std::ifstream stream;
    std::string reason = openRecording(path, stream);
    if (!reason.empty())
        return reason;
    RecordingReader reader(stream);
    reader.readHead();
    return reader.error();
}

static int compareOpenable(const std::array<std::string, 2> &paths) {
    bool readable = true;
    for (const std::string &path : paths) {
        if (const std::string error = headError(path); !error.empty()) {
            complain(path, error);
            readable = false;
        }
    }
    if (!readable)
        return failed;

    const Comparison comparison = compareRecordings(
        [&](Side side) { return std::make_unique<std::ifstream>(paths[side], std::ios::binary); });
    std::cout << "first: " << paths[first] << "\nsecond: " << paths[second] << "\n";
    for (const std::string &line : describe(comparison))
        std::cout << line << "\n";
    std::cout.flush();
    bool whole = static_cast<bool>(std::cout);
    for (const Side side : bothSides) {
        if (comparison.errors[side].empty())
            continue;
        complain(paths[side], comparison.errors[side] + "; compared up to there");
        whole = false;
    }
    if (!whole)
        return failed;
    return comparison.differs() ? different : theSame;
}

int compareFiles(const std::string &left, const std::string &right) {
    try {
        return compareOpenable({left, right});
    } catch (const std::exception &error) {
        std::cerr << "panelwall: " << error.what() << "\n";
        return failed;
    }
}

} // namespace panelwall
