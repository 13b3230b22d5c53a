// A recording in a file.
#pragma once

#include "tools/recording/recordingReader.h"

#include <fstream>
#include <string>

namespace panelwall {

// Not copyable, since the reader refers to the stream.
class RecordingFile {
public:
    explicit RecordingFile(const std::string &filePath) : path(filePath), reader(stream) {}
    RecordingFile(const RecordingFile &) = delete;
    RecordingFile &operator=(const RecordingFile &) = delete;

    // Opens the file and reads the head. False when that fails, with the reason in error(). Only
    // a regular file will do: reading from anything else could wait. Called once.
    bool open();

    // The first thing wrong with the file; empty while nothing is.
    std::string error() const { return obstacle.empty() ? reader.error() : obstacle; }

    const std::string path;

private:
    std::ifstream stream;
    std::string obstacle;

public:
    RecordingReader reader;
};

} // namespace panelwall
