// The pages on messages and properties against the tables of the library.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/FeedbackCollection.h"
#include "analysis/feedback_mapping.h"
#include "model/property_ids.h"
#include "tavell/Constants.h"

using namespace Velcor::Tavell;

namespace
{

/// Folder of the pages; without a definition the one of the tree that this file stands in.
std::filesystem::path documents()
{
    return TAVELL_DOCS;
}

std::vector<std::string> linesOf(const char* page)
{
    std::ifstream file(documents() / page);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

bool startsWith(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// The line after the blank one under each heading "## id constant", by id.
std::map<int, std::string> messageSections()
{
    const std::vector<std::string> lines = linesOf("messages.md");
    std::map<int, std::string> sections;
    for (std::size_t i = 0; i + 2 < lines.size(); ++i) {
        if (!startsWith(lines[i], "## ")) continue;
        std::istringstream heading(lines[i].substr(3));
        int id = -1;
        std::string constant;
        heading >> id >> constant;
        if (startsWith(constant, "TAVELL_FEEDBACK_")) sections[id] = lines[i + 2];
    }
    return sections;
}

/// One row of a table of properties.
struct PropertyRow {
    std::string name;
    std::string fallback;
};

std::vector<std::string> cellsOf(const std::string& row)
{
    std::vector<std::string> cells;
    std::istringstream stream(row);
    for (std::string cell; std::getline(stream, cell, '|');) {
        const std::size_t first = cell.find_first_not_of(' ');
        const std::size_t last = cell.find_last_not_of(' ');
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
    }
    return cells;
}

/// Rows whose first cell is a number, by that number. Cell 0 stands before the first bar.
std::map<int, PropertyRow> propertyRows()
{
    constexpr std::size_t kId = 1, kName = 2, kFallback = 5, kCells = 7;
    std::map<int, PropertyRow> rows;
    for (const std::string& line : linesOf("properties.md")) {
        const std::vector<std::string> cells = cellsOf(line);
        if (cells.size() != kCells || cells[kId].find_first_not_of("0123456789") != std::string::npos)
            continue;
        rows[std::stoi(cells[kId])] = {cells[kName], cells[kFallback]};
    }
    return rows;
}

/// Every id that has a name.
std::set<int> propertyIds()
{
    constexpr int kBeyondTheLast = 10000;
    std::set<int> ids;
    for (int id = 0; id < kBeyondTheLast; ++id)
        if (*propertyName(id) != '\0') ids.insert(id);
    return ids;
}

}  // namespace

TEST(MessagesDocument, has_a_heading_for_every_feedback_id_and_no_other)
{
    const std::map<int, std::string> sections = messageSections();
    for (int id = TAVELL_FEEDBACK_MASS_ERROR; id <= TAVELL_FEEDBACK_CANCELLED; ++id)
        EXPECT_EQ(sections.count(id), 1U) << id;
    EXPECT_EQ(sections.size(), 22U);
}

TEST(MessagesDocument, names_the_solver_code_that_becomes_each_id)
{
    const std::map<int, std::string> sections = messageSections();
    ASSERT_FALSE(sections.empty());
    for (const auto& [id, text] : sections) {
        ASSERT_TRUE(startsWith(text, "Code ")) << id << ": " << text;
        FeedbackCollection feedback;
        mapFeedback({{static_cast<std::uint32_t>(std::stoul(text.substr(5))), {}}}, feedback);
        ASSERT_EQ(feedback.GetSize(), 1U);
        EXPECT_EQ(feedback.GetFeedback(0)->GetId(), id);
    }
}

TEST(PropertiesDocument, has_a_row_for_every_property_and_no_other)
{
    std::set<int> documented;
    for (const auto& row : propertyRows())
        documented.insert(row.first);
    EXPECT_EQ(documented, propertyIds());
}

TEST(PropertiesDocument, gives_every_name_and_fallback_as_the_library_has_them)
{
    const std::map<int, PropertyRow> rows = propertyRows();
    ASSERT_FALSE(rows.empty());
    for (const auto& [id, row] : rows) {
        EXPECT_EQ(row.name, "`" + std::string(propertyName(id)) + "`") << id;
        EXPECT_EQ(std::stod(row.fallback), propertyFallback(id)) << id;
    }
}
