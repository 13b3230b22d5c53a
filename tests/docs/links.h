// Links between documents.
#pragma once

#include "tests/docs/markdown.h"

namespace test {

// The page that a link leads to, or null when it leads to another kind of file.
const Page *pageAt(const std::vector<Page> &pages, const std::string &path);

// What is wrong with the links of a page of the tree, a line each.
std::string brokenLinks(const std::string &tree, const std::vector<Page> &pages, const Page &page);

} // namespace test
