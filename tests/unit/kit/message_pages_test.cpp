#include "message_pages.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "message_codes.h"

namespace
{

namespace fs = std::filesystem;

std::map<std::string, std::string> pagesByName()
{
    std::map<std::string, std::string> pages;
    for (auto& [name, text] : kit::messagePages())
        EXPECT_TRUE(pages.emplace(name, text).second) << name << " was made twice";
    return pages;
}

std::map<std::string, std::string> filesIn(const fs::path& folder)
{
    std::map<std::string, std::string> files;
    if (!fs::exists(folder)) return files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        files[entry.path().filename().string()] = {std::istreambuf_iterator<char>(in),
                                                   std::istreambuf_iterator<char>()};
    }
    return files;
}

void replaceFiles(const fs::path& folder, const std::map<std::string, std::string>& pages)
{
    fs::create_directories(folder);
    for (const auto& [name, text] : filesIn(folder)) {
        if (pages.count(name) == 0) fs::remove(folder / name);
    }
    for (const auto& [name, text] : pages)
        std::ofstream(folder / name, std::ios::binary) << text;
}

}  // namespace

TEST(MessagePages, there_is_a_page_for_every_code_and_an_index_that_links_it)
{
    const auto pages = pagesByName();
    EXPECT_EQ(pages.size(), static_cast<std::size_t>(kit::Code::kCount) + 1);
    const std::string& index = pages.at("README.md");
    for (std::size_t i = 0; i < static_cast<std::size_t>(kit::Code::kCount); ++i) {
        const kit::MessageRow& row = kit::rowOf(static_cast<kit::Code>(i));
        const std::string name = std::string(row.code) + ".md";
        ASSERT_EQ(pages.count(name), 1U) << name;
        EXPECT_NE(index.find("](" + name + ")"), std::string::npos) << name;
        EXPECT_NE(pages.at(name).find(std::string(row.meaning)), std::string::npos) << name;
    }
}

TEST(MessagePages, a_page_shows_severity_remedy_and_an_example_line)
{
    const std::string page = pagesByName().at("diameter-unlikely.md");
    EXPECT_NE(page.find("Code `diameter-unlikely`, warning."), std::string::npos) << page;
    EXPECT_NE(page.find("Give it with its unit, \"25 mm\"."), std::string::npos) << page;
    EXPECT_NE(
        page.find(
            "    riser.tavell.json:24: element branch 4: its diameter is 25 m; perhaps 25 mm are meant; "
            "give it with its unit, \"25 mm\" [diameter-unlikely]"),
        std::string::npos)
        << page;
}

TEST(MessagePages, codes_of_the_librarys_feedback_link_to_a_heading_that_exists)
{
    const auto documents = filesIn(fs::path(TAVELL_SOURCE) / "docs");
    const std::string& feedback = documents.at("messages.md");
    std::size_t links = 0;
    for (const auto& [name, text] : pagesByName()) {
        const std::size_t start = text.find("feedback [");
        if (start == std::string::npos) continue;
        const std::size_t heading = start + std::string("feedback [").size();
        const std::string title = text.substr(heading, text.find(']', heading) - heading);
        EXPECT_NE(feedback.find("\n## " + title + "\n"), std::string::npos) << name;
        ++links;
    }
    EXPECT_EQ(links, 15U);
}

TEST(MessagePages, the_folder_of_the_documents_holds_exactly_these_pages)
{
    const fs::path folder = fs::path(TAVELL_SOURCE) / "docs" / "messages";
    const auto pages = pagesByName();
    if (std::getenv("TAVELL_UPDATE_MESSAGES") != nullptr) replaceFiles(folder, pages);
    const auto files = filesIn(folder);
    for (const auto& [name, text] : pages) {
        const auto file = files.find(name);
        ASSERT_NE(file, files.end()) << name << " is missing; run with TAVELL_UPDATE_MESSAGES=1";
        EXPECT_EQ(file->second, text) << name << " is out of date; run with TAVELL_UPDATE_MESSAGES=1";
    }
    for (const auto& [name, text] : files)
        EXPECT_EQ(pages.count(name), 1U) << name << " belongs to no code; run with TAVELL_UPDATE_MESSAGES=1";
}
