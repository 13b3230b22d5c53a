#include "tools/config/tree.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <unordered_map>

namespace config {

using Value = rapidjson::Value;

// A part of the document that a problem points to, or an ancestor of one.
struct Wanted {
    bool isPassed = false;
    std::vector<std::size_t> offsets; // of all values with this pointer, in text order
};
using WantedParts = std::unordered_map<std::string, Wanted>; // by pointer

// The place after `text`, which begins at `place`.
static Place passOver(std::string_view text, Place place) {
    for (const char c : text)
        if (c == '\n') {
            ++place.line;
            place.column = 1;
        } else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) { // first byte of a character
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

// Records the offsets of the wanted parts inside the value at `pointer`, whose node is `node`.
static void find(const std::vector<Node> &nodes, const Value &value, std::size_t node,
                 const std::string &pointer, WantedParts &wanted) {
    if (!wanted[pointer].isPassed)
        return;
    std::size_t child = node + 1;
    const auto pass = [&](const std::string &below, const Value &inside) {
        if (const auto found = wanted.find(below); found != wanted.end()) {
            auto &offsets = found->second.offsets;
            offsets.push_back(nodes[child].offset);
            // Of members with the same name only the first is read.
            if (offsets.size() == 1)
                find(nodes, inside, child, below, wanted);
        }
        child = nodes[child].end;
    };
    if (value.IsObject())
        for (const auto &member : value.GetObject())
            pass(stepInto(pointer, {member.name.GetString(), member.name.GetStringLength()}),
                 member.value);
    if (value.IsArray())
        for (rapidjson::SizeType i = 0; i < value.Size(); ++i)
            pass(stepInto(pointer, i), value[i]);
}

static std::size_t offsetOf(const Problem &problem, WantedParts &wanted) {
    std::string part = problem.pointer;
    while (wanted[part].offsets.empty())
        part.erase(part.rfind('/'));
    const auto &offsets = wanted[part].offsets;
    return offsets[std::min(problem.occurrence, offsets.size() - 1)];
}

void locate(const Reading &reading, std::vector<Problem> &problems) {
    if (problems.empty())
        return;
    WantedParts wanted;
    for (const auto &problem : problems) {
        wanted.try_emplace(problem.pointer);
        for (std::string part = problem.pointer; !part.empty();) {
            part.erase(part.rfind('/'));
            wanted[part].isPassed = true;
        }
    }
    wanted[""].offsets.push_back(reading.tree->nodes.front().offset);
    find(reading.tree->nodes, reading.tree->root, 0, "", wanted);

    std::vector<std::pair<std::size_t, Problem *>> offsets;
    offsets.reserve(problems.size());
    for (auto &problem : problems)
        offsets.emplace_back(offsetOf(problem, wanted), &problem);
    std::sort(offsets.begin(), offsets.end());
    // In text order, so that the text is scanned only once.
    Place place = {1, 1};
    std::size_t reached = 0;
    for (const auto &[offset, problem] : offsets) {
        place = passOver(std::string_view(reading.text).substr(reached, offset - reached), place);
        reached = offset;
        problem->place = place;
    }
}

} // namespace config
