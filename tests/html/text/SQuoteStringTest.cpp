#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/text/SQuoteStringSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::SQuoteStringSimpleParser;
using HTML::SQuoteStringSimpleParserData;

template <typename Flavour>
using Data = SQuoteStringSimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Parser = SQuoteStringSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
std::function<void(Data<Flavour>*)> Escapes(bool allowed) {
    return [allowed](Data<Flavour>* data) { data->allowEscapes = allowed; };
}

template <typename Flavour>
class SQuoteStringTest : public testing::Test {};

TYPED_TEST_SUITE(SQuoteStringTest, Flavours);

TYPED_TEST(SQuoteStringTest, Strings) {
    struct Case {
        const char* note;
        bool allowEscapes;
        std::string_view input;
        std::string_view expected;
    };
    const Case CASES[] = {
        {"a string ends after its closing quote", false, "it's", "19 text(it) rest(s)"},
        {"the closing quote may be the last character", false, "it'", "19 text(it)"},
        {"a string may be empty", false, "''", "19 text() rest(')"},
        {"everything else is content", false, "<a href=\"/*x*/\">//\033$B'", "19 text(<a href=\"/*x*/\">//\\x1B$B)"},
        {"line ends are content", false, "a\r\nb\n\n'\n", "19 text(a\\r\\nb\\n\\n) rest(\\n)"},
        {"a NUL is content", false, "a\0'"sv, "19 text(a\\x00)"},
        {"characters from 128 up are content", false, "\x85\xA7\xFF'", "19 text(\\x85\\xA7\\xFF)"},
        {"without escapes a backslash is content", false, "it\\'s'", "19 text(it\\\\) rest(s')"},
        {"an escaped quote is content and keeps its backslash", true, "it\\'s'", "19 text(it\\\\'s)"},
        {"an escaped backslash escapes nothing", true, "a\\\\'b", "19 text(a\\\\\\\\) rest(b)"},
        {"three backslashes escape the quote", true, "a\\\\\\'b'", "19 text(a\\\\\\\\\\\\'b)"},
        {"four backslashes do not", true, "\\\\\\\\'b'", "19 text(\\\\\\\\\\\\\\\\) rest(b')"},
        {"a quote as the escaped character and another one", true, "\\''", "19 text(\\\\')"},
        {"any character may be escaped", true, "\\n\\\n\\<'", "19 text(\\\\n\\\\\\n\\\\<)"},
        {"escapes far from the quote", true, "a\\bc\\de'", "19 text(a\\\\bc\\\\de)"},
        {"a star before the quote is no backslash", true, "a*'b", "19 text(a*) rest(b)"},
        {"the input ends inside the string", false, "abc", "end 16 text(abc)"},
        {"the input ends at once", false, "", "end 16 text()"},
        {"the input ends after a backslash", true, "abc\\", "end 16 text(abc\\\\)"},
        {"the input ends after an escaped quote", true, "abc\\'", "end 16 text(abc\\\\')"},
    };
    for (const Case& c : CASES)
        CheckRow<SQuoteStringSimpleParser, TypeParam>(c.note, c.input, c.expected, Escapes<TypeParam>(c.allowEscapes));
}

TYPED_TEST(SQuoteStringTest, TheLastCharacterIsTracked) {
    using C = typename TypeParam::C;
    struct Row {
        std::string_view input;
        char lastChar;
    };
    const Row ROWS[] = {{"", '*'},     {"a", 'a'},     {"a\\", '\\'},    {"a\\'", '*'},
                        {"\\\\", '*'}, {"\\\\b", 'b'}, {"\\\\\\", '\\'}, {"ab\n", '\n'}};
    for (const Row& row : ROWS) {
        SCOPED_TRACE(Trace::Escape(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.allowEscapes = true;
        ParseOnce(&parser, &data, row.input);
        EXPECT_EQ(data.lastChar, static_cast<C>(row.lastChar));
    }
}

TYPED_TEST(SQuoteStringTest, WithoutEscapesTheLastCharacterIsNeitherReadNorChanged) {
    using C = typename TypeParam::C;
    for (const char lastChar : {'\\', '*', 'q'}) {
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.lastChar = static_cast<C>(lastChar);
        EXPECT_EQ(ParseOnce(&parser, &data, "ab\\"), (CallOutcome{0, 3}));
        EXPECT_EQ(data.lastChar, static_cast<C>(lastChar));
        EXPECT_EQ(ParseOnce(&parser, &data, "'c"), (CallOutcome{19, 1}));
        EXPECT_EQ(data.lastChar, static_cast<C>(lastChar));
    }
}

TYPED_TEST(SQuoteStringTest, ABackslashLeftInTheRecordEscapesTheFirstCharacter) {
    const auto prepare = [](Data<TypeParam>* data) {
        data->allowEscapes = true;
        data->lastChar = '\\';
    };
    CheckRow<SQuoteStringSimpleParser, TypeParam>("a quote", "'x'", "19 text('x)", prepare);
    CheckRow<SQuoteStringSimpleParser, TypeParam>("a backslash", "\\'x", "19 text(\\\\) rest(x)", prepare);
}

TYPED_TEST(SQuoteStringTest, AStringMayBeLong) {
    using S = typename TypeParam::S;
    const std::string content(200000, 'x');
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, content + "'"), (CallOutcome{19, content.size() + 1}));
    EXPECT_EQ(data.text, To<S>(content));
}

TEST(SQuoteStringTest, WideUnitsAreComparedWhole) {
    const WideString input = {0x0127, 0x2700, 0x015C, '\''};  // the low or high byte is that of a quote or backslash
    CheckRecognizer<Parser<Wide>>(input, "19 text(\\u0127\\u2700\\u015C)", Escapes<Wide>(true));
}

}  // namespace
}  // namespace Kestra::Test
