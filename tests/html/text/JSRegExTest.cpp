#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/text/JSRegExSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::JSRegExSimpleParser;
using HTML::JSRegExSimpleParserData;

template <typename Flavour>
using Data = JSRegExSimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Parser = JSRegExSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
std::function<void(Data<Flavour>*)> Escapes(bool allowed) {
    return [allowed](Data<Flavour>* data) { data->allowEscapes = allowed; };
}

template <typename Flavour>
class JSRegExTest : public testing::Test {};

TYPED_TEST_SUITE(JSRegExTest, Flavours);

TYPED_TEST(JSRegExTest, Expressions) {
    struct Case {
        const char* note;
        bool allowEscapes;
        std::string_view input;  // after the opening "/"
        std::string_view expected;
    };
    const Case CASES[] = {
        {"the closing \"/\" is left", true, "ab/g", "19 text(/ab) rest(/g)"},
        {"the closing \"/\" is left without escapes too", false, "ab/g", "19 text(/ab) rest(/g)"},
        {"an empty expression", true, "/", "19 text(/) rest(/)"},
        {"an expression ends before \"<\"", true, "a<b/", "19 text(/a) rest(<b/)"},
        {"an expression ends before a line feed", true, "ab\nc/", "19 text(/ab) rest(\\nc/)"},
        {"an expression ends before a carriage return", true, "ab\r\nc/", "19 text(/ab) rest(\\r\\nc/)"},
        {"brackets give no shelter", true, "[/]/", "19 text(/[) rest(/]/)"},
        {"quotes give no shelter", true, "'/'", "19 text(/') rest(/')"},
        {"an escaped \"/\" is content", true, "a\\/b/", "19 text(/a\\\\/b) rest(/)"},
        {"an escaped backslash escapes nothing", true, "a\\\\/b", "19 text(/a\\\\\\\\) rest(/b)"},
        {"three backslashes escape the \"/\"", true, "\\\\\\//", "19 text(/\\\\\\\\\\\\/) rest(/)"},
        {"an escaped \"<\" ends it all the same", true, "a\\<b/", "19 text(/a\\\\) rest(<b/)"},
        {"an escaped line feed ends it all the same", true, "a\\\nb/", "19 text(/a\\\\) rest(\\nb/)"},
        {"an escaped carriage return ends it all the same", true, "a\\\rb/", "19 text(/a\\\\) rest(\\rb/)"},
        {"without escapes a backslash is content", false, "a\\/b/", "19 text(/a\\\\) rest(/b/)"},
        {"other characters are content", true, "\t\v\0>*'\"\033\x85\xFF/"sv,
         "19 text(/\\t\\x0B\\x00>*'\"\\x1B\\x85\\xFF) rest(/)"},
        {"an expression up to the end of the input is complete", true, "abc", "end 19 text(/abc)"},
        {"an expression of nothing but its \"/\"", true, "", "end 19 text(/)"},
        {"the input ends after a backslash", true, "a\\", "end 19 text(/a\\\\)"},
        {"the input ends after an escaped \"/\"", true, "a\\/", "end 19 text(/a\\\\/)"},
    };
    for (const Case& c : CASES)
        CheckRow<JSRegExSimpleParser, TypeParam>(c.note, c.input, c.expected, Escapes<TypeParam>(c.allowEscapes));
}

TYPED_TEST(JSRegExTest, TheLastCharacterIsTracked) {
    using C = typename TypeParam::C;
    struct Row {
        std::string_view input;
        char lastChar;
    };
    const Row ROWS[] = {{"", '*'},     {"a", 'a'},     {"a\\", '\\'}, {"a\\/", '*'},
                        {"\\\\", '*'}, {"\\\\b", 'b'}, {"ab/", 'b'},  {"/", '*'}};
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

TYPED_TEST(JSRegExTest, WithoutEscapesTheLastCharacterIsNotChanged) {
    using C = typename TypeParam::C;
    for (const char lastChar : {'\\', '*', 'q'}) {
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.lastChar = static_cast<C>(lastChar);
        EXPECT_EQ(ParseOnce(&parser, &data, "ab\\"), (CallOutcome{0, 3}));
        EXPECT_EQ(data.lastChar, static_cast<C>(lastChar));
        EXPECT_EQ(ParseOnce(&parser, &data, "/c"), (CallOutcome{19, 0}));
        EXPECT_EQ(data.lastChar, static_cast<C>(lastChar));
    }
}

TYPED_TEST(JSRegExTest, OnlyASlashLeftInTheRecordTakesTheStopCharacter) {
    const auto prepare = [](Data<TypeParam>* data) {
        data->allowEscapes = true;
        data->lastChar = '/';
    };
    CheckRow<JSRegExSimpleParser, TypeParam>("a \"/\" in front", "/x", "19 text(//) rest(x)", prepare);
    CheckRow<JSRegExSimpleParser, TypeParam>("a \"<\" in front becomes a \"/\"", "<x", "19 text(//) rest(x)", prepare);
    CheckRow<JSRegExSimpleParser, TypeParam>("a line feed in front becomes a \"/\"", "\nx", "19 text(//) rest(x)",
                                             prepare);
    CheckRow<JSRegExSimpleParser, TypeParam>("content in between takes its place", "a/x", "19 text(/a) rest(/x)",
                                             prepare);
    CheckRow<JSRegExSimpleParser, TypeParam>("an escaped \"/\" in between too", "\\/</", "19 text(/\\\\/) rest(</)",
                                             prepare);
    CheckRow<JSRegExSimpleParser, TypeParam>("without a stop character nothing is added", "", "end 19 text(/)",
                                             prepare);
}

TYPED_TEST(JSRegExTest, ABackslashLeftInTheRecordEscapesTheFirstCharacter) {
    const auto prepare = [](Data<TypeParam>* data) {
        data->allowEscapes = true;
        data->lastChar = '\\';
    };
    CheckRow<JSRegExSimpleParser, TypeParam>("a \"/\"", "/x/", "19 text(//x) rest(/)", prepare);
    CheckRow<JSRegExSimpleParser, TypeParam>("a \"<\" is never escaped", "<x/", "19 text(/) rest(<x/)", prepare);
}

TEST(JSRegExTest, WideUnitsAreComparedWhole) {
    // The low or high byte is that of "/", "<", line feed, carriage return and backslash.
    const WideString input = {0x012F, 0x2F00, 0x013C, 0x010A, 0x010D, 0x2028, 0x015C, '/'};
    CheckRecognizer<Parser<Wide>>(input, "19 text(/\\u012F\\u2F00\\u013C\\u010A\\u010D\\u2028\\u015C) rest(/)",
                                  Escapes<Wide>(true));
}

}  // namespace
}  // namespace Kestra::Test
