#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>

#include "html/text/ConditionalTagSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::ConditionalTagSimpleParser;
using HTML::ConditionalTagSimpleParserData;

template <typename Flavour>
using Parser = ConditionalTagSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = ConditionalTagSimpleParserData<typename Flavour::C, typename Flavour::S>;

/// A row: what follows "<![if", and what becomes of it.
struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

/// A row whose marker has a tail: where the marker is cut, the tail begins with the piece that
/// holds its ">".
struct TailCase {
    const char* note;
    std::string_view input;
    std::string_view condition;
};

template <typename Flavour>
class ConditionalTagTest : public testing::Test {
protected:
    static void Keyword(Data<Flavour>* data) {
        data->keyword = To<typename Flavour::S>("if");
    }

    static void Check(const Case& c) {
        CheckRow<ConditionalTagSimpleParser, Flavour>(c.note, c.input, c.expected, Keyword);
    }

    static void CheckTail(const TailCase& c) {
        SCOPED_TRACE(c.note);
        const auto wholeInput = To<typename Flavour::S>(c.input);
        const std::basic_string_view<typename Flavour::C> input(wholeInput);
        const std::size_t bracket = c.input.find(']');
        const std::size_t end = c.input.find('>', bracket);
        ForEverySplit(input, [&](const Cuts& cuts) {
            std::size_t begin = bracket + 1;
            for (const std::size_t cut : cuts) {
                if (cut <= end)
                    begin = std::max(begin, cut);
            }
            const std::string rest = Trace::Escape(input.substr(end + 1));
            const std::string expected = "19 conditional(if|" + std::string(c.condition) + "|" +
                                         Trace::Escape(input.substr(begin, end - begin)) + ")" +
                                         (rest.empty() ? "" : " rest(" + rest + ")");
            for (const Handing handing : {Handing::SAME, Handing::COPIED, Handing::ASSIGNED, Handing::EMPTY_PIECE}) {
                SCOPED_TRACE("handing " + std::to_string(static_cast<int>(handing)));
                RecognizerOptions<Parser<Flavour>> options;
                options.prepare = Keyword;
                options.handing = handing;
                const auto outcome = RunRecognizer<Parser<Flavour>>(input, cuts, options);
                EXPECT_EQ(DescribeOutcome(outcome, input, true), expected);
                EXPECT_EQ(outcome.emptyPieceResult, 0U);
                EXPECT_EQ((Place{outcome.line, outcome.column}), PlaceAfter(input, end + 1));
            }
        });
    }
};

TYPED_TEST_SUITE(ConditionalTagTest, Flavours);

TYPED_TEST(ConditionalTagTest, Markers) {
    const Case CASES[] = {
        {"a marker ends after \"]>\"", " !IE]>", "19 conditional(if| !IE|)"},
        {"the rest of the piece is left", " IE]>x]>", "19 conditional(if| IE|) rest(x]>)"},
        {"a condition may be empty", "]>", "19 conditional(if||)"},
        {"\">\" and \"[\" before the bracket belong to the condition", "[a>b[]>", "19 conditional(if|[a>b[|)"},
        {"quotes mean nothing", " \"a]>\"", "19 conditional(if| \"a|) rest(\")"},
        {"line ends in the condition are kept and count", "\r\na\n]>\n", "19 conditional(if|\\r\\na\\n|) rest(\\n)"},
        {"a NUL in the condition", " \0]>"sv, "19 conditional(if| \\x00|)"},
        {"ESC in the condition", "\033$B]>", "19 conditional(if|\\x1B$B|)"},
        {"characters from 128 up in the condition", "\xDD\xBE]>", "19 conditional(if|\\xDD\\xBE|)"},
    };
    for (const Case& c : CASES)
        this->Check(c);
}

TYPED_TEST(ConditionalTagTest, TheTailIsWhatLiesInThePieceOfTheEnd) {
    const TailCase CASES[] = {
        {"hyphens", "]-->", ""},
        {"after a condition", " IE]--> x", " IE"},
        {"one character", "]->", ""},
        {"white space and line ends", " a] \r\n\n >\n>", " a"},
        {"more brackets", " a]]b]>", " a"},
        {"an opening bracket and quotes", " a]['\"<!-- >", " a"},
        {"a NUL", " a]\0x\0>"sv, " a"},
        {"characters from 128 up", " a]\xBE\xDD>", " a"},
    };
    for (const TailCase& c : CASES)
        this->CheckTail(c);
}

