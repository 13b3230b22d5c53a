// Compares the page about the doctor's findings with the program's messages.
#include "tests/support/files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace {

// The program's sources, with literals joined that span several lines.
std::string program() {
    std::string text;
    for (const char *room : {"lights", "config", "mirrorctl"})
        for (const auto &entry :
             std::filesystem::recursive_directory_iterator(TREE "/tools/" + std::string(room)))
            if (entry.path().extension() == ".cpp")
                text += test::fileText(entry.path());
    text = std::regex_replace(text, std::regex("\"\\s+\""), "");
    return std::regex_replace(text, std::regex("\\\\\""), "\"");
}

// The cells of a table row, without spaces around them.
std::vector<std::string> cellsOf(const std::string &row) {
    static const std::regex cell("\\| *([^|]*?) *(?=\\|)");
    std::vector<std::string> cells;
    for (std::sregex_iterator i(row.begin(), row.end(), cell), end; i != end; ++i)
        cells.push_back((*i)[1]);
    return cells;
}

// The clauses of a cell, which the program joins, without the ellipses that stand for variable
// parts.
std::vector<std::string> piecesOf(const std::string &cell) {
    static const std::regex between(" *(?:…|;|,|:)+ *");
    std::vector<std::string> pieces;
    for (std::sregex_token_iterator i(cell.begin(), cell.end(), between, -1), end; i != end; ++i)
        if (i->length() > 0)
            pieces.push_back(*i);
    return pieces;
}

} // namespace

TEST(DoctorPage, SaysWhatTheDoctorSays) {
    const std::string said = program();
    std::istringstream page(test::fileText(TREE "/docs/doctor.md"));
    std::size_t rows = 0;
    for (std::string line; std::getline(page, line);) {
        const std::vector<std::string> cells = cellsOf(line);
        if (cells.empty() || line.starts_with("|---") || line.find("| to fix it |") < line.size())
            continue;
        ++rows;
        // The table may have a first column for what was examined.
        const std::size_t first = cells.size() == 4 ? 1 : 0;
        for (std::size_t i = first; i < first + 2; ++i) {
            if (cells[i].starts_with("the same, ") || cells[i].starts_with("either of the two") ||
                cells[i] == "as above")
                continue;
            for (const std::string &piece : piecesOf(cells[i]))
                EXPECT_NE(said.find(piece), std::string::npos) << piece << "\nof " << line;
        }
    }
    EXPECT_GT(rows, 40u);
}
