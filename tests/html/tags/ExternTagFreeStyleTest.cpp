#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/tags/ExternTagFreeStyleSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::ExternTagFreeStyleSimpleParser;
using HTML::ExternTagFreeStyleSimpleParserData;

template <typename Flavour>
using Parser = ExternTagFreeStyleSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = ExternTagFreeStyleSimpleParserData<typename Flavour::C, typename Flavour::S>;

/// A row: what follows the target of an instruction, and what becomes of it.
struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class ExternTagFreeStyleTest : public testing::Test {};

TYPED_TEST_SUITE(ExternTagFreeStyleTest, Flavours);

TYPED_TEST(ExternTagFreeStyleTest, Ends) {
    const Case CASES[] = {
        {"\"?>\" ends an instruction", " a ?>", "19 text( a ?>)"},
        {"the rest of the piece is left", " a?>b?>", "19 text( a?>) rest(b?>)"},
        {"a bare \">\" ends it too", " a > b", "19 text( a >) rest( b)"},
        {"\"?>\" at once", "?>", "19 text(?>)"},
        {"\">\" at once", ">", "19 text(>)"},
        {"\"?\" in the middle is content", " a?b ?>", "19 text( a?b ?>)"},
        {"\"?\" and white space before \">\"", "a? >", "19 text(a? >)"},
        {"a run of \"?\" is content but for its last", "a??\?>", "19 text(a??\?>)"},
        {"\"?\" and a quote", "?'>'?>", "19 text(?'>'?>)"},
        {"\"?\" and a comment", "?/*>*/?>", "19 text(?/*>*/?>)"},
        {"\"<\" is content", "a<b><?", "19 text(a<b>) rest(<?)"},
        {"line ends are content and count", "a\r\n\nb\n?>\n", "19 text(a\\r\\n\\nb\\n?>) rest(\\n)"},
        {"a NUL is content", "a\0?\0>"sv, "19 text(a\\x00?\\x00>)"},
        {"a backslash outside of quotes is content", "a\\?>", "19 text(a\\\\?>)"},
        {"a backslash before a quote does not escape it", "\\'>'>", "19 text(\\\\'>'>)"},
        {"characters from 128 up are content", "\xBF\xBE\xA7\xAF?>", "19 text(\\xBF\\xBE\\xA7\\xAF?>)"},
    };
    for (const Case& c : CASES)
        CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(ExternTagFreeStyleTest, QuotedStrings) {
    const Case CASES[] = {
        {"\"?>\" in apostrophes does not end it", " echo '?>'; ?>", "19 text( echo '?>'; ?>)"},
        {"\"?>\" in quotation marks does not end it", " echo \"?>\"; ?>", "19 text( echo \"?>\"; ?>)"},
        {"empty strings", "''\"\">", "19 text(''\"\">)"},
        {"the other quote is content", "'\">'\"'>\"?>", "19 text('\">'\"'>\"?>)"},
        {"comments do not begin in strings", "'/*'>", "19 text('/*'>)"},
        {"line comments do not begin in strings", "\"//\">", "19 text(\"//\">)"},
        {"line ends in strings", "'\n>\n'\n>", "19 text('\\n>\\n'\\n>)"},
        {"an escaped apostrophe is content", "'a\\'>'>", "19 text('a\\\\'>'>)"},
        {"an escaped quotation mark is content", "\"a\\\">\">", "19 text(\"a\\\\\">\">)"},
        {"an escaped backslash escapes nothing", "'a\\\\'>'", "19 text('a\\\\\\\\'>) rest(')"},
        {"escapes hold in every string in apostrophes", "'a'\"b\"'c\\'>'>", "19 text('a'\"b\"'c\\\\'>'>)"},
        {"escapes hold in every string in quotation marks", "\"a\"'b'\"c\\\">\">", "19 text(\"a\"'b'\"c\\\\\">\">)"},
        {"a backslash at the end of one string is not one in the next", "'a\\\\''b'>", "19 text('a\\\\\\\\''b'>)"},
        {"ESC is content", "\"\033$B\"'\033$B'>", "19 text(\"\\x1B$B\"'\\x1B$B'>)"},
        {"strings one after the other", "'a''b'\"c\"\"d\"e>", "19 text('a''b'\"c\"\"d\"e>)"},
    };
    for (const Case& c : CASES)
        CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(ExternTagFreeStyleTest, Comments) {
    const Case CASES[] = {
        {"a block comment hides \">\"", " /* > */ ?>", "19 text( /* > */ ?>)"},
        {"a block comment hides quotes and \"?>\"", "/*'?>\"*/>", "19 text(/*'?>\"*/>)"},
        {"a block comment may be empty", "/**/>", "19 text(/**/>)"},
        {"a \"*\" that no \"/\" follows ends it", "/* a * b > */", "19 text(/* a * b >) rest( */)"},
        {"after such a \"*\" quotes are quotes", "/* * '>' >", "19 text(/* * '>' >)"},
        {"the second of two stars is free text", "/***/>", "19 text(/***/>)"},
        {"the \"/\" after two stars may begin a comment", "/***/*>*/>", "19 text(/***/*>*/>)"},
        {"the \"/\" after two stars may begin a line comment", "/***//>\n>", "19 text(/***//>\\n>)"},
        {"\"/*/\" does not end itself", "/*/>*/>", "19 text(/*/>*/>)"},
        {"line ends in a block comment", "/*\n>\n*/\n>", "19 text(/*\\n>\\n*/\\n>)"},
        {"a line comment hides \">\" up to the line feed", "// a > ?>\n ?>", "19 text(// a > ?>\\n ?>)"},
        {"a line comment hides quotes", "//'\"\n>'", "19 text(//'\"\\n>) rest(')"},
        {"a line comment hides a block comment", "///*\n>*/", "19 text(///*\\n>) rest(*/)"},
        {"a carriage return does not end a line comment", "//\r>\r\n>", "19 text(//\\r>\\r\\n>)"},
        {"an empty line comment", "//\n>", "19 text(//\\n>)"},
        {"a single \"/\" is content", "a/b>", "19 text(a/b>)"},
        {"a \"/\" before \">\"", "a/>", "19 text(a/>)"},
        {"a \"/\" before \"?>\"", "a/?>", "19 text(a/?>)"},
        {"a \"/\" before a string", "/'>'>", "19 text(/'>'>)"},
        {"a \"/\" before a line feed", "/\n/>", "19 text(/\\n/>)"},
        {"a \"*\" outside is content", "*/>", "19 text(*/>)"},
        {"comments one after the other", "/*>*//*>*///>\n>", "19 text(/*>*//*>*///>\\n>)"},
        {"markup comments are no comments", "<!-- > -->", "19 text(<!-- >) rest( -->)"},
    };
    for (const Case& c : CASES)
        CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(ExternTagFreeStyleTest, OpenInstructions) {
    const Case CASES[] = {
        {"the input ends at once", "", "end 16 text()"},
        {"the input ends in free text", " a", "end 16 text( a)"},
        {"the input ends after \"?\", which is not in the text", " a?", "end 16 text( a)"},
        {"the input ends after \"/\", which is not in the text", " a/", "end 16 text( a)"},
        {"the input ends in a string, which is not in the text", " a'b>", "end 16 text( a)"},
        {"the input ends in a string in quotation marks", " a\"b>", "end 16 text( a)"},
        {"the input ends in a block comment", "/* a>", "end 16 text(/* a>)"},
        {"the input ends after \"*\", which is not in the text", "/* a*", "end 16 text(/* a)"},
        {"the input ends in a line comment", "// a>", "end 16 text(// a>)"},
    };
    for (const Case& c : CASES)
        CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(ExternTagFreeStyleTest, EscapeRuns) {
    const auto on = [](Data<TypeParam>* data) { data->iso2022 = true; };
    const Case WITH[] = {
        {"a run hides the closing quotation mark", "\"\033$B\">\033(B\">x", "19 text(\"\\x1B$B\">\\x1B(B\">) rest(x)"},
        {"in every string", "\"a\"\"\033$B\">\033(B\">x", "19 text(\"a\"\"\\x1B$B\">\\x1B(B\">) rest(x)"},
        {"after a string in apostrophes", "'a' \"\033$B\">\033(B\">x", "19 text('a' \"\\x1B$B\">\\x1B(B\">) rest(x)"},
        {"two runs in one string", "\"\033$B\"\033(B\033$B\"\033(B\">",
         "19 text(\"\\x1B$B\"\\x1B(B\\x1B$B\"\\x1B(B\">)"},
        {"characters after a run", "\"\033$B\"\033(Ba\">", "19 text(\"\\x1B$B\"\\x1B(Ba\">)"},
        {"a backslash before ESC makes it ordinary", "\"\\\033$B\">x", "19 text(\"\\\\\\x1B$B\">) rest(x)"},
        {"strings in apostrophes have no runs", "'\033$B'>\033(B'", "19 text('\\x1B$B'>) rest(\\x1B(B')"},
        {"free text has no runs", "\033$B>", "19 text(\\x1B$B>)"},
        {"comments have no runs", "/*\033$B*/>", "19 text(/*\\x1B$B*/>)"},
        {"the input ends inside a run", "a\"\033$B\">", "end 16 text(a)"},
    };
    for (const Case& c : WITH)
        CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>(c.note, c.input, c.expected, on);
    CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>("without the option there are none", "\"\033$B\">\033(B\">x",
                                                        "19 text(\"\\x1B$B\">) rest(\\x1B(B\">x)");
}

TYPED_TEST(ExternTagFreeStyleTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/b"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/*b"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/*b*"), 3U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/*b*c"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/*b**"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/*b*/"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a//b"), 4U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a//b\n"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a'b"), 5U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a'b'"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\"b"), 6U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a\"b\""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a?"), 7U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a?b"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a??"), 7U);
}

TYPED_TEST(ExternTagFreeStyleTest, APendingQuestionMarkIsNotYetInTheText) {
    struct Row {
        std::string_view input;
        bool pending;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"a", false, "text(a)"},    {"a?", true, "text(a)"},       {"a?b", false, "text(a?b)"},
        {"a??", true, "text(a?)"},  {"a??b", false, "text(a??b)"}, {"a?'", false, "text(a?)"},
        {"a?/", false, "text(a?)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.input);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        // One character a call, as a call may stop after a change of state.
        for (std::size_t i = 0; i < row.input.size(); ++i) {
            CallOutcome outcome;
            for (int calls = 0; calls < 8 && outcome == CallOutcome{}; ++calls)
                outcome = ParseOnce(&parser, &data, row.input.substr(i, 1));
            EXPECT_EQ(outcome, (CallOutcome{0, 1}));
        }
        EXPECT_EQ(data.questionPending, row.pending);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(ExternTagFreeStyleTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        bool questionPending;
        std::string_view input;
        std::string_view expected;
    };
    const Row ROWS[] = {
        {0, true, ">x", "19 text(>) rest(x)"},  // only a "?" read in this state is pending
        {0, true, "a>x", "19 text(a>) rest(x)"},
        {1, false, "*>*/>x", "19 text(/*>*/>) rest(x)"},
        {1, false, "/>\n>x", "19 text(//>\\n>) rest(x)"},
        {1, false, ">x", "19 text(/>) rest(x)"},
        {1, false, "a>x", "19 text(/a>) rest(x)"},
        {1, false, "?>x", "19 text(/?>) rest(x)"},
        {2, false, ">*/>x", "19 text(>*/>) rest(x)"},
        {3, false, "/>x", "19 text(*/>) rest(x)"},
        {3, false, "a>x", "19 text(*a>) rest(x)"},
        {3, false, "*/>x", "19 text(**/>) rest(x)"},
        {3, false, ">x", "19 text(*>) rest(x)"},
        {4, false, ">\n>x", "19 text(>\\n>) rest(x)"},
        {5, false, "a'>x", "19 text('a'>) rest(x)"},
        {5, false, "\\'a'>x", "19 text('\\\\'a'>) rest(x)"},  // escapes are allowed from the beginning
        {6, false, "a\">x", "19 text(\"a\">) rest(x)"},
        {6, false, "\\\"a\">x", "19 text(\"\\\\\"a\">) rest(x)"},
        {7, false, ">x", "19 text(>) rest(x)"},
        {7, true, ">x", "19 text(?>) rest(x)"},
        {7, false, "a>x", "19 text(a>) rest(x)"},
        {7, true, "a>x", "19 text(?a>) rest(x)"},
        {7, false, "?>x", "19 text(?>) rest(x)"},
        {7, true, "?>x", "19 text(?\?>) rest(x)"},
        {7, true, "'>'>x", "19 text(?'>'>) rest(x)"},
    };
    for (const Row& row : ROWS) {
        CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>("state " + std::to_string(row.state), row.input,
                                                            row.expected, [&row](Data<TypeParam>* data) {
                                                                data->state = row.state;
                                                                data->questionPending = row.questionPending;
                                                            });
    }
}

TYPED_TEST(ExternTagFreeStyleTest, TheOwnerMaySeedTheText) {
    const auto seed = [](Data<TypeParam>* data) { data->text = To<typename TypeParam::S>("<?php"); };
    CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>("the text goes on", " 'a' ?>", "19 text(<?php 'a' ?>)", seed);
    CheckRow<ExternTagFreeStyleSimpleParser, TypeParam>("even if the input ends", " a?", "end 16 text(<?php a)", seed);
}

TYPED_TEST(ExternTagFreeStyleTest, BeginParseBeginsTheMembersToo) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"a'b", 5, "c'>", "text('c'>)"},
        {"a'b\\", 5, "'>", "text(''>)"},
        {"a\"b", 6, "c\">", "text(\"c\">)"},
        {"a\"b\\", 6, "\">", "text(\"\">)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.abandoned);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, row.abandoned), (CallOutcome{0, row.abandoned.size()}));
        parser.BeginParse(&data);
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), (CallOutcome{19, row.input.size()}));
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(ExternTagFreeStyleTest, AStringIsBegunAtItsQuote) {
    for (const char quote : {'\'', '"'}) {
        const std::string mark(1, quote);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, mark + "b\\"), (CallOutcome{0, 3}));
        data.state = 0;
        EXPECT_EQ(ParseOnce(&parser, &data, mark + mark + ">"), (CallOutcome{19, 3}));
        EXPECT_EQ(Dump(data), "text(" + mark + mark + ">)");
    }
}

