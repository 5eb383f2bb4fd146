#include "tools/kestra-html/view/ViewTokens.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/CharSet.h"
#include "platform/Characters.h"

namespace Kestra::Test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

using StringNS::CharSet;

/// The elements that tokens are written into, without what is around their JSON.
class WrittenTokens {
public:
    WrittenTokens() : tokens([this](std::string_view bytes) { Take(bytes); }) {}

    std::vector<std::string> elements;
    Tool::ViewTokens tokens;

private:
    void Take(std::string_view bytes) {
        constexpr std::string_view BEGIN = "<script type=\"application/json\" class=\"tokens\">";
        constexpr std::string_view END = "</script>\n";
        ASSERT_TRUE(bytes.starts_with(BEGIN) && bytes.ends_with(END)) << bytes.substr(0, 200);
        elements.emplace_back(bytes.substr(BEGIN.size(), bytes.size() - BEGIN.size() - END.size()));
    }
};

Tool::ViewToken MakeToken(std::uint64_t begin, std::string_view bytes, CharSet::Code charset = CharSet::UTF8) {
    Tool::ViewToken token;
    token.place = {begin, begin + bytes.size(), 1, begin + 1};
    token.bytes = bytes;
    token.charset = charset;
    return token;
}

TEST(ViewTokens, TextIsCutBetweenCharacters) {
    const struct {
        const char* note;
        CharSet::Code charset;
        std::string_view bytes;
        std::size_t cut;
    } CASES[] = {
        {"nothing", CharSet::UTF8, ""sv, 0},
        {"whole characters", CharSet::UTF8, "a\xC3\xA9"sv, 3},
        {"one byte of two", CharSet::UTF8, "a\xC3"sv, 1},
        {"one byte of three", CharSet::UTF8, "a\xE2"sv, 1},
        {"two bytes of three", CharSet::UTF8, "a\xE2\x82"sv, 1},
        {"three bytes of four", CharSet::UTF8, "a\xF0\x9F\x98"sv, 1},
        {"only a part of a character", CharSet::UTF8, "\xF0\x9F\x98"sv, 0},
        {"a part after what is none", CharSet::UTF8, "\xFF\xFFxyz\xE2\x82"sv, 5},
        {"what is none in the middle", CharSet::UTF8, "a\xFFxyz"sv, 5},
        {"a single byte each", CharSet::WINDOWS_1252, "a\xC3"sv, 2},
        {"of no charset", CharSet::UNKNOWN, "a\xC3"sv, 2},
        {"units", CharSet::UTF16_LE, "a\0b\0"sv, 4},
        {"half a unit", CharSet::UTF16_LE, "a\0b"sv, 2},
        {"half a pair", CharSet::UTF16_LE, "a\0\x3D\xD8"sv, 2},
        {"a pair", CharSet::UTF16_LE, "a\0\x3D\xD8\x00\xDE"sv, 6},
        {"lines of ISO-2022", 50221, "a\n\x1B$B$\"\x1B(B\nab"sv, 11},
        {"no line of ISO-2022", 50221, "ab"sv, 2},
    };
    for (const auto& c : CASES)
        EXPECT_EQ(Tool::FindCutForView(c.charset, c.bytes), c.cut) << c.note;
}

TEST(ViewTokens, NothingIsWrittenForNothing) {
    WrittenTokens written;
    written.tokens.Flush();
    EXPECT_TRUE(written.elements.empty());
}

TEST(ViewTokens, ListsOfProperties) {
    WrittenTokens written;
    Tool::ViewToken token = MakeToken(7, "<b t=\xC3\xA9 u>");
    token.kind = 5;
    token.place.line = 3;
    token.marks = Tool::VIEW_MARK_FOLDED;
    token.nameBegin = 1;
    token.nameLength = 1;
    token.attributes = {{{10, 11}, {12, 14}, true, false}, {{15, 16}, {16, 16}, false, true}};
    written.tokens.Add(token);
    written.tokens.Add(MakeToken(17, "x"));
    written.tokens.Flush();
    const std::string expected =
        R"~({"begin":7,"charset":"65001 (UTF-8)","kinds":[5,0],"sizes":[10,1],"lengths":[9,1],)~"
        R"~("lines":[3,-2],"columns":[8,18],"marks":[2,0],"parts":[[1,1,1,1,1,1,0,1,1,0,-1,1],0],)~"
        R"~("text":"\u003cb t=é u\u003ex"})~";
    EXPECT_EQ(written.elements, (std::vector<std::string>{expected}));
}

TEST(ViewTokens, ListsThatAreNotNeeded) {
    WrittenTokens written;
    written.tokens.Add(MakeToken(0, "a"));
    written.tokens.Flush();
    const std::string expected = R"~({"begin":0,"charset":"65001 (UTF-8)","kinds":[0],"sizes":[1],)~"
                                 R"~("lines":[1],"columns":[1],"parts":[0],"text":"a"})~";
    EXPECT_EQ(written.elements, (std::vector<std::string>{expected}));
}

