#include "tests/docs/links.h"

#include <algorithm>
#include <filesystem>
#include <regex>

namespace fs = std::filesystem;

namespace test {

static bool leadsOutside(const std::string &target) {
    return std::regex_search(target, std::regex("^[a-z]+:"));
}

const Page *pageAt(const std::vector<Page> &pages, const std::string &path) {
    const auto found = std::find_if(pages.begin(), pages.end(),
                                    [&](const Page &page) { return page.path == path; });
    return found == pages.end() ? nullptr : &*found;
}

std::string brokenLinks(const std::string &tree, const std::vector<Page> &pages, const Page &page) {
    std::string broken;
    for (const Link &link : page.links) {
        if (leadsOutside(link.target))
            continue;
        const auto hash = link.target.find('#');
        const std::string file = link.target.substr(0, hash);
        const fs::path path =
            file.empty() ? fs::path(page.path) : fs::path(page.path).parent_path() / file;
        const Page *there = pageAt(pages, path.lexically_normal());
        const bool isMissing = !there && (!fs::exists(tree / path) || hash != std::string::npos);
        if (isMissing ||
            (hash != std::string::npos && !there->anchors.count(link.target.substr(hash + 1))))
            broken += place(page, link.line) + ": " + link.target + '\n';
    }
    return broken;
}

} // namespace test
