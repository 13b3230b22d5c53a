#include "tools/config/configDocument.h"

#include "tools/config/check.h"
#include "tools/config/parse.h"
#include "tools/config/textFile.h"

namespace config {

Reading readText(const std::string &text) {
    Reading reading;
    reading.text = text;
    Problem problem;
    if (const auto tree = parse(text, problem))
        reading.document = check(*tree, reading.problems);
    else
        reading.problems.push_back(problem);
    return reading;
}

Reading readFile(const std::string &path) {
    std::string reason;
    if (const auto text = readTextFile(path, reason))
        return readText(*text);
    Reading reading;
    reading.problems.push_back({"", "cannot be read: " + reason});
    return reading;
}

std::string describe(const std::string &path, const Problem &problem) {
    if (problem.pointer.empty())
        return path + ": " + problem.message;
    return path + ": " + problem.pointer + ": " + problem.message;
}

} // namespace config
