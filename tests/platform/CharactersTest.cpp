#include "platform/Characters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

namespace Kestra {
namespace {

using namespace std::string_view_literals;

TEST(CharactersTest, NarrowWhiteSpaceIsSixBytes) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool expected = byte == 9 || byte == 10 || byte == 11 || byte == 12 || byte == 13 || byte == 32;
        EXPECT_EQ(IsSpace(static_cast<char>(static_cast<unsigned char>(byte))), expected) << byte;
    }
}

TEST(CharactersTest, WideWhiteSpaceIsOneFixedTable) {
    const unsigned table[] = {9,      10,     11,     12,     13,     32,     0x85,   0xA0,   0x1680,
                              0x2000, 0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, 0x2008,
                              0x2009, 0x200A, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
    for (unsigned code = 0; code < 0x10000; ++code) {
        const bool expected = std::find(std::begin(table), std::end(table), code) != std::end(table);
        EXPECT_EQ(IsSpace(static_cast<WideChar>(code)), expected) << code;
    }
}

TEST(CharactersTest, FoldAsciiTouchesCapitalAToZOnly) {
    for (int byte = 0; byte < 256; ++byte) {
        const auto character = static_cast<char>(static_cast<unsigned char>(byte));
        const bool isCapital = byte >= 0x41 && byte <= 0x5A;
        EXPECT_EQ(FoldAscii(character), static_cast<char>(character + (isCapital ? 0x20 : 0))) << byte;
    }
    for (unsigned code = 0; code < 0x10000; ++code) {
        const bool isCapital = code >= 0x41 && code <= 0x5A;
        EXPECT_EQ(static_cast<unsigned>(FoldAscii(static_cast<WideChar>(code))), code + (isCapital ? 0x20 : 0)) << code;
    }
}

TEST(CharactersTest, KeywordsAreComparedOverTheFullLength) {
    struct Case {
        const char* note;
        std::string_view word;
        std::string_view keyword;
        bool expected;
    };
    const Case cases[] = {
        {"the same word", "script", "script", true},
        {"capitals count as small letters", "ScRIPT", "script", true},
        {"a longer word", "scripts", "script", false},
        {"a shorter word", "scrip", "script", false},
        {"a NUL after the word is a character", "script\0"sv, "script", false},
        {"a NUL inside the word does not end it", "scr\0ipt"sv, "script", false},
        {"two empty words", "", "", true},
        {"an empty word", "", "a", false},
        {"@ and [ stand next to A and Z and are not folded", "@[", "`{", false},
        {"bytes from 128 up are not folded", "\xC1", "\xE1", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(EqualsKeyword(c.word, c.keyword), c.expected) << c.note;
        EXPECT_EQ(EqualsKeyword(std::string(c.word), c.keyword), c.expected) << c.note;
        WideString wide;
        for (const char character : c.word)
            wide += static_cast<WideChar>(static_cast<unsigned char>(character));
        EXPECT_EQ(EqualsKeyword(WideStringView(wide), c.keyword), c.expected) << c.note;
        EXPECT_EQ(EqualsKeyword(wide, c.keyword), c.expected) << c.note;
    }
}

TEST(CharactersTest, WideLettersThatLookAsciiAreNot) {
    EXPECT_FALSE(EqualsKeyword(WideString{static_cast<WideChar>(0x212A)}, "k"));  // KELVIN SIGN
    EXPECT_FALSE(EqualsKeyword(WideString{static_cast<WideChar>(0x0173)}, "s"));  // low byte "s"
    EXPECT_FALSE(EqualsKeyword(WideString{static_cast<WideChar>(0xFF41)}, "a"));  // FULLWIDTH LATIN SMALL LETTER A
}

}  // namespace
}  // namespace Kestra
