#include "tools/config/tree.h"

#include <optional>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <utility>

namespace config {

namespace {

using rapidjson::SizeType;

// Builds the tree from the parser's events and records the offset of each value. The parser reports
// a token after reading it, so the token's start is searched for from the end of the previous one.
class Builder {
public:
    Builder(const std::string &text_, rapidjson::MemoryStream &stream_, Tree &tree)
        : text(text_), stream(stream_), root(tree.root), nodes(tree.nodes) {}

    bool Null() { return note() && root.Null(); }
    bool Bool(bool value) { return note() && root.Bool(value); }
    bool Int(int value) { return note() && root.Int(value); }
    bool Uint(unsigned value) { return note() && root.Uint(value); }
    bool Int64(std::int64_t value) { return note() && root.Int64(value); }
    bool Uint64(std::uint64_t value) { return note() && root.Uint64(value); }
    bool Double(double value) { return note() && root.Double(value); }
    bool RawNumber(const char *value, SizeType length, bool copies) {
        return note() && root.RawNumber(value, length, copies);
    }
    bool String(const char *value, SizeType length, bool copies) {
        return note() && root.String(value, length, copies);
    }
    bool Key(const char *name, SizeType length, bool copies) {
        nameBegins = beginning();
        passed = stream.Tell();
        return root.Key(name, length, copies);
    }
    bool StartObject() { return open() && root.StartObject(); }
    bool StartArray() { return open() && root.StartArray(); }
    bool EndObject(SizeType members) { return close() && root.EndObject(members); }
    bool EndArray(SizeType elements) { return close() && root.EndArray(elements); }

    // The message about an exceeded limit; empty if the parser did not stop at one.
    std::string excess;

    // The offset of the next token.
    std::size_t beginning() const {
        const auto at = text.find_first_not_of(" \t\r\n,:", passed);
        return at == std::string::npos ? text.size() : at;
    }

private:
    bool failWith(const std::string &expected) {
        excess = "expected " + expected + ", found one more";
        return false;
    }

    bool note() {
        if (nodes.size() == maxValues)
            return failWith("at most " + std::to_string(maxValues) + " values");
        const auto number = static_cast<std::uint32_t>(nodes.size());
        nodes.push_back({static_cast<std::uint32_t>(nameBegins.value_or(beginning())), number + 1});
        nameBegins.reset();
        passed = stream.Tell();
        return true;
    }

    bool open() {
        if (unclosed.size() == deepestNesting)
            return failWith("nesting no deeper than " + std::to_string(deepestNesting) + " levels");
        unclosed.push_back(nodes.size());
        return note();
    }
    bool close() {
        nodes[unclosed.back()].end = static_cast<std::uint32_t>(nodes.size());
        unclosed.pop_back();
        passed = stream.Tell();
        return true;
    }

    const std::string &text;
    rapidjson::MemoryStream &stream;
    rapidjson::Document &root;
    std::vector<Node> &nodes;
    std::vector<std::size_t> unclosed; // the nodes of objects and arrays
    std::optional<std::size_t> nameBegins;
    std::size_t passed = 0;
};

} // namespace

// Whether the text begins with a comment in the syntax of another format.
static bool beginsWithComment(std::string_view text) {
    return text.starts_with("//") || text.starts_with("/*") || text.starts_with('#');
}

static const char *fixOf(rapidjson::ParseErrorCode code) {
    using namespace rapidjson;
    static constexpr std::pair<ParseErrorCode, const char *> fixes[] = {
        {kParseErrorDocumentEmpty, "mirrorctl layout makes a configuration to start from"},
        {kParseErrorDocumentRootNotSingular, "take away what follows the closing brace"},
        {kParseErrorValueInvalid,
         "a value is a number, a text in \"quotes\", [...], {...}, true, false or null"},
        {kParseErrorObjectMissName,
         "names stand in \"quotes\"; take away a comma before the closing brace, or close it"},
        {kParseErrorObjectMissColon, "put a colon between the name and its value"},
        {kParseErrorObjectMissCommaOrCurlyBracket,
         "put a comma between the members, or close the brace"},
        {kParseErrorArrayMissCommaOrSquareBracket,
         "put a comma between the elements, or close the bracket"},
        {kParseErrorStringMissQuotationMark, "close the text with a quotation mark"},
        {kParseErrorStringEscapeInvalid, "write a backslash as two"},
        {kParseErrorStringInvalidEncoding,
         "save the file as UTF-8, with line breaks in texts as \\n"},
        {kParseErrorStringUnicodeEscapeInvalidHex,
         "write four hexadecimal digits after \\u, or the character itself"},
        {kParseErrorStringUnicodeSurrogateInvalid,
         "write both halves of the character, or the character itself"},
        {kParseErrorNumberTooBig, "write a smaller number"},
        {kParseErrorNumberMissFraction, "write a digit after the point, or take the point away"},
        {kParseErrorNumberMissExponent, "write a digit after the e, or take the e away"}};
    for (const auto &[error, fix] : fixes)
        if (error == code)
            return fix;
    return "";
}

std::shared_ptr<const Tree> parse(const std::string &text, Problem &problem) {
    const auto fail = [&](std::size_t offset, const std::string &message, const std::string &fix) {
        problem = {"", message, fix, placeAt(text, offset)};
        return nullptr;
    };
    if (const auto zero = text.find('\0'); zero != std::string::npos)
        return fail(zero, "expected JSON text in UTF-8, found a zero byte, which would end it",
                    "choose the file that you meant, or save it as UTF-8 text");
    auto tree = std::make_shared<Tree>();
    rapidjson::MemoryStream stream(text.data(), text.size());
    rapidjson::Reader reader;
    Builder builder(text, stream, *tree);
    const auto build = [&](rapidjson::Document &) {
        return !reader.Parse(stream, builder).IsError();
    };
    tree->root.Populate(build);
    if (!reader.HasParseError())
        return tree;
    if (!builder.excess.empty())
        return fail(builder.beginning(), builder.excess,
                    "choose the file that you meant; a configuration is five levels deep");
    const std::size_t offset = reader.GetErrorOffset();
    if (beginsWithComment(std::string_view(text).substr(offset)))
        return fail(offset, "found a comment; JSON has no comments", "remove the comments");
    return fail(offset, rapidjson::GetParseError_En(reader.GetParseErrorCode()),
                text.starts_with("\xEF\xBB\xBF")
                    ? "the text begins with a byte order mark; save it without one"
                    : fixOf(reader.GetParseErrorCode()));
}

} // namespace config
