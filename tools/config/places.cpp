#include "tools/config/places.h"

#include "tools/config/pointer.h"

#include <algorithm>
#include <map>
#include <memory>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace config {

namespace {

// The part of the tree that somebody asks for.
struct Wanted {
    std::map<std::string, std::unique_ptr<Wanted>, std::less<>> below;
    std::vector<std::size_t> offsets; // of each that has this pointer, in the order of the text
};

// Notes the offsets of what is wanted while the parser goes by. The parser tells of each token
// when it is behind it; what begins next is found from there.
class Noter : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Noter> {
public:
    Noter(const std::string &textToRead, rapidjson::MemoryStream &streamToFollow, Wanted &root)
        : text(textToRead), stream(streamToFollow), next(&root) {}

    // Numbers, strings and literals.
    bool Default() {
        noteValue();
        return advance();
    }
    bool StartObject() { return open(false); }
    bool StartArray() { return open(true); }
    bool Key(const char *name, rapidjson::SizeType length, bool) {
        Frame &frame = frames.back();
        next = child(frame.wanted, {name, length});
        if (next)
            next->offsets.push_back(beginning());
        return advance();
    }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool EndArray(rapidjson::SizeType) { return close(); }

private:
    struct Frame {
        Wanted *wanted; // null: nobody asks for anything in here
        bool isArray;
        std::size_t elements;
    };

    static Wanted *child(Wanted *wanted, std::string_view name) {
        if (!wanted)
            return nullptr;
        const auto found = wanted->below.find(name);
        return found == wanted->below.end() ? nullptr : found->second.get();
    }

    // Where the token begins that the parser has just passed.
    std::size_t beginning() const {
        const auto at = text.find_first_not_of(" \t\r\n,:", passed);
        return at == std::string::npos ? text.size() : at;
    }

    bool advance() {
        passed = stream.Tell();
        return true;
    }

    // Members were noted at their names.
    void noteValue() {
        if (frames.empty()) {
            next->offsets.push_back(beginning());
        } else if (frames.back().isArray) {
            Frame &frame = frames.back();
            next = frame.wanted && !frame.wanted->below.empty()
                       ? child(frame.wanted, std::to_string(frame.elements))
                       : nullptr;
            ++frame.elements;
            if (next)
                next->offsets.push_back(beginning());
        }
    }

    bool open(bool isArray) {
        noteValue();
        // What stands in a later member of one name is not what anybody reads.
        Wanted *inside = next && next->offsets.size() == 1 ? next : nullptr;
        frames.push_back({inside, isArray, 0});
        return advance();
    }
    bool close() {
        frames.pop_back();
        return advance();
    }

    const std::string &text;
    rapidjson::MemoryStream &stream;
    Wanted *next;
    std::vector<Frame> frames;
    std::size_t passed = 0;
};

// Turns rising offsets into places, each at the cost of the text since the last.
class Walker {
public:
    explicit Walker(const std::string &textToRead) : text(textToRead) {}

    Place at(std::size_t offset) {
        for (const std::size_t end = std::min(offset, text.size()); reached < end; ++reached) {
            const auto byte = static_cast<unsigned char>(text[reached]);
            if (byte == '\n') {
                ++place.line;
                place.column = 1;
            } else if ((byte & 0xC0) != 0x80) { // where a character begins
                ++place.column;
            }
        }
        return place;
    }

private:
    const std::string &text;
    std::size_t reached = 0;
    Place place = {1, 1};
};

} // namespace

Place placeAt(const std::string &text, std::size_t offset) {
    return Walker(text).at(offset);
}

static void want(Wanted &root, const std::string &pointer) {
    Wanted *at = &root;
    for (const auto &step : stepsOf(pointer)) {
        auto &below = at->below[step];
        if (!below)
            below = std::make_unique<Wanted>();
        at = below.get();
    }
}

static std::size_t offsetOf(const Wanted &root, const Problem &problem) {
    const Wanted *at = &root;
    for (const auto &step : stepsOf(problem.pointer)) {
        const Wanted *below = at->below.find(step)->second.get();
        if (below->offsets.empty())
            return at->offsets.front();
        at = below;
    }
    return at->offsets[std::min(problem.occurrence, at->offsets.size() - 1)];
}

void locate(const std::string &text, std::vector<Problem> &problems) {
    if (problems.empty())
        return;
    Wanted root;
    for (const auto &problem : problems)
        want(root, problem.pointer);
    rapidjson::MemoryStream stream(text.data(), text.size());
    Noter noter(text, stream, root);
    rapidjson::Reader().Parse(stream, noter);

    std::vector<std::pair<std::size_t, Problem *>> offsets;
    offsets.reserve(problems.size());
    for (auto &problem : problems)
        offsets.emplace_back(offsetOf(root, problem), &problem);
    std::sort(offsets.begin(), offsets.end());
    Walker walker(text);
    for (const auto &[offset, problem] : offsets)
        problem->place = walker.at(offset);
}

} // namespace config
