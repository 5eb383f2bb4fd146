#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/text/DQuoteStringSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::DQuoteStringSimpleParser;
using HTML::DQuoteStringSimpleParserData;

template <typename Flavour>
using Data = DQuoteStringSimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Parser = DQuoteStringSimpleParser<typename Flavour::C, typename Flavour::S>;

/// The options as letters: a for `allowEscapes`, e for `allowEscape2022`.
template <typename Flavour>
std::function<void(Data<Flavour>*)> Options(std::string_view letters) {
    return [letters](Data<Flavour>* data) {
        data->allowEscapes = letters.find('a') != letters.npos;
        data->allowEscape2022 = letters.find('e') != letters.npos;
    };
}

struct Case {
    const char* note;
    std::string_view options;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class DQuoteStringTest : public testing::Test {};

TYPED_TEST_SUITE(DQuoteStringTest, Flavours);

TYPED_TEST(DQuoteStringTest, Strings) {
    const Case CASES[] = {
        {"a string ends after its closing quotation mark", "", "it\"s", "19 text(it) rest(s)"},
        {"the closing mark may be the last character", "", "it\"", "19 text(it)"},
        {"a string may be empty", "", "\"\"", "19 text() rest(\")"},
        {"everything else is content", "", "<a href='/*x*/'>//\033$B\"", "19 text(<a href='/*x*/'>//\\x1B$B)"},
        {"line ends are content", "", "a\r\nb\n\n\"\n", "19 text(a\\r\\nb\\n\\n) rest(\\n)"},
        {"a NUL is content", "", "a\0\""sv, "19 text(a\\x00)"},
        {"without escapes a backslash is content", "", "it\\\"s\"", "19 text(it\\\\) rest(s\")"},
        {"an escaped mark is content and keeps its backslash", "a", "it\\\"s\"", "19 text(it\\\\\"s)"},
        {"an escaped backslash escapes nothing", "a", "a\\\\\"b", "19 text(a\\\\\\\\) rest(b)"},
        {"three backslashes escape the mark", "a", "a\\\\\\\"b\"", "19 text(a\\\\\\\\\\\\\"b)"},
        {"a mark as the escaped character and another one", "a", "\\\"\"", "19 text(\\\\\")"},
        {"without its option ESC is content, escaped or not", "a", "\033$B\\\033\"x",
         "19 text(\\x1B$B\\\\\\x1B) rest(x)"},
        {"the input ends inside the string", "", "abc", "end 16 text(abc)"},
        {"the input ends at once", "", "", "end 16 text()"},
        {"the input ends after a backslash", "a", "abc\\", "end 16 text(abc\\\\)"},
    };
    for (const Case& c : CASES)
        CheckRow<DQuoteStringSimpleParser, TypeParam>(c.note, c.input, c.expected, Options<TypeParam>(c.options));
}

TYPED_TEST(DQuoteStringTest, EscapeRuns) {
    const Case CASES[] = {
        {"a mark inside a run is content", "e", "a\033$B\"\033(Bb\"c", "19 text(a\\x1B$B\"\\x1B(Bb) rest(c)"},
        {"a run directly before the closing mark", "e", "\033$B\"x\033(J\"", "19 text(\\x1B$B\"x\\x1B(J)"},
        {"two runs in a row", "e", "\033$B\"\033(B\033$A\"\033(B\"", "19 text(\\x1B$B\"\\x1B(B\\x1B$A\"\\x1B(B)"},
        {"an escape that designates nothing is content", "e", "a\033xb\"c", "19 text(a\\x1Bxb) rest(c)"},
        {"a mark directly after ESC is content", "e", "a\033\"b\"", "19 text(a\\x1B\"b)"},
        {"with escapes, a backslash before ESC makes it content", "ae", "\\\033$B\"x", "19 text(\\\\\\x1B$B) rest(x)"},
        {"two backslashes do not", "ae", "\\\\\033$B\"\033(B\"", "19 text(\\\\\\\\\\x1B$B\"\\x1B(B)"},
        {"without escapes a backslash before ESC means nothing", "e", "\\\033$B\"\033(B\"x",
         "19 text(\\\\\\x1B$B\"\\x1B(B) rest(x)"},
        {"a backslash at the end of a run escapes nothing", "ae", "\033$Bx\\\033(B\"y",
         "19 text(\\x1B$Bx\\\\\\x1B(B) rest(y)"},
        {"a backslash after a run escapes as ever", "ae", "\033$B\"\033(B\\\"\"", "19 text(\\x1B$B\"\\x1B(B\\\\\")"},
        {"lines are counted inside a run", "e", "\n\033$B\n\"\n\033(B\"x",
         "19 text(\\n\\x1B$B\\n\"\\n\\x1B(B) rest(x)"},
        {"without the option a run is no run", "", "\033$B\"\033(B\"", "19 text(\\x1B$B) rest(\\x1B(B\")"},
        {"the input ends after a run", "e", "a\033$B\"\033(B", "end 16 text(a\\x1B$B\"\\x1B(B)"},
        {"the input ends inside a run", "e", "a\033$B\"", "end 16"},
        {"the input ends after ESC", "e", "a\033", "end 16"},
    };
    for (const Case& c : CASES)
        CheckRow<DQuoteStringSimpleParser, TypeParam>(c.note, c.input, c.expected, Options<TypeParam>(c.options));
}

TYPED_TEST(DQuoteStringTest, ACallEndsAfterAnEscapeRunWithInputLeft) {
    using S = typename TypeParam::S;
    struct Row {
        std::string_view input;
        std::uint64_t position;
        std::string_view text;
    };
    const Row ROWS[] = {
        {"a\033$B\"\033(Bb\"", 8, "a\033$B\"\033(B"},
        {"\033x\"", 2, "\033x"},
        {"\033\"\"", 2, "\033\""},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(Trace::Escape(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.allowEscape2022 = true;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), (CallOutcome{0, row.position}));
        EXPECT_EQ(data.state, 0U);
        EXPECT_EQ(data.text, To<S>(row.text));
    }
}

TYPED_TEST(DQuoteStringTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a", Options<TypeParam>("e")), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\033", Options<TypeParam>("e")), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\033$Bx", Options<TypeParam>("e")), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\033$Bx\033", Options<TypeParam>("e")), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\033$Bx\033(B", Options<TypeParam>("e")), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\033x", Options<TypeParam>("e")), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\033", Options<TypeParam>("")), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\\\033", Options<TypeParam>("ae")), 0U);
}

