#include "tools/config/configDocument.h"

#include "tools/config/advice.h"
#include "tools/config/check.h"
#include "tools/config/parse.h"
#include "tools/config/places.h"
#include "tools/config/pointer.h"
#include "tools/config/readDocument.h"
#include "tools/config/surplus.h"
#include "tools/config/textFile.h"

namespace config {

Reading readText(const std::string &text) {
    Reading reading;
    reading.text = text;
    rapidjson::Document tree;
    Problem problem;
    if (parse(text, tree, problem)) {
        reading.problems = check(tree);
        reading.document = readDocument(tree);
        locate(text, reading.problems);
    } else {
        reading.problems.push_back(problem);
    }
    return reading;
}

// All that is wrong or doubtful with a document that could be parsed.
static void review(const rapidjson::Value &tree, const std::optional<ScreenSize> &screen,
                   Reading &reading) {
    reading.problems = check(tree);
    reading.document = readDocument(tree);
    const Unsound unsound(reading.problems);
    const auto append = [&](std::vector<Problem> more) {
        for (auto &one : more)
            if (reading.problems.size() <= mostProblems)
                reading.problems.push_back(std::move(one));
    };
    append(surplusMembers(tree));
    append(advise(reading.document, screen, unsound));
    locate(reading.text, reading.problems);
}

Reading reviewText(const std::string &text, const std::optional<ScreenSize> &screen) {
    Reading reading;
    reading.text = text;
    rapidjson::Document tree;
    Problem problem;
    if (parse(text, tree, problem))
        review(tree, screen, reading);
    else
        reading.problems.push_back(problem);
    return reading;
}

Reading readFile(const std::string &path) {
    std::string reason;
    if (const auto text = readTextFile(path, reason))
        return readText(*text);
    Reading reading;
    reading.problems.push_back({"", "cannot be read: " + reason, ""});
    return reading;
}

std::string describe(const std::string &path, const Problem &problem) {
    std::string text = path + ": ";
    if (problem.place.line > 0)
        text += "line " + std::to_string(problem.place.line) + ", column " +
                std::to_string(problem.place.column) + ": ";
    if (!problem.pointer.empty())
        text += shownPointer(problem.pointer) + ": ";
    return text + problem.message;
}

} // namespace config
