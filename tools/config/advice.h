// What a document says that is hardly meant.
#pragma once

#include "tools/config/configDocument.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace config {

// Which parts of a document carry no meaning since errors were found in them.
class Unsound {
public:
    explicit Unsound(const std::vector<Problem> &errors);

    // Whether there is an error at `pointer`, or at something that it lies in.
    bool covers(const std::string &pointer) const;

private:
    std::set<std::string> pointers;
    bool isEverything = false;
};

// Warnings and cautions about a document's values, of the panels' places only when a screen is
// given. Without places. Lists at most `mostProblems`.
std::vector<Problem> advise(const Document &document, const std::optional<ScreenSize> &screen,
                            const Unsound &unsound);

} // namespace config
