// The configuration document as the programs read it: parsed and checked before the library sees
// it, since the library stops the process on a member that is missing or mistyped.
#pragma once

#include "tools/config/screenSize.h"

#include <cstddef>
#include <cstdint>
#include <optional>
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

// Where something stands in a text; both count from 1, columns in characters. 0: nowhere.
struct Place {
    std::size_t line = 0;
    std::size_t column = 0;
};

enum class Severity {
    error,   // the library stops at it
    warning, // read, but hardly meant that way
    caution, // meant that way, and to be known
};

// One thing to say about a document.
struct Problem {
    std::string pointer;     // JSON pointer (RFC 6901); empty for the whole document
    std::string message;     // what was expected and what was found, one line
    std::string remedy = {}; // how to fix it, one line; empty when the message says all
    Place place = {}; // of the member's name or the array's element; of a missing member: where
                      // the object begins that lacks it
    Severity severity = Severity::error;
    std::size_t occurrence = 0; // of members with one name, which one is meant; the first is 0
};

// No more problems than this are listed; one more says that there are others.
inline constexpr std::size_t mostProblems = 1000;

// A text that has been read. `document` is complete exactly when no problem is an error.
struct Reading {
    std::string text;
    Document document;
    std::vector<Problem> problems;
};

// Parses `text` and checks it against the schema; finds all errors, not only the first, and nothing
// but errors. A text without problems is one that the library reads to its end; members that the
// library does not read may be anything.
Reading readText(const std::string &text);

// As readText(), and adds the warnings and cautions, of the panels' places only when a screen is
// given.
Reading reviewText(const std::string &text, const std::optional<ScreenSize> &screen);

// Reads a file and then its text; "-" is standard input. A file that cannot be read is one problem
// with an empty pointer.
Reading readFile(const std::string &path);

// "PATH: line L, column C: POINTER: MESSAGE", ready to print, without the parts that there are not.
// One line whatever the document holds.
std::string describe(const std::string &path, const Problem &problem);

} // namespace config
