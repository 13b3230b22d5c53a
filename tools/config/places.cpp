#include "tools/config/tree.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <map>
#include <rapidjson/pointer.h>

namespace config {

namespace {

using Value = rapidjson::Value;

// The part of the tree that problems point to.
struct Wanted {
    const Wanted *above = nullptr;
    std::map<std::string, Wanted, std::less<>> below;
    std::vector<std::size_t> offsets; // of each that has this pointer, in the order of the text

    std::size_t offset(std::size_t occurrence) const {
        if (offsets.empty())
            return above->offset(0);
        return offsets[std::min(occurrence, offsets.size() - 1)];
    }
};

} // namespace

// The place behind `text`, which begins at `place`.
static Place passOver(std::string_view text, Place place) {
    for (const char c : text)
        if (c == '\n') {
            ++place.line;
            place.column = 1;
        } else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) { // where a character begins
            ++place.column;
        }
    return place;
}

Place placeAt(const std::string &text, std::size_t offset) {
    return passOver(std::string_view(text).substr(0, offset), {1, 1});
}

std::string stepInto(const std::string &pointer, std::string_view name) {
    std::string longer = pointer + "/";
    for (const char c : name) {
        if (c == '~')
            longer += "~0";
        else if (c == '/')
            longer += "~1";
        else
            longer += c;
    }
    return longer;
}

std::string stepInto(const std::string &pointer, std::size_t index) {
    return pointer + "/" + std::to_string(index);
}

std::string shownPointer(const std::string &pointer) {
    const bool isPlain = std::all_of(pointer.begin(), pointer.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x20 && byte != 0x7F;
    });
    constexpr std::size_t longest = 120;
    return isPlain && pointer.size() <= longest ? pointer : lights::quote(pointer);
}

// The part that the pointer leads to, which is made if there is none yet.
static const Wanted &want(Wanted &root, const std::string &pointer) {
    Wanted *at = &root;
    const rapidjson::Pointer steps(pointer.data(), pointer.size());
    for (std::size_t i = 0; i < steps.GetTokenCount(); ++i) {
        const auto &step = steps.GetTokens()[i];
        Wanted &below = at->below[std::string(step.name, step.length)];
        below.above = at;
        at = &below;
    }
    return *at;
}

// Notes where everything is that is wanted of what the value holds; `node` is the value's.
static void find(const std::vector<Node> &nodes, const Value &value, std::size_t node,
                 Wanted &wanted) {
    if (wanted.below.empty())
        return;
    std::size_t child = node + 1;
    const auto pass = [&](std::string_view name, const Value &inside) {
        if (const auto found = wanted.below.find(name); found != wanted.below.end()) {
            auto &offsets = found->second.offsets;
            offsets.push_back(nodes[child].offset);
            // What stands in a later member of one name is not what anybody reads.
            if (offsets.size() == 1)
                find(nodes, inside, child, found->second);
        }
        child = nodes[child].end;
    };
    if (value.IsObject())
        for (const auto &member : value.GetObject())
            pass({member.name.GetString(), member.name.GetStringLength()}, member.value);
    if (value.IsArray())
        for (rapidjson::SizeType i = 0; i < value.Size(); ++i)
            pass(std::to_string(i), value[i]);
}

void locate(const Reading &reading, std::vector<Problem> &problems) {
    if (problems.empty())
        return;
    Wanted root;
    for (const auto &problem : problems)
        want(root, problem.pointer);
    root.offsets.push_back(reading.tree->nodes.front().offset);
    find(reading.tree->nodes, reading.tree->root, 0, root);

    std::vector<std::pair<std::size_t, Problem *>> offsets;
    offsets.reserve(problems.size());
    for (auto &problem : problems)
        offsets.emplace_back(want(root, problem.pointer).offset(problem.occurrence), &problem);
    std::sort(offsets.begin(), offsets.end());
    // Each costs the text since the last.
    Place place = {1, 1};
    std::size_t reached = 0;
    for (const auto &[offset, problem] : offsets) {
        place = passOver(std::string_view(reading.text).substr(reached, offset - reached), place);
        reached = offset;
        problem->place = place;
    }
}

} // namespace config
