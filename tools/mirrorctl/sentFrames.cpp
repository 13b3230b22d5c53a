#include "tools/mirrorctl/sentFrames.h"

#include <algorithm>
#include <charconv>
#include <rapidjson/document.h>
#include <stdexcept>

namespace mirrorctl {

[[noreturn]] static void refuse() {
    throw std::runtime_error("the library's text of the frames sent is not understood");
}

static std::vector<unsigned> readNumbers(const std::string &line) {
    std::vector<unsigned> numbers;
    const char *at = line.data();
    const char *const end = at + line.size();
    while (at != end) {
        unsigned number = 0;
        const auto read = std::from_chars(at, end, number);
        if (read.ec != std::errc() || (read.ptr != end && *read.ptr != ' '))
            refuse();
        numbers.push_back(number);
        at = read.ptr == end ? end : read.ptr + 1;
    }
    return numbers;
}

// The panel count, then for each record: identifier, 1, red, green, blue, white, 5.
static SentFrame readLine(const std::string &line) {
    constexpr std::size_t recordSize = 7;
    const std::vector<unsigned> numbers = readNumbers(line);
    if (numbers.size() % recordSize != 1)
        refuse();
    SentFrame frame;
    frame.panelCount = numbers[0];
    for (std::size_t i = 1; i < numbers.size(); i += recordSize)
        frame.records.push_back({numbers[i], {numbers[i + 2], numbers[i + 3], numbers[i + 4]}});
    return frame;
}

std::vector<SentFrame> readSentFrames(const std::string &text) {
    rapidjson::Document tree;
    tree.Parse(text.c_str());
    if (tree.HasParseError() || !tree.IsObject() || !tree.HasMember("devices") ||
        !tree["devices"].IsArray())
        refuse();
    std::vector<SentFrame> frames;
    for (const auto &device : tree["devices"].GetArray()) {
        if (!device.IsObject() || !device.HasMember("animData") || !device["animData"].IsString())
            refuse();
        const std::string line = device["animData"].GetString();
        if (!line.empty())
            frames.push_back(readLine(line));
    }
    return frames;
}

bool showsLight(const std::vector<SentFrame> &frames) {
    return std::any_of(frames.begin(), frames.end(), [](const SentFrame &frame) {
        return std::any_of(frame.records.begin(), frame.records.end(),
                           [](const SentRecord &record) { return !isBlack(record.colour); });
    });
}

} // namespace mirrorctl
