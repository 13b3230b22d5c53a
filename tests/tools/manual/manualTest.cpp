// Compares the manual pages and the completions with the programs' help.
#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <regex>
#include <set>

using test::fileText;
using test::ProcessResult;
using test::shell;

namespace {

using Words = std::set<std::string>;

Words matches(const std::string &text, const std::regex &pattern) {
    Words found;
    for (std::sregex_iterator i(text.begin(), text.end(), pattern), end; i != end; ++i)
        found.insert((*i)[1]);
    return found;
}

// The text from the line `from` to the next empty line.
std::string block(const std::string &text, const std::string &from) {
    const auto begin = text.find(from + "\n");
    if (begin == std::string::npos)
        return {};
    return text.substr(begin, text.find("\n\n", begin) - begin);
}

// The long options of a program, or of one of its commands.
Words optionsOf(const std::string &program) {
    static const std::regex option("\n  (?:-\\w,)?(--[a-z-]+)");
    return matches(block(shell(program + " --help").out, "Options:"), option);
}

Words commandsOf(const std::string &program) {
    static const std::regex command("\n  ([a-z]+) ");
    return matches(block(shell(program + " --help").out, "Subcommands:"), command);
}

// A manual page's source, with its hyphens unescaped.
std::string manual(const std::string &name) {
    return std::regex_replace(fileText(MANUALS + name), std::regex("\\\\-"), "-");
}

// The options at the head of an entry.
Words optionsIn(const std::string &source) {
    return matches(source, std::regex("\n\\.(?:B|BI|BR) (?:-h \", \" )?(--[a-z-]+)"));
}

std::string section(const std::string &source, const std::string &head) {
    const auto begin = source.find("\n" + head + "\n");
    if (begin == std::string::npos)
        return {};
    const auto end = source.find("\n.S", begin + 2);
    return source.substr(begin, end - begin);
}

// The completions that bash offers for the last of the words.
Words offeredByBash(const std::string &program, const std::string &words) {
    const ProcessResult list =
        shell("bash --norc -c 'source " COMPLETIONS + program + ".bash; COMP_WORDS=(" + words +
              "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _" + program +
              "; printf \"%s\\n\" \"${COMPREPLY[@]}\"'");
    return matches(list.out, std::regex("([^\n]+)"));
}

// The options that zsh's function names. The functions that it calls are replaced with functions
// that print their arguments.
Words offeredByZsh(const std::string &program, const std::string &words, int current) {
    const std::string text =
        shell("zsh -fc '_arguments() { print -rl -- \"$@\" }; _describe() { print -rl -- "
              "\"describe ${(@P)2}\" }; _files() { }; words=(" +
              words + "); CURRENT=" + std::to_string(current) + "; source " COMPLETIONS "_" +
              program + "'")
            .out;
    return matches("\n" + text, std::regex("\n(?:\\([^\n)]*\\)|\\*)?(--[a-z-]+)\\["));
}

} // namespace

TEST(Manual, IsSetWithoutComplaint) {
    for (const char *name : {"lightbridge.1", "mirrorctl.1", "panelwall.1"})
        EXPECT_EQ(shell("mandoc -T lint " MANUALS + std::string(name)), (ProcessResult{0, "", ""}));
}

TEST(Manual, HasEveryOptionOfEveryCommandAndNoOther) {
    const std::string source = manual("mirrorctl.1");
    const Words commands = commandsOf(MIRRORCTL);
    ASSERT_EQ(commands.size(), 7u);
    for (const std::string &command : commands) {
        Words options = optionsOf(MIRRORCTL " " + command);
        EXPECT_EQ(options.erase("--help"), 1u) << command;
        EXPECT_FALSE(options.empty()) << command;
        EXPECT_EQ(optionsIn(section(source, ".SS " + command)), options) << command;
    }
    EXPECT_EQ(optionsOf(MIRRORCTL), (Words{"--help", "--version"}));
    for (const std::string &option : optionsOf(MIRRORCTL))
        EXPECT_TRUE(test::contains(section(source, ".SH DESCRIPTION"), ".BR " + option));
    EXPECT_EQ(optionsIn(section(manual("panelwall.1"), ".SH OPTIONS")), optionsOf(PANELWALL));
    EXPECT_GT(optionsOf(PANELWALL).size(), 5u);

    const std::string bridge = manual("lightbridge.1");
    const Words options = optionsOf(LIGHTBRIDGE);
    EXPECT_EQ(optionsIn(section(bridge, ".SH OPTIONS")), options);
    for (const std::string command : {"identify", "test"})
        for (const std::string &option : optionsOf(LIGHTBRIDGE " " + command))
            EXPECT_TRUE(options.contains(option) ||
                        optionsIn(section(bridge, ".SS " + command)).contains(option))
                << command << " " << option;
}

