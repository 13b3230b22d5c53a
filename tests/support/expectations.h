// Expectations about texts and about programs that have ended.
#pragma once

#include "tests/support/process.h"

#include <gtest/gtest.h>

namespace test {

// Whether `part` occurs in `text`; a failure shows both.
inline testing::AssertionResult contains(const std::string &text, const std::string &part) {
    return testing::AssertionResult(text.find(part) != std::string::npos)
           << '"' << part << "\" in\n"
           << text;
}

// Expects this exit status, and these texts on standard output.
inline void expectOutput(const ProcessResult &result, int status,
                         const std::vector<std::string> &parts) {
    EXPECT_EQ(result.status, status) << result.out << result.err;
    for (const std::string &part : parts)
        EXPECT_TRUE(contains(result.out, part));
}

// Expects this exit status, and these texts on standard error.
inline void expectErrors(const ProcessResult &result, int status,
                         const std::vector<std::string> &parts) {
    EXPECT_EQ(result.status, status) << result.out << result.err;
    for (const std::string &part : parts)
        EXPECT_TRUE(contains(result.err, part));
}

} // namespace test
