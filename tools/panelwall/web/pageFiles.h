// The page's files, embedded in the program when it was built.
#pragma once

#include <string_view>

namespace panelwall {

struct PageFile {
    std::string_view path; // relative to the page; empty for the page itself
    std::string_view type;
    std::string_view content;
};

// Null when the page has no such file.
const PageFile *findPageFile(std::string_view path);

} // namespace panelwall
