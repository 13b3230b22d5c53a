// Links between the documents, and from them into the tree.
#include "tests/docs/markdown.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;
using test::brokenLinks;
using test::Page;
using test::pageAt;

namespace {

TEST(Links, LeadSomewhere) {
    const std::vector<Page> pages = test::pagesOf(TREE);
    ASSERT_FALSE(pages.empty());
    std::size_t links = 0;
    for (const Page &page : pages) {
        EXPECT_EQ(brokenLinks(TREE, pages, page), "");
        links += page.links.size();
    }
    EXPECT_GT(links, 20u);
}

TEST(Links, ThatLeadNowhereAreTold) {
    const auto broken = [](const std::string &text) {
        const std::vector<Page> pages = {
            test::readPage("docs/x.md", "# One `two`, three\n" + text)};
        return brokenLinks(TREE, pages, pages[0]);
    };
    EXPECT_EQ(broken("[a](#one-two-three) [b](https://example.org/) [c](../README.md)"), "");
    EXPECT_EQ(broken("[a](#one-two)"), "docs/x.md:2: #one-two\n");
    EXPECT_EQ(broken("![a](missing.png)"), "docs/x.md:2: missing.png\n");
    EXPECT_EQ(broken("[a](../README.md#nothing)"), "docs/x.md:2: ../README.md#nothing\n");
    EXPECT_EQ(broken("`[a](code)`\n\n    [a](code)\n\n```c\n[a](code)\n```\n"), "");
}

// Readers do not find a page without a link to it.
TEST(Links, ReachEveryPageFromTheReadme) {
    const std::vector<Page> pages = test::pagesOf(TREE);
    std::set<std::string> reached;
    std::vector<std::string> next = {"README.md"};
    while (!next.empty()) {
        const std::string path = next.back();
        next.pop_back();
        const Page *page = pageAt(pages, path);
        if (!page || !reached.insert(path).second)
            continue;
        for (const test::Link &link : page->links)
            next.push_back(
                (fs::path(path).parent_path() / link.target.substr(0, link.target.find('#')))
                    .lexically_normal());
    }
    for (const Page &page : pages)
        EXPECT_EQ(reached.count(page.path), 1u) << page.path;
}

} // namespace
