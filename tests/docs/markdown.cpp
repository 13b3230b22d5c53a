#include "tests/docs/markdown.h"

#include "tests/support/files.h"

#include <algorithm>
#include <cctype>
#include <cmark.h>
#include <filesystem>
#include <memory>
#include <regex>

namespace fs = std::filesystem;

namespace test {

namespace {

using Tree = std::unique_ptr<cmark_node, decltype(&cmark_node_free)>;
using Walk = std::unique_ptr<cmark_iter, decltype(&cmark_iter_free)>;

// Calls `use` with this node and all nodes below it, in reading order.
template <class Use> void forEachNode(cmark_node *root, Use use) {
    const Walk walk(cmark_iter_new(root), cmark_iter_free);
    for (cmark_event_type event; (event = cmark_iter_next(walk.get())) != CMARK_EVENT_DONE;)
        if (event == CMARK_EVENT_ENTER)
            use(cmark_iter_get_node(walk.get()));
}

// Derives the anchor from the heading's text as code hosts do.
std::string anchorOf(cmark_node *heading) {
    std::string anchor;
    forEachNode(heading, [&anchor](cmark_node *node) {
        const char *text = cmark_node_get_literal(node);
        for (const char letter : std::string(text == nullptr ? "" : text)) {
            const auto byte = static_cast<unsigned char>(letter);
            if (std::isalnum(byte) || byte >= 0x80 || letter == '-' || letter == '_')
                anchor += static_cast<char>(std::tolower(byte));
            else if (letter == ' ')
                anchor += '-';
        }
    });
    return anchor;
}

void addAnchor(Page &page, cmark_node *heading) {
    const std::string first = anchorOf(heading);
    std::string anchor = first;
    for (int number = 1; !page.anchors.insert(anchor).second; ++number)
        anchor = first + '-' + std::to_string(number);
}

} // namespace

Page readPage(const std::string &path, const std::string &text) {
    Page page;
    page.path = path;
    const Tree tree(cmark_parse_document(text.data(), text.size(), CMARK_OPT_DEFAULT),
                    cmark_node_free);
    forEachNode(tree.get(), [&page](cmark_node *node) {
        const int line = cmark_node_get_start_line(node);
        switch (cmark_node_get_type(node)) {
        case CMARK_NODE_HEADING:
            addAnchor(page, node);
            break;
        case CMARK_NODE_LINK:
        case CMARK_NODE_IMAGE:
            page.links.push_back(
                {cmark_node_get_url(node), line, cmark_node_get_type(node) == CMARK_NODE_IMAGE});
            break;
        case CMARK_NODE_CODE_BLOCK: {
            const std::string language = cmark_node_get_fence_info(node);
            page.code.push_back(
                {cmark_node_get_literal(node), language, language.empty() ? line : line + 1});
            break;
        }
        default:
            break;
        }
    });
    return page;
}

std::vector<Page> pagesOf(const std::string &tree) {
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

std::string place(const Page &page, int line) {
    return page.path + ':' + std::to_string(line);
}

const Page *pageAt(const std::vector<Page> &pages, const std::string &path) {
    const auto found = std::find_if(pages.begin(), pages.end(),
                                    [&](const Page &page) { return page.path == path; });
    return found == pages.end() ? nullptr : &*found;
}

std::string brokenLinks(const std::string &tree, const std::vector<Page> &pages, const Page &page) {
    std::string broken;
    for (const Link &link : page.links) {
        if (std::regex_search(link.target, std::regex("^[a-z]+:")))
            continue; // an external link
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
