// What there is to say about a configuration document, printed.
#pragma once

#include "tools/config/advice.h"
#include "tools/config/configDocument.h"

#include <cstddef>
#include <string>
#include <vector>

namespace mirrorctl {

struct Findings {
    std::vector<config::Problem> problems;
    std::string remark;       // one line on what could not be looked at, or empty
    bool screenKnown = false; // the display's size, which the panels' places were compared with
};

inline bool isError(const config::Problem &problem) {
    return problem.severity == config::Severity::error;
}

std::size_t count(const Findings &findings, config::Severity severity);

// For readers, on standard output: "NAME:LINE:COLUMN: error: POINTER: MESSAGE" and a line on how to
// fix it for each error and warning, the verdict ("NAME: fine." without any), and then the
// cautions.
void print(const std::string &name, const Findings &findings);

// For scripts: one object on one line.
std::string jsonText(const std::string &name, const Findings &findings);

} // namespace mirrorctl
