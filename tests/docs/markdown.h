// What the tests of the documents read of a Markdown page, and where its links lead.
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
    std::string path; // from the tree's root
    std::set<std::string> anchors;
    std::vector<Link> links;
    std::vector<CodeBlock> code;
};

Page readPage(const std::string &path, const std::string &text);

// Every page of the tree, in the order of their paths.
std::vector<Page> pagesOf(const std::string &tree);

// "docs/modes.md:12"
std::string place(const Page &page, int line);

// The page that a link leads to, or null when it leads to another kind of file.
const Page *pageAt(const std::vector<Page> &pages, const std::string &path);

// What is wrong with the links of a page of the tree, a line each.
std::string brokenLinks(const std::string &tree, const std::vector<Page> &pages, const Page &page);

} // namespace test
