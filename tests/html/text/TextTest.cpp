#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/text/TextSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::TextSimpleParser;
using HTML::TextSimpleParserData;

/// Sets the options that letters name: "/*" as c, "//" as p, "'" as s, the quotation mark as d,
/// regular expressions as r, ESC as e.
template <typename Data>
void SetOptions(Data* data, std::string_view letters) {
    const auto has = [letters](char letter) { return letters.find(letter) != letters.npos; };
    data->allowCComment = has('c');
    data->allowCPPComment = has('p');
    data->allowSQuoteString = has('s');
    data->allowDQuoteString = has('d');
    data->allowJSRegEx = has('r');
    data->allowEscape2022 = has('e');
}

template <typename Flavour>
std::function<void(TextSimpleParserData<typename Flavour::C, typename Flavour::S>*)> Options(std::string_view letters) {
    return [letters](auto* data) { SetOptions(data, letters); };
}

struct Case {
    const char* note;
    std::string_view options;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class TextTest : public testing::Test {};

TYPED_TEST_SUITE(TextTest, Flavours);

TYPED_TEST(TextTest, Markup) {
    const Case CASES[] = {
        {"text ends at \"<\", which is consumed", "", "a<b", "19 text(a) next(GenericTagSimpleParser) rest(b)"},
        {"text may be empty", "", "<b", "19 text() next(GenericTagSimpleParser) rest(b)"},
        {"a \"<\" as the last character hands over", "", "ab<", "19 text(ab) next(GenericTagSimpleParser)"},
        {"text up to the end of the input is complete", "", "abc", "end 19 text(abc)"},
        {"no input at all is a complete empty text", "", "", "end 19 text()"},
        {"without options only \"<\" ends text", "", "a'b\"c/d/*e*/f//g\033$Bh>&amp;\n<",
         "19 text(a'b\"c/d/*e*/f//g\\x1B$Bh>&amp;\\n) next(GenericTagSimpleParser)"},
        {"lines and columns are counted", "", "a\r\nb\n\nc\td\n<e",
         "19 text(a\\r\\nb\\n\\nc\\td\\n) next(GenericTagSimpleParser) rest(e)"},
        {"a NUL is text", "", "a\0b<"sv, "19 text(a\\x00b) next(GenericTagSimpleParser)"},
        {"characters from 128 up are text", "", "\x80\xA0\xBC\xFF<",
         "19 text(\\x80\\xA0\\xBC\\xFF) next(GenericTagSimpleParser)"},
    };
    for (const Case& c : CASES)
        CheckRow<TextSimpleParser, TypeParam>(c.note, c.input, c.expected, Options<TypeParam>(c.options));
}

TYPED_TEST(TextTest, ScriptOpeners) {
    const Case CASES[] = {
        {"\"/*\" opens a block comment", "cp", "x/*y", "19 text(x) next(CCommentSimpleParser) rest(y)"},
        {"\"//\" opens a line comment", "cp", "x//y", "19 text(x) next(CPPCommentSimpleParser) rest(y)"},
        {"a third \"/\" belongs to the line comment", "cp", "x///y",
         "19 text(x) next(CPPCommentSimpleParser) rest(/y)"},
        {"an opener may come first", "cp", "/*", "19 text() next(CCommentSimpleParser)"},
        {"\"/*\" wins over a regular expression", "cpr", "a/*b", "19 text(a) next(CCommentSimpleParser) rest(b)"},
        {"\"//\" wins over a regular expression", "cpr", "a//b", "19 text(a) next(CPPCommentSimpleParser) rest(b)"},
        {"any other \"/\" opens a regular expression", "cpr", "a/b", "19 text(a) next(JSRegExSimpleParser) rest(b)"},
        {"a regular expression may begin with \"<\"", "cpr", "/<", "19 text() next(JSRegExSimpleParser) rest(<)"},
        {"a regular expression may begin with a line feed", "cpr", "/\n",
         "19 text() next(JSRegExSimpleParser) rest(\\n)"},
        {"a quote after \"/\" belongs to the regular expression", "cprsd", "/'",
         "19 text() next(JSRegExSimpleParser) rest(')"},
        {"an apostrophe opens a string", "s", "a'b", "19 text(a) next(SQuoteStringSimpleParser) rest(b)"},
        {"a quotation mark opens a string", "d", "a\"b", "19 text(a) next(DQuoteStringSimpleParser) rest(b)"},
        {"the first of two openers wins", "sd", "\"'", "19 text() next(DQuoteStringSimpleParser) rest(')"},
        {"the other quote is text without its option", "s", "a\"b'", "19 text(a\"b) next(SQuoteStringSimpleParser)"},
        {"an apostrophe is text without its option", "d", "a'b\"", "19 text(a'b) next(DQuoteStringSimpleParser)"},
        {"\"<\" hands over whatever the options", "cpsdr", "a<b", "19 text(a) next(GenericTagSimpleParser) rest(b)"},
        {"quotes are text with comment options alone", "cp", "'\"<", "19 text('\") next(GenericTagSimpleParser)"},
        {"a backslash is text", "sd", "\\'", "19 text(\\\\) next(SQuoteStringSimpleParser)"},
    };
    for (const Case& c : CASES)
        CheckRow<TextSimpleParser, TypeParam>(c.note, c.input, c.expected, Options<TypeParam>(c.options));
}

TYPED_TEST(TextTest, Slashes) {
    const Case CASES[] = {
        {"a \"/\" that opens nothing is text, in one token", "cp", "a/b", "end 19 text(a/b)"},
        {"text goes on after such a \"/\"", "cp", "a/b<", "19 text(a/b) next(GenericTagSimpleParser)"},
        {"a \"/\" directly before \"<\"", "cp", "a/<", "19 text(a/) next(GenericTagSimpleParser)"},
        {"a \"/\" directly before an apostrophe", "cps", "a/'", "19 text(a/) next(SQuoteStringSimpleParser)"},
        {"a \"/\" directly before a quotation mark", "cpd", "a/\"", "19 text(a/) next(DQuoteStringSimpleParser)"},
        {"only block comments: \"//\" is text", "c", "x//y<", "19 text(x//y) next(GenericTagSimpleParser)"},
        {"only block comments: the second \"/\" of \"//*\" opens one", "c", "x//*y",
         "19 text(x/) next(CCommentSimpleParser) rest(y)"},
        {"only line comments: \"/*\" is text", "p", "x/*y<", "19 text(x/*y) next(GenericTagSimpleParser)"},
        {"only line comments: \"/*/\" and \"/\"", "p", "x/*//", "19 text(x/*) next(CPPCommentSimpleParser)"},
        {"block comments and regular expressions: \"//\" opens the latter", "cr", "a//b",
         "19 text(a) next(JSRegExSimpleParser) rest(/b)"},
        {"line comments and regular expressions: \"/*\" opens the latter", "pr", "a/*b",
         "19 text(a) next(JSRegExSimpleParser) rest(*b)"},
        {"regular expressions alone never stop text", "r", "a/b/*c//d<",
         "19 text(a/b/*c//d) next(GenericTagSimpleParser)"},
        {"regular expressions alone never stop text, at the end either", "r", "a/b", "end 19 text(a/b)"},
        {"a \"/\" at the end of the input is text", "cp", "a/", "end 19 text(a/)"},
        {"a \"/\" at the end of the input is text with regular expressions too", "cpr", "a/", "end 19 text(a/)"},
        {"a lone \"/\" is text", "c", "/", "end 19 text(/)"},
        {"line feeds around a \"/\"", "cp", "a\n/\nb\n/*", "19 text(a\\n/\\nb\\n) next(CCommentSimpleParser)"},
    };
    for (const Case& c : CASES)
        CheckRow<TextSimpleParser, TypeParam>(c.note, c.input, c.expected, Options<TypeParam>(c.options));
}

TEST(TextTest, NarrowEscapeRuns) {
    const Case CASES[] = {
        {"markup inside a run is text", "e", "a\033$B<'/\"\033(Bb<c",
         "19 text(a\\x1B$B<'/\"\\x1B(Bb) next(GenericTagSimpleParser) rest(c)"},
        {"openers inside a run are text", "ecpsdr", "\033$B/*//'\"\033(J/*",
         "19 text(\\x1B$B/*//'\"\\x1B(J) next(CCommentSimpleParser)"},
        {"two runs in a row", "e", "\033$B<\033(B\033$@<\033(J<",
         "19 text(\\x1B$B<\\x1B(B\\x1B$@<\\x1B(J) next(GenericTagSimpleParser)"},
        {"an escape that designates nothing is text", "e", "a\033x<b",
         "19 text(a\\x1Bx) next(GenericTagSimpleParser) rest(b)"},
        {"a \"<\" directly after ESC is text", "e", "a\033<b<", "19 text(a\\x1B<b) next(GenericTagSimpleParser)"},
        {"an escape after a pending \"/\"", "ecp", "/\033$B<\033(B<",
         "19 text(/\\x1B$B<\\x1B(B) next(GenericTagSimpleParser)"},
        {"a \"/\" after a run is judged as ever", "ecp", "\033$B<\033(B/*",
         "19 text(\\x1B$B<\\x1B(B) next(CCommentSimpleParser)"},
        {"a \"/\" before a run and one after it open nothing", "ecp", "/\033xy/<",
         "19 text(/\\x1Bxy/) next(GenericTagSimpleParser)"},
        {"the input ends after ESC", "e", "a\033", "end 19 text(a\\x1B)"},
        {"the input ends inside a designation", "e", "a\033$", "end 19 text(a\\x1B$)"},
        {"the input ends inside a run", "e", "a\033$B<x", "end 19 text(a\\x1B$B<x)"},
        {"the input ends after the ESC of a return", "e", "a\033$Bx\033", "end 19 text(a\\x1B$Bx\\x1B)"},
        {"the input ends inside a return", "e", "a\033$Bx\033(", "end 19 text(a\\x1B$Bx\\x1B()"},
        {"lines are counted inside a run", "e", "a\n\033$B\nb\n\033(Bc<",
         "19 text(a\\n\\x1B$B\\nb\\n\\x1B(Bc) next(GenericTagSimpleParser)"},
        {"without the option ESC is text", "", "a\033$B<b", "19 text(a\\x1B$B) next(GenericTagSimpleParser) rest(b)"},
    };
    for (const Case& c : CASES)
        CheckRow<TextSimpleParser, Narrow>(c.note, c.input, c.expected, Options<Narrow>(c.options));
}

TEST(TextTest, WideTextNeverStopsAtAnEscape) {
    const Case CASES[] = {
        {"markup after a designation is markup", "e", "a\033$B<b",
         "19 text(a\\x1B$B) next(GenericTagSimpleParser) rest(b)"},
        {"ESC before \"<\"", "e", "\033<b", "19 text(\\x1B) next(GenericTagSimpleParser) rest(b)"},
        {"ESC after a pending \"/\"", "ecp", "/\033<", "19 text(/\\x1B) next(GenericTagSimpleParser)"},
        {"ESC after a pending \"/\" opens a regular expression", "ecpr", "/\033<",
         "19 text() next(JSRegExSimpleParser) rest(\\x1B<)"},
        {"ESC at the end of the input", "e", "a\033", "end 19 text(a\\x1B)"},
    };
    for (const Case& c : CASES)
        CheckRow<TextSimpleParser, Wide>(c.note, c.input, c.expected, Options<Wide>(c.options));
    EXPECT_EQ((StateAfter<TextSimpleParser<WideChar, WideString>>("a\033", Options<Wide>("e"))), 0U);
}

TEST(TextTest, WideUnitsAreComparedWhole) {
    // The low bytes are those of "<", "/", "*", the quotes and line feed.
    const WideString input = {0x013C, 0x3C00, 0x012F, 0x012A, 0x2F2F, 0x0127, 0x0122, 0x010A, '<'};
    CheckRecognizer<TextSimpleParser<WideChar, WideString>>(
        input, "19 text(\\u013C\\u3C00\\u012F\\u012A\\u2F2F\\u0127\\u0122\\u010A) next(GenericTagSimpleParser)",
        Options<Wide>("cpsdr"));
}

TYPED_TEST(TextTest, States) {
    using Parser = TextSimpleParser<typename TypeParam::C, typename TypeParam::S>;
    EXPECT_EQ(StateAfter<Parser>("a", Options<TypeParam>("cp")), 0U);
    EXPECT_EQ(StateAfter<Parser>("a/", Options<TypeParam>("c")), 1U);
    EXPECT_EQ(StateAfter<Parser>("a/", Options<TypeParam>("p")), 1U);
    EXPECT_EQ(StateAfter<Parser>("a/", Options<TypeParam>("r")), 0U);
    EXPECT_EQ(StateAfter<Parser>("a/", Options<TypeParam>("")), 0U);
    EXPECT_EQ(StateAfter<Parser>("a/b", Options<TypeParam>("cp")), 0U);
    EXPECT_EQ(StateAfter<Parser>("a<", Options<TypeParam>("cp")), 0U);
}

TEST(TextTest, StatesOfNarrowEscapeRuns) {
    using Parser = TextSimpleParser<char, std::string>;
    EXPECT_EQ(StateAfter<Parser>("a\033", Options<Narrow>("e")), 2U);
    EXPECT_EQ(StateAfter<Parser>("a\033$", Options<Narrow>("e")), 2U);
    EXPECT_EQ(StateAfter<Parser>("a\033$Bx", Options<Narrow>("e")), 2U);
    EXPECT_EQ(StateAfter<Parser>("a\033$Bx\033(", Options<Narrow>("e")), 2U);
    EXPECT_EQ(StateAfter<Parser>("a\033$Bx\033(B", Options<Narrow>("e")), 0U);
    EXPECT_EQ(StateAfter<Parser>("a\033x", Options<Narrow>("e")), 0U);
    EXPECT_EQ(StateAfter<Parser>("a\033$B", Options<Narrow>("")), 0U);
}

TEST(TextTest, BeginParseBeginsTheEscapeRecognizerToo) {
    TextSimpleParser<char, std::string> parser;
    TextSimpleParserData<char, std::string> data;
    parser.BeginParse(&data);
    SetOptions(&data, "e");
    EXPECT_EQ(ParseOnce(&parser, &data, "a\033$Bx\033("), (CallOutcome{0, 7}));
    parser.BeginParse(&data);
    data.state = 2;
    EXPECT_EQ(ParseOnce(&parser, &data, "$x<"), (CallOutcome{19, 3}));
    EXPECT_EQ(data.text, "\033$x");
}

TYPED_TEST(TextTest, UnknownStates) {
    CheckUnknownStates<TextSimpleParser<typename TypeParam::C, typename TypeParam::S>>(3);
}

TYPED_TEST(TextTest, APendingSlashIsNotYetText) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    TextSimpleParser<C, S> parser;
    TextSimpleParserData<C, S> data;
    parser.BeginParse(&data);
    SetOptions(&data, "cp");
    EXPECT_EQ(ParseOnce(&parser, &data, "x/"), (CallOutcome{0, 2}));
    EXPECT_EQ(data.text, To<S>("x"));
    EXPECT_TRUE(data.nextParserName.empty());
    EXPECT_EQ(ParseOnce(&parser, &data, "*y"), (CallOutcome{19, 1}));
    EXPECT_EQ(data.text, To<S>("x"));
    EXPECT_EQ(data.nextParserName, KESTRA_WIDE("CCommentSimpleParser"));
}

