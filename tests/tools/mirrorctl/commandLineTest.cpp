#include "tests/tools/mirrorctl/mirrorSetup.h"

using test::mirrorctl;
using test::ProcessResult;

TEST(MirrorctlCommandLine, HelpNamesCommandsAndExitStatuses) {
    test::expectOutput(mirrorctl({"--help"}), 0,
                       {"displays", "check", "layout", "doctor", "run", "palette", "snapshot",
                        "\n     0  ", "\n    64  ", "\n    65  ", "\n    66  ", "\n    68  ",
                        "\n    69  ", "\n    70  ", "\n    71  ", "\n    75  ", "\n    77  "});
}

TEST(MirrorctlCommandLine, EachCommandHelps) {
    for (const char *command :
         {"displays", "check", "layout", "doctor", "run", "palette", "snapshot"}) {
        const ProcessResult result = mirrorctl({command, "--help"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
    }
}

TEST(MirrorctlCommandLine, RefusesWhatItDoesNotUnderstand) {
    const std::vector<std::string> wrong[] = {
        {},
        {"mirror"},
        {"displays", "--xml"},
        {"displays", "more"},
        {"check"},
        {"check", "a.json", "--screen", "640"},
        {"check", "a.json", "--screen", "0x480"},
        {"check", "a.json", "--screen", "640x480x"},
        {"check", "a.json", "--screen", "640x99999"},
        {"check", "a.json", "--display", "--no-display"},
        {"layout", "1x1", "0.0.0.0", "--display", "1", "--screen", "640x480"},
        {"layout", "1x1", "192.0.2.7:60221", "--display", "1", "--screen", "640x480"},
        {"run"},
        {"run", "a.json", "b.json"},
        {"run", "a.json", "--seconds"},
        {"run", "a.json", "--seconds", "0"},
        {"run", "a.json", "--seconds", "-1"},
        {"run", "a.json", "--seconds", "nan"},
        {"run", "a.json", "--seconds", "inf"},
        {"run", "a.json", "--seconds", "1e9"},
        {"run", "a.json", "--seconds", "soon"},
        {"run", "a.json", "--mode"},
        {"run", "a.json", "--mode", "4"},
        {"run", "a.json", "--mode", "-1"},
        {"run", "a.json", "--mode", "00"},
        {"run", "a.json", "--mode", "Match"},
        {"run", "a.json", "--mode", ""},
        {"palette"},
        {"palette", "a.json", "b.json"},
        {"palette", "a.json", "--seconds", "1"},
        {"doctor", "a.json", "b.json"},
        {"doctor", "--seconds", "1"},
        {"snapshot"},
        {"snapshot", "a.json", "--seconds", "0"},
    };
    for (const auto &arguments : wrong) {
        const ProcessResult result = mirrorctl(arguments);
        EXPECT_EQ(result.status, 64) << (arguments.empty() ? "" : arguments.back());
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err, "");
    }
}

TEST(MirrorctlCommandLine, NamesTheVersion) {
    EXPECT_EQ(mirrorctl({"--version"}), (ProcessResult{0, "mirrorctl " PROJECT_VERSION "\n", ""}));
}

TEST(MirrorctlCommandLine, SuggestsTheCommandThatWasMeant) {
    const std::pair<const char *, const char *> meant[] = {
        {"rnu", "run"},           {"Run", "run"},        {"chek", "check"},
        {"dispalys", "displays"}, {"lay-out", "layout"}, {"docter", "doctor"}};
    for (const auto &[word, command] : meant) {
        const std::string suggestion = "mirrorctl has no command \"" + std::string(word) +
                                       "\". Did you mean \"" + command +
                                       "\"?\nRun with --help for the list of commands.\n";
        EXPECT_EQ(mirrorctl({word, "wall.json", "--json"}), (ProcessResult{64, "", suggestion}));
    }
    EXPECT_EQ(mirrorctl({"mirror"}).err, "mirrorctl has no command \"mirror\".\n"
                                         "Run with --help for the list of commands.\n");
    // One line, without control characters.
    EXPECT_EQ(mirrorctl({"\x1b[2J\n"}).err, "mirrorctl has no command \"\\u001B[2J\\n\".\n"
                                            "Run with --help for the list of commands.\n");
}

TEST(MirrorctlCommandLine, HelpSaysWhatBecomesOfTheLights) {
    test::expectOutput(mirrorctl({"palette", "--help"}), 0, {"The lights are left alone"});
    test::expectOutput(mirrorctl({"snapshot", "--help"}), 0, {"THE LIGHTS CHANGE"});
}