TEST(Manual, HasEveryExitStatus) {
    const auto told = [](const std::string &program) {
        const std::string text = shell(program + " --help").out;
        return matches(text.substr(text.find("Exit status")), std::regex("\n +([0-9]+)  "));
    };
    const auto listed = [](const std::string &name) {
        return matches(section(manual(name), ".SH EXIT STATUS"), std::regex("\n\\.B ([0-9]+)"));
    };
    EXPECT_EQ(told(MIRRORCTL).size(), 11u);
    EXPECT_EQ(listed("mirrorctl.1"), told(MIRRORCTL));
    EXPECT_EQ(listed("panelwall.1"), told(PANELWALL));
    EXPECT_EQ(listed("lightbridge.1"), told(LIGHTBRIDGE));
}

TEST(Completion, OffersEveryCommandAndOptionInBash) {
    Words commands = commandsOf(MIRRORCTL);
    for (const std::string &command : commands)
        EXPECT_EQ(offeredByBash("mirrorctl", "mirrorctl " + command + " --"),
                  optionsOf(MIRRORCTL " " + command));
    commands.insert({"--help", "--version"});
    EXPECT_EQ(offeredByBash("mirrorctl", "mirrorctl \"\""), commands);
    EXPECT_EQ(offeredByBash("panelwall", "panelwall a.json --"), optionsOf(PANELWALL));
    EXPECT_EQ(offeredByBash("lightbridge", "lightbridge a.json --"), optionsOf(LIGHTBRIDGE));
    for (const std::string command : {"identify", "test"})
        EXPECT_EQ(offeredByBash("lightbridge", "lightbridge " + command + " a.json --"),
                  optionsOf(LIGHTBRIDGE " " + command));
    EXPECT_EQ(offeredByBash("lightbridge", "lightbridge ident"), Words{"identify"});
}

TEST(Completion, OffersValuesInBash) {
    EXPECT_EQ(offeredByBash("mirrorctl", "mirrorctl run a.json --mode \"\""),
              (Words{"fade", "match", "melt", "palette"}));
    EXPECT_EQ(offeredByBash("mirrorctl", "mirrorctl run --s"), Words{"--seconds"});
    EXPECT_TRUE(offeredByBash("mirrorctl", "mirrorctl check --display " MANUALS "mirr")
                    .contains(MANUALS "mirrorctl.1"));
    EXPECT_TRUE(offeredByBash("mirrorctl", "mirrorctl run " MANUALS "mirr")
                    .contains(MANUALS "mirrorctl.1"));
    EXPECT_TRUE(offeredByBash("mirrorctl", "mirrorctl mirror \"\"").empty());
}

TEST(Completion, OffersEveryOptionInZsh) {
    for (const std::string &command : commandsOf(MIRRORCTL))
        EXPECT_EQ(offeredByZsh("mirrorctl", "mirrorctl " + command + " --", 3),
                  optionsOf(MIRRORCTL " " + command))
            << command;
    EXPECT_EQ(offeredByZsh("mirrorctl", "mirrorctl --", 2), optionsOf(MIRRORCTL));
    EXPECT_EQ(offeredByZsh("panelwall", "panelwall --", 2), optionsOf(PANELWALL));
    EXPECT_EQ(offeredByZsh("lightbridge", "lightbridge --", 2), optionsOf(LIGHTBRIDGE));
    for (const std::string command : {"identify", "test"})
        EXPECT_EQ(offeredByZsh("lightbridge", "lightbridge " + command + " --", 3),
                  optionsOf(LIGHTBRIDGE " " + command));
}
