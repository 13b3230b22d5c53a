// The steps from a text to all that there is to say about it.
#pragma once

#include "tools/config/configDocument.h"

#include <cstddef>
#include <cstdint>
#include <rapidjson/document.h>
#include <string>
#include <string_view>
#include <vector>

namespace config {

// A document is five levels deep. The parser, and whatever walks through its tree, calls itself
// once a level, so that a text of nothing but brackets could end the process.
inline constexpr std::size_t deepestNesting = 256;

// A wall of ten thousand panels has some fifty thousand values. A text of nothing but values needs
// many times its size in memory.
inline constexpr std::size_t mostValues = 4'000'000;

// One value of the tree. Nodes have the order of the text: behind each come those that it holds.
struct Node {
    std::uint32_t offset; // where the value begins in the text; a member's: where its name does
    std::uint32_t end;    // the node behind all that it holds
};

struct Tree {
    rapidjson::Document root;
    std::vector<Node> nodes;
};

// Parses in just the way the library does. Null when that fails, with the place and the reason in
// `problem`. Beyond what the library's parser refuses, this refuses a zero byte, at which the
// library would take the text to end, nesting deeper than `deepestNesting`, and more values than
// `mostValues`.
std::shared_ptr<const Tree> parse(const std::string &text, Problem &problem);

// The place of a byte, or of the text's end.
Place placeAt(const std::string &text, std::size_t offset);

// The pointer to a member of what `pointer` points to, or to an element.
std::string stepInto(const std::string &pointer, std::string_view name);
std::string stepInto(const std::string &pointer, std::size_t index);

// docs/mirror-config.schema.json
extern const char schemaText[];

// Adds what the schema finds in the reading's tree, without places.
//
// Errors come in the order in which the library would meet them: it reads the members in the order
// in which the schema lists them. Of members with one name the first counts, as in the library's
// lookup. Lists at most `mostProblems` and one that says that there are more.
//
// Among the unknown members is a warning for each member that the schema does not name, and for
// each that is there again. Lists at most `mostProblems`, and those only of what the library would
// read.
void check(Reading &reading);

// Warnings and cautions about a document's values, of the panels' places only when a screen is
// given. Without places. Lists at most `mostProblems`.
std::vector<Problem> findWarnings(const Document &document, const std::optional<ScreenSize> &screen,
                                  const FaultyParts &faulty);

} // namespace config
