// The configuration document as the programs read it: parsed and checked before the library sees
// it, since the library stops the process on a member that is missing or mistyped.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace config {

struct PanelEntry {
    std::int32_t panelID = 0;
    std::int32_t centroidX = 0; // screen pixels
    std::int32_t centroidY = 0;
};

struct DeviceEntry {
    std::string ip;
    std::int32_t controlVersion = 0; // 1: narrow layout, port 60221; else wide, port 60222
    std::int32_t shapeType = 0;
    double scaleFactor = 0.0;
    std::vector<PanelEntry> panels;

    int port() const { return controlVersion == 1 ? 60221 : 60222; }
};

struct Document {
    std::int32_t displayID = 0;
    std::int32_t mode = 0;
    std::vector<DeviceEntry> devices;
};

// One thing wrong with a document.
struct Problem {
    std::string pointer; // JSON pointer (RFC 6901); empty for the whole document
    std::string message; // what was expected and what was found, one line
};

// A text that has been read. `document` is complete exactly when `problems` is empty.
struct Reading {
    std::string text;
    Document document;
    std::vector<Problem> problems;
};

// Parses and checks `text`; finds all problems, not only the first. A text without problems is one
// that the library reads to its end; members that the library does not read may be anything.
Reading readText(const std::string &text);

// Reads a file and then its text; "-" is standard input. A file that cannot be read is one problem
// with an empty pointer.
Reading readFile(const std::string &path);

// "PATH: POINTER: MESSAGE", ready to print; without the middle when the pointer is empty.
std::string describe(const std::string &path, const Problem &problem);

} // namespace config