TYPED_TEST(TextTest, APendingSlashIsJudgedByTheOptionsOfTheNextCall) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    struct Row {
        const char* note;
        std::string_view first;  // options of the call that reads "x/"
        std::string_view second;
        std::string_view rest;
        CallOutcome outcome;
        std::string_view text;
        std::string_view next;
    };
    const Row ROWS[] = {
        {"taken away, \"*\" opens nothing", "cp", "", "*y<", {19, 3}, "x/*y", "GenericTagSimpleParser"},
        {"taken away, \"/\" opens nothing", "cp", "", "/y<", {19, 3}, "x//y", "GenericTagSimpleParser"},
        {"regular expressions added", "c", "r", "y", {19, 0}, "x", "JSRegExSimpleParser"},
        {"line comments added", "c", "cp", "/y", {19, 1}, "x", "CPPCommentSimpleParser"},
        {"nothing left, one piece", "c", "", "y", {0, 1}, "x/y", ""},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.note);
        TextSimpleParser<C, S> parser;
        TextSimpleParserData<C, S> data;
        parser.BeginParse(&data);
        SetOptions(&data, row.first);
        EXPECT_EQ(ParseOnce(&parser, &data, "x/"), (CallOutcome{0, 2}));
        SetOptions(&data, row.second);
        EXPECT_EQ(ParseOnce(&parser, &data, row.rest), row.outcome);
        EXPECT_EQ(data.text, To<S>(row.text));
        EXPECT_EQ(data.nextParserName, To<WideString>(row.next));
    }
}

TYPED_TEST(TextTest, AnEmptyPieceIsAnsweredAtOnce) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    TextSimpleParser<C, S> parser;
    TextSimpleParserData<C, S> data;
    parser.BeginParse(&data);
    SetOptions(&data, "cp");
    for (const std::uint32_t state : {0U, 1U}) {
        data.state = state;
        EXPECT_EQ(ParseOnce(&parser, &data, ""), (CallOutcome{0, 0}));
        EXPECT_EQ(data.state, state);
        EXPECT_TRUE(data.text.empty());
    }
}

}  // namespace
}  // namespace Kestra::Test