TYPED_TEST(ExternTagFreeStyleTest, EndParseLeavesTheRecordAsItIs) {
    for (std::uint32_t state = 0; state < 8; ++state) {
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = state;
        data.questionPending = true;
        data.text = To<typename TypeParam::S>("t");
        data.iso2022 = true;
        EXPECT_EQ(parser.EndParse(&data), HTML::SP_UNTERMINATED);
        EXPECT_EQ(data.state, state);
        EXPECT_TRUE(data.questionPending);
        EXPECT_EQ(Dump(data), "text(t)");
        EXPECT_TRUE(data.iso2022);
    }
}

TYPED_TEST(ExternTagFreeStyleTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(8);
}

TYPED_TEST(ExternTagFreeStyleTest, EveryPartMayBeLong) {
    const std::string run(50000, 'x');
    const std::string input =
        run + "'" + run + "'\"" + run + "\"/*" + run + "*///" + run + "\n" + std::string(50000, '?') + ">";
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    std::size_t given = 0;
    CallOutcome outcome;
    while (outcome.result == HTML::SP_NEED_MORE_DATA && given < input.size()) {
        outcome = ParseOnce(&parser, &data, std::string_view(input).substr(given));
        given += static_cast<std::size_t>(outcome.position);
    }
    EXPECT_EQ(outcome.result, HTML::SP_TOKEN_COMPLETE);
    EXPECT_EQ(data.text, To<typename TypeParam::S>(input));
}

TEST(ExternTagFreeStyleTest, WideUnitsAreComparedWhole) {
    // The low bytes are those of "?", ">", the quotes, "/", "*" and a line feed.
    CheckRecognizer<Parser<Wide>>(
        WideString{0x013F, 0x013E, 0x0127, 0x0122, 0x012F, '*', '/', 0x012A, '/', '/', 0x010A, '>', '\n', '>'},
        "19 text(\\u013F\\u013E\\u0127\\u0122\\u012F*/\\u012A//\\u010A>\\n>)");
    CheckRecognizer<Parser<Wide>>(WideString{'?', 0x013E, '/', '*', 0x012A, '/', '*', 0x012F, '>'},
                                  "19 text(?\\u013E/*\\u012A/*\\u012F>)");
}

}  // namespace
}  // namespace Kestra::Test