/// The pieces of a marker, and what they leave in the record.
TYPED_TEST(ConditionalTagTest, TailsThatAreCut) {
    struct Row {
        const char* note;
        std::string_view input;
        Cuts cuts;
        std::string_view expected;
    };
    const Row ROWS[] = {
        {"uncut: the whole tail", "]abcd>", {}, "19 conditional(if||abcd)"},
        {"cut in the tail: only the second part", "]abcd>", {3}, "19 conditional(if||cd)"},
        {"cut twice in the tail: only the last part", "]abcd>", {2, 4}, "19 conditional(if||d)"},
        {"cut before the \">\": nothing", "]abcd>", {5}, "19 conditional(if||)"},
        {"cut after the \"]\": everything", "]abcd>", {1}, "19 conditional(if||abcd)"},
        {"cut before the \"]\": everything", " a]bcd>", {2}, "19 conditional(if| a|bcd)"},
        {"the condition keeps its parts", " abc]bcd>", {1, 3}, "19 conditional(if| abc|bcd)"},
        {"in single characters: nothing", "]ab>", {1, 2, 3}, "19 conditional(if||)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.note);
        const auto input = To<typename TypeParam::S>(row.input);
        const std::basic_string_view<typename TypeParam::C> view(input);
        RecognizerOptions<Parser<TypeParam>> options;
        options.prepare = TestFixture::Keyword;
        const auto outcome = RunRecognizer<Parser<TypeParam>>(view, row.cuts, options);
        EXPECT_EQ(DescribeOutcome(outcome, view, true), row.expected);
        EXPECT_EQ(outcome.column, row.input.size() + 1);
    }
}

TYPED_TEST(ConditionalTagTest, OpenMarkers) {
    const Case CASES[] = {
        {"the input ends in the condition", " IE", "end 19 conditional(if| IE|, no-bracket, open)"},
        {"the input ends at once", "", "end 19 conditional(if||, no-bracket, open)"},
        {"\">\" without a bracket ends nothing", " a>b", "end 19 conditional(if| a>b|, no-bracket, open)"},
        {"the input ends after the bracket", " IE]", "end 19 conditional(if| IE|, open)"},
        {"the tail of an open marker is lost", " IE]--\n", "end 19 conditional(if| IE|, open)"},
        {"further brackets end nothing", " a]]]", "end 19 conditional(if| a|, open)"},
        {"nothing but the bracket", "]", "end 19 conditional(if||, open)"},
    };
    for (const Case& c : CASES)
        this->Check(c);
}

TYPED_TEST(ConditionalTagTest, TheKeywordIsTheOwners) {
    using S = typename TypeParam::S;
    Parser<TypeParam> parser;
    for (const std::string_view keyword : {"if", "EndIf", ""}) {
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.keyword = To<S>(keyword);
        EXPECT_EQ(ParseOnce(&parser, &data, " a]>"), (CallOutcome{19, 4}));
        EXPECT_EQ(data.keyword, To<S>(keyword));
    }
}

TYPED_TEST(ConditionalTagTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a>"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a]"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a]--"), 1U);
}

TYPED_TEST(ConditionalTagTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {1, ">x", {19, 1}, "conditional(||)"},
        {1, "]a>x", {19, 3}, "conditional(||]a)"},
        {1, "--", {0, 2}, "conditional(||)"},
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

TYPED_TEST(ConditionalTagTest, EndParseTellsWhatIsMissing) {
    struct Row {
        std::uint32_t state;
        bool bracketClosed;
        std::string_view record;
    };
    const Row ROWS[] = {
        {0, true, "conditional(k|c|t, no-bracket, open)"},
        {1, true, "conditional(k|c|t, open)"},
        {1, false, "conditional(k|c|t, open)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.state);
        using S = typename TypeParam::S;
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = row.state;
        data.keyword = To<S>("k");
        data.condition = To<S>("c");
        data.tail = To<S>("t");
        data.bracketClosed = row.bracketClosed;
        EXPECT_EQ(parser.EndParse(&data), HTML::SP_TOKEN_COMPLETE);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(ConditionalTagTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(2);
}

TYPED_TEST(ConditionalTagTest, AConditionAndATailMayBeLong) {
    using S = typename TypeParam::S;
    const std::string condition(200000, 'x');
    const std::string tail(200000, 'y');
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, condition + "]" + tail + ">"),
              (CallOutcome{19, condition.size() + tail.size() + 2}));
    EXPECT_EQ(data.condition, To<S>(condition));
    EXPECT_EQ(data.tail, To<S>(tail));
}

TEST(ConditionalTagTest, WideUnitsAreComparedWhole) {
    // The low or the high bytes are those of "]" and ">".
    CheckRecognizer<Parser<Wide>>(WideString{0x015D, 0x5D00, '>', ']', '>', 'x'},
                                  "19 conditional(|\\u015D\\u5D00>|) rest(x)");
    CheckRecognizer<Parser<Wide>>(WideString{'a', ']', 0x013E, 0x3E00}, "end 19 conditional(|a|, open)");
}

}  // namespace
}  // namespace Kestra::Test
