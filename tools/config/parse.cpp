#include "tools/config/parse.h"

#include "tools/config/places.h"

#include <cstring>
#include <rapidjson/error/en.h>

namespace config {

namespace {

// The first thing in a text that is too much for the parser, if any.
struct Excess {
    std::size_t offset = std::string::npos;
    std::string expected;
};

} // namespace

// Counts the brackets and commas outside of strings. For the valid beginning of any text that gives
// the depth of the parser and the number of values.
static Excess findExcess(const std::string &text) {
    std::size_t depth = 0;
    std::size_t values = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
            continue;
        }
        if (c == '"')
            inString = true;
        const bool opens = c == '[' || c == '{';
        if (opens && ++depth > deepestNesting)
            return {i, "nesting no deeper than " + std::to_string(deepestNesting) +
                           " levels, found one more"};
        if ((c == ']' || c == '}') && depth > 0)
            --depth;
        if ((opens || c == ',') && ++values > mostValues)
            return {i, "at most " + std::to_string(mostValues) + " values, found one more"};
    }
    return {};
}

// Whether a comment begins there, in one of the ways that other formats know.
static bool isComment(const std::string &text, std::size_t offset) {
    const auto begins = [&](const char *mark) {
        return text.compare(offset, std::strlen(mark), mark) == 0;
    };
    return offset < text.size() && (begins("//") || begins("/*") || begins("#"));
}

static const char *remedyOf(rapidjson::ParseErrorCode error) {
    switch (error) {
    case rapidjson::kParseErrorDocumentEmpty:
        return "mirrorctl layout makes a configuration to start from";
    case rapidjson::kParseErrorDocumentRootNotSingular:
        return "take away what follows the closing brace";
    case rapidjson::kParseErrorValueInvalid:
        return "a value is a number, a text in \"quotes\", [...], {...}, true, false or null";
    case rapidjson::kParseErrorObjectMissName:
        return "names stand in \"quotes\"; take away a comma before the closing brace, or close it";
    case rapidjson::kParseErrorObjectMissColon:
        return "put a colon between the name and its value";
    case rapidjson::kParseErrorObjectMissCommaOrCurlyBracket:
        return "put a comma between the members, or close the brace";
    case rapidjson::kParseErrorArrayMissCommaOrSquareBracket:
        return "put a comma between the elements, or close the bracket";
    case rapidjson::kParseErrorStringMissQuotationMark:
        return "close the text with a quotation mark";
    case rapidjson::kParseErrorStringEscapeInvalid:
        return "write a backslash as two";
    case rapidjson::kParseErrorStringInvalidEncoding:
        return "save the file as UTF-8, with line breaks in texts as \\n";
    case rapidjson::kParseErrorStringUnicodeEscapeInvalidHex:
        return "write four hexadecimal digits after \\u, or the character itself";
    case rapidjson::kParseErrorStringUnicodeSurrogateInvalid:
        return "write both halves of the character, or the character itself";
    case rapidjson::kParseErrorNumberTooBig:
        return "write a smaller number";
    case rapidjson::kParseErrorNumberMissFraction:
        return "write a digit after the point, or take the point away";
    case rapidjson::kParseErrorNumberMissExponent:
        return "write a digit after the e, or take the e away";
    default:
        return "";
    }
}

bool parse(const std::string &text, rapidjson::Document &tree, Problem &problem) {
    problem = {};
    if (const auto zero = text.find('\0'); zero != std::string::npos) {
        problem.place = placeAt(text, zero);
        problem.message = "expected JSON text in UTF-8, found a zero byte, which would end it";
        problem.remedy = "choose the file that you meant, or save it as UTF-8 text";
        return false;
    }
    if (const Excess excess = findExcess(text); excess.offset != std::string::npos) {
        problem.place = placeAt(text, excess.offset);
        problem.message = "expected " + excess.expected;
        problem.remedy = "choose the file that you meant; a configuration is five levels deep";
        return false;
    }
    tree.Parse(text.c_str());
    if (tree.HasParseError()) {
        problem.place = placeAt(text, tree.GetErrorOffset());
        if (isComment(text, tree.GetErrorOffset())) {
            problem.message = "found a comment; JSON has no comments";
            problem.remedy = "remove the comments";
            return false;
        }
        problem.message = rapidjson::GetParseError_En(tree.GetParseError());
        if (text.starts_with("\xEF\xBB\xBF"))
            problem.remedy = "the text begins with a byte order mark; save it without one";
        else
            problem.remedy = remedyOf(tree.GetParseError());
        return false;
    }
    return true;
}

} // namespace config
