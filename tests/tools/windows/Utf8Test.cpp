#include "tools/kestra-html/system/windows/Utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Kestra::Test {
namespace {

using namespace std::string_literals;

/// Every character has another length in UTF-8, from one byte to four, and the last one two units
/// of UTF-16.
const std::string FOUR = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
const std::wstring FOUR_WIDE = L"a\u00E9\u20AC\xD83D\xDE00";

/// The fronts that are taken off one after the other.
std::vector<std::string> Cut(std::string_view text, std::size_t limit) {
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const std::size_t size = Tool::FindCut(text, limit);
        if (size == 0 || size > text.size() || size > limit) {
            ADD_FAILURE() << "a front of " << size;
            break;
        }
        pieces.emplace_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return pieces;
}

TEST(Utf8, BothWays) {
    EXPECT_EQ(Tool::ToWide(FOUR), FOUR_WIDE);
    EXPECT_EQ(Tool::FromWide(FOUR_WIDE), FOUR);
    EXPECT_EQ(Tool::ToWide(""), L"");
    EXPECT_EQ(Tool::FromWide(L""), "");
    EXPECT_EQ(Tool::ToWide("a\0b"s), L"a\0b"s);
    EXPECT_EQ(Tool::FromWide(L"a\0b"s), "a\0b"s);
}

TEST(Utf8, WhatIsNoTextIsReplaced) {
    EXPECT_EQ(Tool::ToWide("a\xFF"
                           "b"),
              L"a\uFFFDb");
    EXPECT_EQ(Tool::ToWide("a\xE9 b"), L"a\uFFFD b");
    EXPECT_EQ(Tool::ToWide("a\x80"
                           "b"),
              L"a\uFFFDb");
    EXPECT_EQ(Tool::ToWide("\xC3"), L"\uFFFD");
    EXPECT_EQ(Tool::FromWide(L"a\xD83D"
                             L"b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(Tool::FromWide(L"\xDE00"), "\xEF\xBF\xBD");
}

TEST(Utf8, NamesOfFilesComeBackAsTheyWere) {
    const struct {
        std::wstring wide;
        std::string bytes;
    } CASES[] = {
        {FOUR_WIDE, FOUR},
        {L"", ""},
        {{0xD800}, "\xED\xA0\x80"},
        {{L'a', 0xD800, L'.', L'h'}, "a\xED\xA0\x80.h"},
        {{0xDFFF, 0x20AC}, "\xED\xBF\xBF\xE2\x82\xAC"},
        {{0xDC00, 0xD83D}, "\xED\xB0\x80\xED\xA0\xBD"},
        {{0xD83D, 0xD83D, 0xDE00, 0xDE00}, "\xED\xA0\xBD\xF0\x9F\x98\x80\xED\xB8\x80"},
        {{0xD7FF, 0xE000, 0xFFFD}, "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD"},
    };
    for (const auto& row : CASES) {
        EXPECT_EQ(Tool::NameFromWide(row.wide), row.bytes);
        EXPECT_EQ(Tool::NameToWide(row.bytes), row.wide);
    }
    EXPECT_EQ(Tool::NameToWide("\xED\xA0"), Tool::ToWide("\xED\xA0")) << "a part of one";
    EXPECT_EQ(Tool::NameToWide("\xED\xA0z"), Tool::ToWide("\xED\xA0z"));
    EXPECT_EQ(Tool::NameToWide("a\xFFz"), L"a\uFFFDz");
}

TEST(Utf8, ACutPartsNoCharacter) {
    EXPECT_EQ(Cut(FOUR, 10), (std::vector<std::string>{FOUR}));
    EXPECT_EQ(Cut(FOUR, 9), (std::vector<std::string>{"a\xC3\xA9\xE2\x82\xAC", "\xF0\x9F\x98\x80"}));
    EXPECT_EQ(Cut(FOUR, 5), (std::vector<std::string>{"a\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}));
    EXPECT_EQ(Cut(FOUR, 4), (std::vector<std::string>{"a\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}));
    EXPECT_EQ(Cut("abcdef", 4), (std::vector<std::string>{"abcd", "ef"}));
    EXPECT_EQ(Cut("", 4), std::vector<std::string>());
}

TEST(Utf8, EveryPieceIsTextOfItsOwn) {
    std::string text;
    for (std::size_t i = 0; i < 100; ++i)
        text += std::string(i % 5, 'x') + FOUR;
    for (std::size_t limit = 4; limit < 40; ++limit) {
        std::wstring wide;
        for (const std::string& piece : Cut(text, limit))
            wide += Tool::ToWide(piece);
        EXPECT_EQ(wide, Tool::ToWide(text)) << limit;
    }
}

TEST(Utf8, WhereThereIsNoTextACutIsAnywhere) {
    const std::string after(10, '\x80');
    EXPECT_EQ(Cut(after, 4), (std::vector<std::string>{after.substr(0, 4), after.substr(0, 4), after.substr(0, 2)}));
    const std::string leads(5, '\xF0');
    EXPECT_EQ(Cut(leads, 4), (std::vector<std::string>{leads.substr(0, 4), leads.substr(0, 1)}));
}

}  // namespace
}  // namespace Kestra::Test
