// The configuration document as the programs read it: parsed and checked before the library sees
// it, since the library stops the process on a member that is missing or mistyped.
#pragma once

#include "tools/lights/device.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace config {

using lights::DeviceEntry;
using lights::PanelEntry;

struct Document {
    std::int32_t displayID = 0;
    std::int32_t mode = 0;
    std::vector<DeviceEntry> devices;
};

// The document as JSON text, one panel a line, with the members that mirroring reads.
std::string documentText(const Document &document);

// Where something stands in a text; both count from 1, columns in characters. 0: nowhere.
struct Place {
    std::size_t line = 0;
    std::size_t column = 0;
};

enum class Severity {
    Error,   // the library stops at it
    Warning, // read, but hardly meant that way
    Caution, // meant that way, and to be known
};

// One thing to say about a document.
struct Problem {
    std::string pointer;  // JSON pointer (RFC 6901); empty for the whole document
    std::string message;  // what was expected and what was found, one line
    std::string fix = {}; // how to fix it, one line; empty when the message says all
    Place place = {};     // of the member's name or the array's element; of a missing member: where
                          // the object begins that lacks it
    Severity severity = Severity::Error;
    std::size_t occurrence = 0; // of members with one name, which one is meant; the first is 0
};

// No more problems than this are listed; one more says that there are others.
inline constexpr std::size_t mostProblems = 1000;

struct Tree; // what the parser found, and where

// A text that has been read. `document` is complete exactly when no problem is an error.
struct Reading {
    std::string text;
    Document document;
    std::vector<Problem> problems;
    std::vector<Problem> unknownMembers; // warnings: not read by the library, or there again
    std::shared_ptr<const Tree> tree;    // null when the text does not parse
};

// The contents of the file at `path`; "-" is standard input, read to its end however long that
// takes. Nothing when it cannot be read, with the reason in words in `reason`: a named pipe may be
// silent for `patience`, and more than 64 MiB are taken for a mistake (a device file, a film).
std::optional<std::string>
readTextFile(const std::string &path, std::string &reason,
             std::chrono::milliseconds patience = std::chrono::seconds(30));

// Parses `text` and checks it against the schema; finds all errors, not only the first, and lists
// nothing but errors as problems. A text without problems is one that the library reads to its end;
// members that the library does not read may be anything.
Reading readText(std::string text);

// Adds the warnings and cautions, of the panels' places only when a screen is given.
struct ScreenSize {
    std::uint32_t width = 0; // pixels
    std::uint32_t height = 0;
};
Reading review(Reading reading, const std::optional<ScreenSize> &screen);

// Which parts of a document carry no meaning since errors were found in them.
class FaultyParts {
public:
    explicit FaultyParts(const std::vector<Problem> &errors);

    // Whether there is an error at `pointer`, or at something that it lies in.
    bool include(const std::string &pointer) const;

private:
    std::set<std::string> pointers;
};

// Two numbers from 1 to `largest` with an x between them, such as 1920x1080; nothing when it is not
// that.
std::optional<ScreenSize> parseScreenSize(const std::string &text, std::uint32_t largest);

// Fills in the places of all problems from their pointers. A pointer to nothing gets the place of
// the innermost thing on its way that is there. The text must have parsed, unless there is nothing
// to place.
void locate(const Reading &reading, std::vector<Problem> &problems);

// The pointer to print: one line without control characters, cut when it is very long.
std::string shownPointer(const std::string &pointer);

// "PATH: line L, column C: POINTER: MESSAGE", ready to print, without the parts that there are not.
// One line whatever the document holds.
std::string describe(const std::string &path, const Problem &problem);

} // namespace config