TEST(ViewTokens, ElementsEndAtAChangeOfCharsetAndWhenTheyAreFull) {
    WrittenTokens written;
    std::uint64_t begin = 0;
    const auto add = [&](std::string_view bytes, CharSet::Code charset) {
        written.tokens.Add(MakeToken(begin, bytes, charset));
        begin += bytes.size();
    };
    add("a", CharSet::UTF8);
    add("\xE9", CharSet::WINDOWS_1252);
    add("\xE9", CharSet::UNKNOWN);
    const std::string large(Tool::ViewTokens::MOST_UNITS + 1, 'b');
    add(large, CharSet::UNKNOWN);
    add("c", CharSet::UNKNOWN);
    written.tokens.Flush();
    ASSERT_EQ(written.elements.size(), 4U);
    const std::string_view CHARSETS[] = {"\"65001 (UTF-8)\"", "\"1252 (windows-1252)\"",
                                         "\"unknown, shown as 1252 (windows-1252)\"",
                                         "\"unknown, shown as 1252 (windows-1252)\""};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NE(written.elements[i].find("\"charset\":"s.append(CHARSETS[i])), std::string::npos) << i;
    EXPECT_TRUE(written.elements[2].ends_with("bbb\"}"));
    EXPECT_TRUE(written.elements[3].starts_with("{\"begin\":" + std::to_string(3 + large.size())));
    written.elements.clear();
    for (std::size_t i = 0; i <= Tool::ViewTokens::MOST_TOKENS; ++i)
        add("d", CharSet::UTF8);
    written.tokens.Flush();
    EXPECT_EQ(written.elements.size(), 2U);
}

TEST(ViewTokens, PartsThatAreNotInTheTokenAreCut) {
    WrittenTokens written;
    Tool::ViewToken token = MakeToken(0, "<b>");
    token.nameBegin = 2;
    token.nameLength = 9;
    token.attributes = {{{1, 200}, {300, 400}, true, false}};
    written.tokens.Add(token);
    written.tokens.Flush();
    ASSERT_EQ(written.elements.size(), 1U);
    EXPECT_NE(written.elements[0].find("\"parts\":[[2,1,0,0,0,0,0]]"), std::string::npos) << written.elements[0];
}

TEST(ViewTokens, Decoding) {
    const struct {
        const char* note;
        CharSet::Code charset;
        std::string_view bytes;
        WideString text;
        bool isGood;
    } CASES[] = {
        {"nothing", 65001, "", KESTRA_WIDE(""), true},
        {"UTF-8", 65001, "a\xC3\xA9", KESTRA_WIDE("a\u00E9"), true},
        {"what is not UTF-8", 65001, "a\xE9", KESTRA_WIDE("a\uFFFD"), false},
        {"a character of UTF-8 that is U+FFFD", 65001, "\xEF\xBF\xBD", KESTRA_WIDE("\uFFFD"), true},
        {"and one beside what is not UTF-8", 65001, "\xEF\xBF\xBD\xFF", KESTRA_WIDE("\uFFFD\uFFFD"), false},
        {"a mark", 65001, "\xEF\xBB\xBF", KESTRA_WIDE("\uFEFF"), true},
        {"NULs at the end stay", 65001, "a\0\0"sv, WideString(KESTRA_WIDE("a\0\0"), 3), true},
        {"in another charset as well", 1251, "\xE0\0"sv, WideString(KESTRA_WIDE("\u0430\0"), 2), true},
        {"an unknown charset is taken for windows-1252", 0, "\x80\xE9", KESTRA_WIDE("\u20AC\u00E9"), true},
        {"so is one that there is not", 12345, "\xE9", KESTRA_WIDE("\u00E9"), true},
        {"UTF-16", 1200, "a\0\xAC\x20"sv, KESTRA_WIDE("a\u20AC"), true},
        {"NULs of UTF-16", 1200, "\0\0\0\0"sv, WideString(KESTRA_WIDE("\0\0"), 2), true},
        {"a lone surrogate", 1200, "\x00\xD8"sv, WideString{static_cast<WideChar>(0xD800)}, true},
        {"half a unit", 1200, "a\0b"sv, KESTRA_WIDE("a\uFFFD"), false},
    };
    for (const auto& c : CASES) {
        WideString text = KESTRA_WIDE("before");
        EXPECT_EQ(Tool::DecodeForView(c.charset, c.bytes, &text), c.isGood) << c.note;
        EXPECT_TRUE(text == c.text) << c.note;
    }
    EXPECT_EQ(Tool::GetShownCharset(0), 1252U);
    EXPECT_EQ(Tool::GetShownCharset(12345), 1252U);
    EXPECT_EQ(Tool::GetShownCharset(1200), 1200U);
    EXPECT_EQ(Tool::GetShownCharset(932), 932U);
}

}  // namespace
}  // namespace Kestra::Test
