#include "tools/config/parse.h"

#include <algorithm>
#include <rapidjson/error/en.h>

namespace config {

// "line 3, column 7: ", both counted from 1, columns in characters.
static std::string place(const std::string &text, std::size_t offset) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
    const auto line = 1 + std::count(text.begin(), end, '\n');
    auto lineStart = end;
    while (lineStart != text.begin() && lineStart[-1] != '\n')
        --lineStart;
    const auto startsCharacter = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    };
    const auto column = 1 + std::count_if(lineStart, end, startsCharacter);
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": ";
}

// The offset of the first bracket that opens one level too many, or npos. Counts the brackets
// outside of strings, which for the valid beginning of any text is the depth of the parser.
static std::size_t findAbsurdDepth(const std::string &text) {
    std::size_t depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > deepestNesting)
                return i;
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return std::string::npos;
}

std::optional<rapidjson::Document> parse(const std::string &text, Problem &problem) {
    problem.pointer.clear();
    if (const auto zero = text.find('\0'); zero != std::string::npos) {
        problem.message = place(text, zero) +
                          "expected JSON text in UTF-8, found a zero byte, which would end it";
        return std::nullopt;
    }
    if (const auto bracket = findAbsurdDepth(text); bracket != std::string::npos) {
        problem.message = place(text, bracket) + "expected nesting no deeper than " +
                          std::to_string(deepestNesting) + " levels, found one more";
        return std::nullopt;
    }
    rapidjson::Document tree;
    tree.Parse(text.c_str());
    if (tree.HasParseError()) {
        problem.message =
            place(text, tree.GetErrorOffset()) + rapidjson::GetParseError_En(tree.GetParseError());
        if (text.starts_with("\xEF\xBB\xBF"))
            problem.message += " The text begins with a byte order mark; save it without one.";
        return std::nullopt;
    }
    return tree;
}

} // namespace config
