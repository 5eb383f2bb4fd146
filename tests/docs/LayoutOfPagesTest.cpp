#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// That the pages can be read as they are: prose within 100 columns, tables and examples within
/// 140.

namespace Kestra::Test {
namespace {

constexpr std::size_t WIDEST_PROSE = 100;
constexpr std::size_t WIDEST_LINE = 140;

/// The code points of UTF-8.
std::size_t CountColumns(std::string_view line) {
    std::size_t columns = 0;
    for (const char byte : line)
        columns += (static_cast<unsigned char>(byte) & 0xC0) != 0x80 ? 1 : 0;
    return columns;
}

/// A line of a page and whether it is prose.
class PageLines {
public:
    std::size_t WidestFor(std::string_view line) {
        if (line.starts_with("```")) {
            inBlock = !inBlock;
            return WIDEST_LINE;
        }
        return inBlock || line.starts_with("|") || line.starts_with("    ") ? WIDEST_LINE : WIDEST_PROSE;
    }

private:
    bool inBlock = false;
};

std::vector<std::filesystem::path> ListPages() {
    const std::filesystem::path root = KESTRA_PROJECT;
    std::vector<std::filesystem::path> pages = {root / "README.md", root / "CONTRIBUTING.md", root / "CHANGELOG.md",
                                                root / "SECURITY.md"};
    for (const auto& entry : std::filesystem::directory_iterator(KESTRA_DOCS)) {
        if (entry.path().extension() == ".md")
            pages.push_back(entry.path());
    }
    return pages;
}

TEST(LayoutOfPages, NoLineIsTooWide) {
    const std::vector<std::filesystem::path> pages = ListPages();
    EXPECT_GE(pages.size(), 10U);
    for (const std::filesystem::path& page : pages) {
        std::ifstream file(page);
        PageLines lines;
        std::size_t number = 0;
        for (std::string line; std::getline(file, line);) {
            ++number;
            const std::size_t widest = lines.WidestFor(line);
            EXPECT_LE(CountColumns(line), widest) << page.filename().string() << ", line " << number;
        }
        EXPECT_GT(number, 5U) << page;
    }
}

TEST(LayoutOfPages, WhatIsProse) {
    PageLines lines;
    EXPECT_EQ(lines.WidestFor("Prose"), WIDEST_PROSE);
    EXPECT_EQ(lines.WidestFor("  further prose of a list"), WIDEST_PROSE);
    EXPECT_EQ(lines.WidestFor("| a row |"), WIDEST_LINE);
    EXPECT_EQ(lines.WidestFor("    a command"), WIDEST_LINE);
    EXPECT_EQ(lines.WidestFor("```json"), WIDEST_LINE);
    EXPECT_EQ(lines.WidestFor("an example"), WIDEST_LINE);
    EXPECT_EQ(lines.WidestFor("```"), WIDEST_LINE);
    EXPECT_EQ(lines.WidestFor("Prose"), WIDEST_PROSE);
    EXPECT_EQ(CountColumns("a\xC3\xA9"), 2U);
}

}  // namespace
}  // namespace Kestra::Test
