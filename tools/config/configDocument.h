// The configuration document as the programs read it: parsed and checked before the library sees
// it, since the library stops the process on a member that is missing or mistyped.
#pragma once

#include "tools/config/outputs.h"
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
    std::optional<BridgeEntry> bridge = {};
};

// The document as JSON text, one panel per line, with the members that mirroring reads; of the
// outputs, the members that are needed to reach them.
std::string documentText(const Document &document);

// A position in a text. Both count from 1, columns in characters; 0: no position.
struct Place {
    std::size_t line = 0;
    std::size_t column = 0;
};

enum class Severity {
    Error,   // the library or a program refuses it
    Warning, // accepted, but probably a mistake
    Caution, // intended, but the user should know it
};

// An error, warning or caution about a document.
struct Problem {
    std::string pointer;  // JSON pointer (RFC 6901); empty for the whole document
    std::string message;  // what was expected and what was found, one line
    std::string fix = {}; // how to fix it, one line; empty when the message suffices
    Place place = {};     // of the member's name or the array element; for a missing member, of the
                          // object that lacks it
    Severity severity = Severity::Error;
    std::size_t occurrence = 0; // index among the members with the same name
};

// At most this many errors are listed; one more entry then says that there may be others. Warnings
// and cautions are listed up to the same total.
inline constexpr std::size_t maxProblems = 1000;

struct Tree; // the parsed values and their offsets

// The result of reading a text. `document` is complete exactly when no problem is an error.
struct Reading {
    std::string text;
    Document document;
    std::vector<Problem> problems;
    std::vector<Problem> unknownMembers; // warnings: not read by the library, or repeated
    std::shared_ptr<const Tree> tree;    // null when the text does not parse
};

// The contents of the file at `path`; "-" is standard input, read to its end without a timeout.
// Nothing on failure, with the reason in `reason`. Failures include a file that sends nothing for
// `patience` (a named pipe) and more than 64 MiB (a device file or a film, given by mistake).
std::optional<std::string>
readTextFile(const std::string &path, std::string &reason,
             std::chrono::milliseconds patience = std::chrono::seconds(30));

// Parses `text` and checks it against the schema. Finds all errors, not only the first; `problems`
// holds nothing else. The library can read every text without errors; members that it does not read
// may be anything.
Reading readText(std::string text);

struct ScreenSize {
    std::uint32_t width = 0; // pixels
    std::uint32_t height = 0;
};

// Adds the warnings and cautions; those that depend on the screen only if it is given.
Reading review(Reading reading, const std::optional<ScreenSize> &screen);

// The parts of a document whose values mean nothing because they have errors.
class FaultyParts {
public:
    explicit FaultyParts(const std::vector<Problem> &errors);

    // Whether there is an error at `pointer` or at one of its ancestors.
    bool include(const std::string &pointer) const;

private:
    std::set<std::string> pointers;
};

// Two numbers from 1 to `largest` with an x between them, such as 1920x1080; otherwise nothing.
std::optional<ScreenSize> parseScreenSize(const std::string &text, std::uint32_t largest);

// Fills in the places of all problems from their pointers. A pointer to a missing value gets the
// place of its innermost existing ancestor. The text must have parsed, unless `problems` is empty.
void locate(const Reading &reading, std::vector<Problem> &problems);

// The pointer for printing: one line without control characters, truncated if very long.
std::string shownPointer(const std::string &pointer);

// "PATH: line L, column C: POINTER: MESSAGE", ready to print; absent parts are left out. Always one
// line, whatever the document contains.
std::string describe(const std::string &path, const Problem &problem);

} // namespace config
