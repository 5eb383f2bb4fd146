#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/text/CDATATagSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::CDATATagSimpleParser;
using HTML::CDATATagSimpleParserData;

template <typename Flavour>
using Parser = CDATATagSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = CDATATagSimpleParserData<typename Flavour::C, typename Flavour::S>;

/// A row: what follows "<![CDATA", and what becomes of it.
struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class CDATATagTest : public testing::Test {
protected:
    static void Check(const Case& c) {
        const auto keyword = [](Data<Flavour>* data) { data->keyword = To<typename Flavour::S>("CDATA"); };
        CheckRow<CDATATagSimpleParser, Flavour>(c.note, c.input, c.expected, keyword);
    }
};

TYPED_TEST_SUITE(CDATATagTest, Flavours);

TYPED_TEST(CDATATagTest, Sections) {
    const Case CASES[] = {
        {"a section ends after \"]]>\" and keeps its \"[\"", "[x]]>", "19 cdata(CDATA|[x)"},
        {"the rest of the piece is left", "[x]]>y]]>", "19 cdata(CDATA|[x) rest(y]]>)"},
        {"a section may be empty", "[]]>", "19 cdata(CDATA|[)"},
        {"a section need not begin with \"[\"", " x]]>", "19 cdata(CDATA| x)"},
        {"a section may have nothing at all", "]]>", "19 cdata(CDATA|)"},
        {"a single \"]\" is content", "[a]b]]>", "19 cdata(CDATA|[a]b)"},
        {"\"]>\" is content", "[a]>b]]>", "19 cdata(CDATA|[a]>b)"},
        {"\"]\" and white space are content", "[a] ]b]]>", "19 cdata(CDATA|[a] ]b)"},
        {"markup is content", "[<p a=']'>--></p>]]>", "19 cdata(CDATA|[<p a=']'>--></p>)"},
        {"line ends are content and count", "[a\r\n\n]]>\n", "19 cdata(CDATA|[a\\r\\n\\n) rest(\\n)"},
        {"a NUL is content", "[a\0]\0]]>"sv, "19 cdata(CDATA|[a\\x00]\\x00)"},
        {"ESC and what follows are content", "[\033$B]]>", "19 cdata(CDATA|[\\x1B$B)"},
        {"characters from 128 up are content", "[\xDD\xBE]]>", "19 cdata(CDATA|[\\xDD\\xBE)"},
    };
    for (const Case& c : CASES)
        this->Check(c);
}

TYPED_TEST(CDATATagTest, TwoBracketsEndASectionWhateverFollows) {
    const Case CASES[] = {
        {"a letter is left unread", "[x]]y", "19 cdata(CDATA|[x]], open) rest(y)"},
        {"a third bracket is left unread, and the section is open", "[x]]]>", "19 cdata(CDATA|[x]], open) rest(]>)"},
        {"no run of brackets is absorbed", "[x]]]]]>", "19 cdata(CDATA|[x]], open) rest(]]]>)"},
        {"white space is left unread", "[x]] >", "19 cdata(CDATA|[x]], open) rest( >)"},
        {"a line feed is left unread", "[x]]\n>", "19 cdata(CDATA|[x]], open) rest(\\n>)"},
        {"\"<\" is left unread", "[x]]<p>", "19 cdata(CDATA|[x]], open) rest(<p>)"},
        {"before any content", "]]y", "19 cdata(CDATA|]], open) rest(y)"},
        {"after a single bracket that was content", "[a]b]]c", "19 cdata(CDATA|[a]b]], open) rest(c)"},
        {"a NUL is left unread", "[]]\0>"sv, "19 cdata(CDATA|[]], open) rest(\\x00>)"},
    };
    for (const Case& c : CASES)
        this->Check(c);
}

TYPED_TEST(CDATATagTest, OpenSections) {
    const Case CASES[] = {
        {"the input ends in the body", "[x", "end 19 cdata(CDATA|[x, open)"},
        {"the input ends at once", "", "end 19 cdata(CDATA|, open)"},
        {"a last bracket is kept", "[x]", "end 19 cdata(CDATA|[x], open)"},
        {"two last brackets are kept", "[x]]", "end 19 cdata(CDATA|[x]], open)"},
        {"nothing but a bracket", "]", "end 19 cdata(CDATA|], open)"},
        {"nothing but brackets", "]]", "end 19 cdata(CDATA|]], open)"},
        {"a bracket in the middle is not kept twice", "[a]b>", "end 19 cdata(CDATA|[a]b>, open)"},
    };
    for (const Case& c : CASES)
        this->Check(c);
}

TYPED_TEST(CDATATagTest, TheKeywordIsTheOwners) {
    using S = typename TypeParam::S;
    Parser<TypeParam> parser;
    for (const std::string_view keyword : {"CDATA", "cdata", ""}) {
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.keyword = To<S>(keyword);
        EXPECT_EQ(ParseOnce(&parser, &data, "[x]]>"), (CallOutcome{19, 5}));
        EXPECT_EQ(data.keyword, To<S>(keyword));
    }
}

TYPED_TEST(CDATATagTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("[x"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("[x]"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("[x]]"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("[x]y"), 0U);
}

TYPED_TEST(CDATATagTest, PendingBracketsAreNotYetInTheText) {
    for (const std::string_view input : {"[x]", "[x]]"}) {
        SCOPED_TRACE(input);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, input), (CallOutcome{0, input.size()}));
        EXPECT_EQ(Dump(data), "cdata(|[x)");
    }
}

TYPED_TEST(CDATATagTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {1, "]>", {19, 2}, "cdata(|)"},        {1, ">", {0, 1}, "cdata(|]>)"},         {2, ">x", {19, 1}, "cdata(|)"},
        {2, "x", {19, 0}, "cdata(|]], open)"}, {2, "]>", {19, 0}, "cdata(|]], open)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(std::to_string(row.state) + " " + std::string(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), row.outcome);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(CDATATagTest, EndParseOpensTheSectionAndAppendsWhatIsPending) {
    struct Row {
        std::uint32_t state;
        std::string_view record;
    };
    const Row ROWS[] = {
        {0, "cdata(|[a, open)"}, {1, "cdata(|[a], open)"}, {2, "cdata(|[a]], open)"}, {3, "cdata(|[a, open)"}};
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.state);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.text = To<typename TypeParam::S>("[a");
        data.state = row.state;
        EXPECT_EQ(parser.EndParse(&data), HTML::SP_TOKEN_COMPLETE);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(CDATATagTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(3);
}

TYPED_TEST(CDATATagTest, ABodyMayBeLong) {
    using S = typename TypeParam::S;
    const std::string body(200000, 'x');
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, body + "]]>"), (CallOutcome{19, body.size() + 3}));
    EXPECT_EQ(data.text, To<S>(body));
}

TEST(CDATATagTest, WideUnitsAreComparedWhole) {
    // The low or the high bytes are those of "]" and ">".
    CheckRecognizer<Parser<Wide>>(WideString{'[', 0x015D, 0x5D00, ']', 0x015D, '>', ']', ']', '>'},
                                  "19 cdata(|[\\u015D\\u5D00]\\u015D>)");
    CheckRecognizer<Parser<Wide>>(WideString{'[', ']', ']', 0x013E}, "19 cdata(|[]], open) rest(\\u013E)");
}

}  // namespace
}  // namespace Kestra::Test
