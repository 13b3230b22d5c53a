// The internal steps of reading a document: parsing, checking, locating and warning.
#pragma once

#include "tools/config/configDocument.h"

#include <cstddef>
#include <cstdint>
#include <rapidjson/document.h>
#include <string>
#include <string_view>
#include <vector>

namespace config {

// A document is five levels deep. The parser and the functions that walk its tree recurse per
// level, so deep nesting could overflow the stack.
inline constexpr std::size_t deepestNesting = 256;

// A wall of ten thousand panels has about fifty thousand values. The tree of a text that consists
// of tiny values takes many times the text's size in memory.
inline constexpr std::size_t maxValues = 4'000'000;

// One value of the tree. Nodes are in text order: each is followed by those inside it.
struct Node {
    std::uint32_t offset; // of the value in the text; for a member, of its name
    std::uint32_t end;    // index of the node after all those inside this one
};

struct Tree {
    rapidjson::Document root;
    std::vector<Node> nodes;
};

// Parses exactly as the library does. Null on failure, with the place and the reason in `problem`.
// In addition it refuses a zero byte, which the library would take for the end of the text, nesting
// deeper than `deepestNesting`, and more values than `maxValues`.
std::shared_ptr<const Tree> parse(const std::string &text, Problem &problem);

// The place of the byte at `offset`, or of the text's end.
Place placeAt(const std::string &text, std::size_t offset);

// The pointer to a member or an element of the value at `pointer`.
std::string stepInto(const std::string &pointer, std::string_view name);
std::string stepInto(const std::string &pointer, std::size_t index);

// docs/mirror-config.schema.json
extern const char schemaText[];

// Checks the reading's tree against the schema and adds the problems, without places.
//
// Errors come in the order in which the library would find them: it reads members in the schema's
// order. Of members with the same name the first counts, as in the library's lookup. Adds at most
// `maxProblems` errors and one that says that there may be more.
//
// The unknown members get a warning for each member that the schema does not name, and for each
// repeated member: at most `maxProblems`, and only for objects that the library would read.
void check(Reading &reading);

// Warnings and cautions about a document's values; those that depend on the screen only if it is
// given. Without places. Lists at most `maxProblems`.
std::vector<Problem> findWarnings(const Document &document, const std::optional<ScreenSize> &screen,
                                  const FaultyParts &faulty);

} // namespace config
