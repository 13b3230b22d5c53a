#include "tests/docs/markdown.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace test {

namespace {

// As code hosts derive it from a heading's text.
std::string anchorOf(const std::string &heading) {
    static const std::regex link(R"(\[([^\]]*)\]\([^)]*\))");
    std::string anchor;
    for (const char letter : std::regex_replace(heading, link, "$1")) {
        const auto byte = static_cast<unsigned char>(letter);
        if (std::isalnum(byte) || byte >= 0x80 || letter == '-' || letter == '_')
            anchor += static_cast<char>(std::tolower(byte));
        else if (letter == ' ')
            anchor += '-';
    }
    return anchor;
}

void addAnchor(Page &page, const std::string &heading) {
    const std::string first = anchorOf(heading);
    std::string anchor = first;
    for (int number = 1; !page.anchors.insert(anchor).second; ++number)
        anchor = first + '-' + std::to_string(number);
}

void addLinks(Page &page, const std::string &line, int number) {
    static const std::regex inlineCode("`[^`]*`");
    static const std::regex link(R"((!?)\[[^\]]*\]\(([^)\s]+)[^)]*\))");
    const std::string text = std::regex_replace(line, inlineCode, "");
    for (std::sregex_iterator i(text.begin(), text.end(), link), end; i != end; ++i)
        page.links.push_back({(*i)[2], number, (*i)[1].length() > 0});
}

bool isIndented(const std::string &line) {
    return line.compare(0, 4, "    ") == 0;
}

} // namespace

Page readPage(const std::string &path, const std::string &text) {
    Page page;
    page.path = path;
    std::istringstream lines(text);
    std::string line;
    bool isFenced = false;
    bool wasBlank = true;
    bool wasCode = false;
    for (int number = 1; std::getline(lines, line); ++number) {
        const auto begin = line.find_first_not_of(' ');
        if (begin != std::string::npos && line.compare(begin, 3, "```") == 0) {
            isFenced = !isFenced;
            if (isFenced)
                page.code.push_back({"", line.substr(begin + 3), number + 1, true});
            wasCode = false;
        } else if (isFenced) {
            page.code.back().text += line + '\n';
        } else if (isIndented(line) && (wasBlank || wasCode)) {
            if (!wasCode)
                page.code.push_back({"", "", number, false});
            page.code.back().text += line.substr(4) + '\n';
            wasCode = true;
        } else {
            wasCode = false;
            if (line.compare(0, 1, "#") == 0)
                addAnchor(page, line.substr(std::min(line.find_first_not_of("# "), line.size())));
            addLinks(page, line, number);
        }
        wasBlank = line.empty();
    }
    return page;
}

std::vector<Page> pagesOf(const std::string &tree) {
    namespace fs = std::filesystem;
    std::vector<Page> pages;
    for (fs::recursive_directory_iterator i(tree), end; i != end; ++i) {
        const std::string name = i->path().filename();
        if (i->is_directory() && (name[0] == '.' || name == "build" || name == "node_modules"))
            i.disable_recursion_pending();
        else if (i->is_regular_file() && i->path().extension() == ".md")
            pages.push_back(readPage(fs::relative(i->path(), tree), fileText(i->path())));
    }
    std::sort(pages.begin(), pages.end(),
              [](const Page &a, const Page &b) { return a.path < b.path; });
    return pages;
}

std::string fileText(const std::string &path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string place(const Page &page, int line) {
    return page.path + ':' + std::to_string(line);
}

} // namespace test
