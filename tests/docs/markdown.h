// Parses Markdown pages for the tests of the documents and checks their links.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace test {

struct Link {
    std::string target;
    int line = 0;
    bool isImage = false;
};

// A block of code: fenced, with the language after the fence, or indented by four columns.
struct CodeBlock {
    std::string text;     // every line ends in a line break; without the indentation
    std::string language; // empty without a fence
    int line = 0;         // of its first line of code
};

struct Page {
    std::string path; // relative to the tree's root
    std::set<std::string> anchors;
    std::vector<Link> links;
    std::vector<CodeBlock> code;
};

Page readPage(const std::string &path, const std::string &text);

// Every page of the tree, sorted by path.
std::vector<Page> pagesOf(const std::string &tree);

// "docs/modes.md:12"
std::string place(const Page &page, int line);

// The page at `path`, or null if there is none.
const Page *pageAt(const std::vector<Page> &pages, const std::string &path);

// The broken links of a page of the tree, one per line.
std::string brokenLinks(const std::string &tree, const std::vector<Page> &pages, const Page &page);

} // namespace test
