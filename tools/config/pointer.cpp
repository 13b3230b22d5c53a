#include "tools/config/pointer.h"

#include "tools/config/quote.h"

#include <algorithm>

namespace config {

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

std::vector<std::string> stepsOf(const std::string &pointer) {
    std::vector<std::string> steps;
    for (std::size_t i = 0; i < pointer.size(); ++i) {
        if (pointer[i] == '/')
            steps.emplace_back();
        else if (steps.empty())
            break;
        else if (pointer[i] == '~' && i + 1 < pointer.size())
            steps.back() += pointer[++i] == '1' ? '/' : '~';
        else
            steps.back() += pointer[i];
    }
    return steps;
}

std::string shownPointer(const std::string &pointer) {
    const bool isPlain = std::all_of(pointer.begin(), pointer.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x20 && byte != 0x7F;
    });
    constexpr std::size_t longest = 120;
    if (isPlain && pointer.size() <= longest)
        return pointer;
    return quote(pointer.data(), pointer.size());
}

} // namespace config