TYPED_TEST(DQuoteStringTest, BeginParseBeginsTheEscapeRecognizerToo) {
    using S = typename TypeParam::S;
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    data.allowEscape2022 = true;
    EXPECT_EQ(ParseOnce(&parser, &data, "a\033$Bx\033("), (CallOutcome{0, 7}));
    parser.BeginParse(&data);
    data.state = 1;
    EXPECT_EQ(ParseOnce(&parser, &data, "$x\""), (CallOutcome{0, 2}));
    EXPECT_EQ(data.text, To<S>("\033$x"));
}

TYPED_TEST(DQuoteStringTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(2);
}

TYPED_TEST(DQuoteStringTest, TheLastCharacterIsTracked) {
    using C = typename TypeParam::C;
    struct Row {
        std::string_view input;
        char lastChar;
    };
    const Row ROWS[] = {{"", '*'},     {"a", 'a'},     {"a\\", '\\'},  {"a\\\"", '*'},
                        {"\\\\", '*'}, {"\\\\b", 'b'}, {"\\\033", '*'}};
    for (const Row& row : ROWS) {
        SCOPED_TRACE(Trace::Escape(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.allowEscapes = true;
        data.allowEscape2022 = true;
        ParseOnce(&parser, &data, row.input);
        EXPECT_EQ(data.lastChar, static_cast<C>(row.lastChar));
    }
}

TYPED_TEST(DQuoteStringTest, WithoutEscapesTheLastCharacterIsNeitherReadNorChanged) {
    using C = typename TypeParam::C;
    for (const char lastChar : {'\\', '*', 'q'}) {
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.lastChar = static_cast<C>(lastChar);
        data.allowEscape2022 = true;
        EXPECT_EQ(ParseOnce(&parser, &data, "ab\\"), (CallOutcome{0, 3}));
        EXPECT_EQ(ParseOnce(&parser, &data, "\033$B\""), (CallOutcome{0, 4}));
        EXPECT_EQ(ParseOnce(&parser, &data, "\033(B\"c"), (CallOutcome{0, 3}));
        EXPECT_EQ(data.lastChar, static_cast<C>(lastChar));
        EXPECT_EQ(ParseOnce(&parser, &data, "\"c"), (CallOutcome{19, 1}));
        EXPECT_EQ(data.lastChar, static_cast<C>(lastChar));
    }
}

TYPED_TEST(DQuoteStringTest, ABackslashLeftInTheRecordEscapesTheFirstCharacter) {
    const auto prepare = [](Data<TypeParam>* data) {
        data->allowEscapes = true;
        data->allowEscape2022 = true;
        data->lastChar = '\\';
    };
    CheckRow<DQuoteStringSimpleParser, TypeParam>("a mark", "\"x\"", "19 text(\"x)", prepare);
    CheckRow<DQuoteStringSimpleParser, TypeParam>("ESC", "\033$B\"x", "19 text(\\x1B$B) rest(x)", prepare);
}

TEST(DQuoteStringTest, WideUnitsAreComparedWhole) {
    const WideString input = {0x0122, 0x2200, 0x015C, 0x011B,
                              '"'};  // the low or high byte is that of a mark, backslash or ESC
    CheckRecognizer<Parser<Wide>>(input, "19 text(\\u0122\\u2200\\u015C\\u011B)", Options<Wide>("ae"));
}

}  // namespace
}  // namespace Kestra::Test
