// The documents' snippets: programs compile, configurations pass the check, commands exist, and
// blocks of shell commands run.
#include "tests/docs/markdown.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;
using test::CodeBlock;
using test::Page;
using test::ProcessResult;
using test::shell;

namespace {

// A folder that looks like a source tree built with the release preset.
class Snippets : public testing::Test {
protected:
    Snippets() {
        fs::create_directory(folder.file("build"));
        fs::create_directory_symlink(BUILD, folder.file("build/release"));
        for (const char *room : {"docs", "examples", "mirror", "scripts", "tests", "tools"})
            fs::create_directory_symlink(fs::path(TREE) / room, folder.file(room));
    }

    // Calls `use` with each block in that language and its place; expects at least one block.
    template <class Use> void forEachBlock(const std::string &language, Use use) {
        int count = 0;
        for (const Page &page : test::pagesOf(TREE))
            for (const CodeBlock &block : page.code)
                if (block.language == language) {
                    use(block, test::place(page, block.line));
                    ++count;
                }
        EXPECT_GT(count, 0) << language;
    }

    const test::Folder folder;
};

// "cpp" is only for the page whose steps addingAModeTest follows.
TEST_F(Snippets, AreInLanguagesThatATestReads) {
    for (const Page &page : test::pagesOf(TREE))
        for (const CodeBlock &block : page.code)
            if (!block.language.empty()) {
                const bool isRead =
                    block.language == "c" || block.language == "json" || block.language == "sh" ||
                    (block.language == "cpp" && page.path == "docs/adding-a-mode.md");
                EXPECT_TRUE(isRead) << test::place(page, block.line) << ": " << block.language;
            }
}

TEST_F(Snippets, InCCompile) {
    forEachBlock("c", [&](const CodeBlock &block, const std::string &place) {
        const ProcessResult output =
            shell(CC " -std=gnu99 -Wall -Wextra -Werror -fsyntax-only -I " TREE " " +
                  folder.write("snippet.c", block.text));
        EXPECT_EQ(output.status, 0) << place << '\n' << output.out;
    });
}

TEST_F(Snippets, InJsonAreConfigurations) {
    forEachBlock("json", [&](const CodeBlock &block, const std::string &place) {
        const ProcessResult output = shell(BUILD "/mirrorctl check --screen 1920x1080 " +
                                           folder.write("config.json", block.text));
        EXPECT_EQ(output.status, 0) << place << '\n' << output.out;
    });
}

TEST_F(Snippets, OfTheShellRunWithoutADesktop) {
    forEachBlock("sh", [&](const CodeBlock &block, const std::string &place) {
        const ProcessResult output =
            shell("cd " + folder.file("") +
                  "; unset DISPLAY XAUTHORITY; PATH=\"" BUILD ":$PATH\" sh -eu " +
                  folder.write("snippet.sh", block.text));
        EXPECT_EQ(output.status, 0) << place << '\n' << output.out;
    });
}

// The packages that docs/building.md lists must be sufficient for the build.
TEST(Packages, OfTheBuildAreListed) {
    const std::string page = test::fileText(TREE "/docs/building.md");
    std::istringstream names(
        shell("cd " TREE " && . scripts/packages.sh && echo $build_packages").out);
    int count = 0;
    for (std::string name; names >> name; ++count)
        EXPECT_TRUE(std::regex_search(page, std::regex("[ |]" + name + "[ ,|]"))) << name;
    EXPECT_GT(count, 10);
}

// Checks that the scripts, presets and options of all commands exist: some commands take too long
// to run here or need a desktop.
class Commands : public Snippets {
protected:
    // The fault of a command line; empty if there is none.
    std::string faultOf(const std::string &line) {
        static const std::regex script("^(scripts/[a-z0-9-]+|tests/[A-Za-z/]+)\\b");
        static const std::regex preset("--preset ([A-Za-z0-9_-]+)");
        static const std::regex program("(?:^|[ /])(lightbridge|mirrorctl|panelwall) +([a-z]*)");
        std::smatch found;
        if (std::regex_search(line, found, script) && !fs::exists(TREE / fs::path(found[1].str())))
            return "there is no " + found[1].str();
        if (std::regex_search(line, found, preset) &&
            test::fileText(TREE "/CMakePresets.json").find('"' + found[1].str() + '"') ==
                std::string::npos)
            return "there is no preset " + found[1].str();
        if (std::regex_search(line, found, program))
            return faultOfOptions(line, found[1], found[2]);
        return "";
    }

    std::string faultOfOptions(const std::string &line, const std::string &program,
                               const std::string &command) {
        static const std::regex option(" (--[a-z-]+)");
        const bool isCommand = program == "mirrorctl" || command == "identify" || command == "test";
        const std::string help = helpOf(program, isCommand ? command : "");
        for (std::sregex_iterator i(line.begin(), line.end(), option), end; i != end; ++i)
            if (!std::regex_search(help, std::regex((*i)[1].str() + "\\b")))
                return program + ' ' + command + " has no " + (*i)[1].str();
        return "";
    }

    const std::string &helpOf(const std::string &program, const std::string &command) {
        std::string &help = known[program + ' ' + command];
        if (help.empty())
            help = shell(BUILD "/" + program + ' ' + command + " --help").out;
        return help;
    }

    // Calls `use` with each shell command, its continuation lines joined.
    template <class Use> void forEachLine(const CodeBlock &block, Use use) {
        static const std::regex continuation("\\\\\n *");
        static const std::regex comment(" +# .*$");
        std::istringstream lines(std::regex_replace(block.text, continuation, ""));
        for (std::string line; std::getline(lines, line);)
            use(std::regex_replace(line, comment, ""));
    }

    std::map<std::string, std::string> known;
};

TEST_F(Commands, Exist) {
    int count = 0;
    for (const Page &page : test::pagesOf(TREE))
        for (const CodeBlock &block : page.code)
            if (block.language.empty() || block.language == "sh")
                forEachLine(block, [&](const std::string &line) {
                    EXPECT_EQ(faultOf(line), "") << test::place(page, block.line);
                    ++count;
                });
    EXPECT_GT(count, 20);
}

TEST_F(Commands, ThatDoNotExistAreTold) {
    EXPECT_EQ(faultOf("scripts/test asan"), "");
    EXPECT_EQ(faultOf("scripts/tset"), "there is no scripts/tset");
    EXPECT_EQ(faultOf("cmake --preset realease"), "there is no preset realease");
    EXPECT_EQ(faultOf("build/release/mirrorctl run c.json --fast"), "mirrorctl run has no --fast");
    EXPECT_EQ(faultOf("panelwall c.json --web --quiet"), "panelwall c has no --quiet");
}

// A picture that cannot be made again becomes outdated unnoticed.
TEST_F(Snippets, PicturesNameTheCommandThatMakesThem) {
    static const std::regex command("`(scripts/[a-z0-9-]+)");
    for (const Page &page : test::pagesOf(TREE)) {
        const std::string text = test::fileText(TREE "/" + page.path);
        for (const test::Link &link : page.links)
            if (link.isImage && fs::path(link.target).extension() == ".png") {
                std::smatch found;
                EXPECT_TRUE(std::regex_search(text, found, command) &&
                            fs::exists(TREE / fs::path(found[1].str())))
                    << test::place(page, link.line) << ": " << link.target;
            }
    }
}

} // namespace
