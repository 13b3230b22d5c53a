// The installed manual.
#include "tests/docs/markdown.h"
#include "tests/install/installed.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

namespace {

using test::shell;

// The documents that a text names but the folder does not contain.
std::string missing(const std::string &text, const std::string &folder) {
    static const std::regex document("[A-Za-z/-]*[a-z-]+\\.(md|schema\\.json)");
    std::string names;
    for (std::sregex_iterator i(text.begin(), text.end(), document), end; i != end; ++i)
        if (!std::filesystem::exists(folder + "/" + i->str()))
            names += i->str() + "\n";
    return names;
}

TEST(InstalledManual, HasPagesWhoseLinksLeadSomewhere) {
    const test::Installed installed;
    const std::vector<test::Page> pages = test::pagesOf(installed.manual());
    EXPECT_GT(pages.size(), 15u);
    for (const test::Page &page : pages) {
        EXPECT_EQ(test::brokenLinks(installed.manual(), pages, page), "");
        // A link to a file that is not installed becomes plain text; other links remain.
        if (page.path == "README.md") {
            const std::string text = test::fileText(installed.manual() + "/README.md");
            EXPECT_TRUE(test::contains(text, "zsh in tools/completions."));
            EXPECT_TRUE(test::contains(text, "[docs/x11.md](docs/x11.md)"));
        }
    }
}

TEST(InstalledManual, HasEveryDocumentThatProgramsAndTheHeaderName) {
    const test::Installed installed;
    const std::string mirrorctl = installed.at("bin/mirrorctl");
    std::string texts = test::fileText(installed.at("include/mirror/mirrorInterface.h"));
    for (const char *page : {"lightbridge.1", "mirrorctl.1", "panelwall.1"})
        texts +=
            shell("mandoc -T utf8 " + installed.at("share/man/man1/") + page + " | sed 's/.\b//g'")
                .out;
    for (const char *program : {"bin/lightbridge", "bin/panelwall"})
        texts += shell(installed.at(program) + " --help").out;
    texts += shell(mirrorctl +
                   " --help; for command in displays layout check run palette snapshot "
                   "doctor; do " +
                   mirrorctl + " $command --help; done")
                 .out;
    EXPECT_TRUE(test::contains(texts, "docs/recordings.md"));
    EXPECT_EQ(missing(texts, installed.manual()), "");
    EXPECT_EQ(missing("see docs/nothing.md", installed.manual()), "docs/nothing.md\n");
}

} // namespace
