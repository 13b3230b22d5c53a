// What the doctor finds.
#pragma once

#include "tools/mirrorctl/exitStatus.h"

#include <string>
#include <vector>

namespace mirrorctl {

enum class Verdict { good, unsure, bad };

// One thing that was looked at.
struct Check {
    Verdict verdict = Verdict::good;
    std::string subject; // "display 5", "127.0.0.1:60222"
    std::string words;   // what was found, without a full stop
    std::string remedy = {};
    ExitStatus status = ExitStatus::done; // what it means for the program's end, if it is bad
};

// A heading and what was looked at under it.
struct Ward {
    std::string name;
    std::vector<Check> checks;
};

// The status of the first bad check; done when there is none.
ExitStatus statusOf(const std::vector<Ward> &wards);

void print(const std::vector<Ward> &wards); // for readers, on standard output
std::string jsonText(const std::vector<Ward> &wards);

} // namespace mirrorctl
