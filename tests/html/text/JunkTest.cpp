#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>

#include "html/text/JunkSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::JunkSimpleParser;
using HTML::JunkSimpleParserData;

struct Case {
    const char* note;
    std::string_view input;
    const char* result;
    std::string_view text;
    const char* rest;
};

constexpr Case CASES[] = {
    {"junk ends before \"<\"", "abc<def", "19", "abc", " rest(<def)"},
    {"junk may be empty", "<a", "19", "", " rest(<a)"},
    {"junk up to the end of the input is complete", "abc", "end 19", "abc", ""},
    {"no input at all is complete empty junk", "", "end 19", "", ""},
    {"nothing but \"<\" ends it", ">'\"/*//-->]]>\033$B\0=!"sv, "end 19", ">'\"/*//-->]]>\033$B\0=!"sv, ""},
    {"characters from 128 up", "\x80\xFF\xBC<", "19", "\x80\xFF\xBC", " rest(<)"},
    {"lines are counted", "a\n\r\n b\n<\n", "19", "a\n\r\n b\n", " rest(<\\n)"},
};

/// The bytes of the characters in memory, as an escaped field.
template <typename S>
std::string MemoryOf(const S& text) {
    std::string bytes(text.size() * sizeof(typename S::value_type), '\0');
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return "text(" + Trace::Escape(bytes) + ")";
}

template <typename Flavour>
class JunkTest : public testing::Test {};

TYPED_TEST_SUITE(JunkTest, Flavours);

TYPED_TEST(JunkTest, JunkIsKeptByteForByte) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    for (const Case& c : CASES) {
        SCOPED_TRACE(c.note);
        std::string rest = c.rest;
        if (TypeParam::WIDE)
            rest = ToWideEscapes(rest);
        CheckRecognizer<JunkSimpleParser<C, S>>(To<S>(c.input),
                                                std::string(c.result) + " " + MemoryOf(To<S>(c.text)) + rest);
    }
}

TEST(JunkTest, WideJunkIsTwoBytesForEachCharacter) {
    JunkSimpleParser<WideChar, WideString> parser;
    JunkSimpleParserData<WideChar, WideString> data;
    parser.BeginParse(&data);
    ParseOnce(&parser, &data, "ab<");
    EXPECT_EQ(data.text, std::string("a\0b\0", 4));
}

TEST(JunkTest, WideUnitsAreComparedWhole) {
    const WideString input = {0x3C3C, 0x013C, 0x3C00, 0xD83D, 0x000A, '<'};
    CheckRecognizer<JunkSimpleParser<WideChar, WideString>>(input, "19 " + MemoryOf(input.substr(0, 5)) + " rest(<)");
}

}  // namespace
}  // namespace Kestra::Test
