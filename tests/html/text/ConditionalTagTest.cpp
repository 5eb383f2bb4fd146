#include "html/text/ConditionalTagSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the "<![if".

constexpr RecognizerRow MARKERS[] = {
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

constexpr RecognizerRow OPEN_MARKERS[] = {
    {"the input ends in the condition", " IE", "end 19 conditional(if| IE|, no-bracket, open)"},
    {"the input ends at once", "", "end 19 conditional(if||, no-bracket, open)"},
    {"\">\" without a bracket ends nothing", " a>b", "end 19 conditional(if| a>b|, no-bracket, open)"},
    {"the input ends after the bracket", " IE]", "end 19 conditional(if| IE|, open)"},
    {"the tail of an open marker is lost", " IE]--\n", "end 19 conditional(if| IE|, open)"},
    {"further brackets end nothing", " a]]]", "end 19 conditional(if| a|, open)"},
    {"nothing but the bracket", "]", "end 19 conditional(if||, open)"},
};

constexpr StateRow STATES[] = {{"", 0}, {" a>", 0}, {" a]", 1}, {" a]--", 1}};

constexpr RecognizerCall KEYWORDS[] = {
    {NEW_RECORD, "keyword=if", " a]>", {19, 4}, "conditional(if| a|)"},
    {NEW_RECORD, "keyword=EndIf", " a]>", {19, 4}, "conditional(EndIf| a|)"},
    {NEW_RECORD, "keyword=", " a]>", {19, 4}, "conditional(| a|)"},
};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", ">x", {19, 1}, "conditional(||)"},
    {NEW_RECORD, "state=1", "]a>x", {19, 3}, "conditional(||]a)"},
    {NEW_RECORD, "state=1", "--", {0, 2}, "conditional(||)"},
};

constexpr RecognizerCall ENDS[] = {
    {AT_END,
     "state=0 keyword=k condition=c tail=t bracketClosed=true",
     "",
     {19, 0},
     "conditional(k|c|t, no-bracket, open)"},
    {AT_END, "state=1 keyword=k condition=c tail=t bracketClosed=true", "", {19, 0}, "conditional(k|c|t, open)"},
    {AT_END, "state=1 keyword=k condition=c tail=t bracketClosed=false", "", {19, 0}, "conditional(k|c|t, open)"},
};

constexpr LongRow LONG_PARTS[] = {{"@]@>", "xy", "19 conditional(|@|@)"}};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low or the high bytes are those of \"]\" and \">\"", "\\u015D\\u5D00>]>x",
     "19 conditional(|\\u015D\\u5D00>|) rest(x)"},
    {"after the bracket", "a]\\u013E\\u3E00", "end 19 conditional(|a|, open)"},
};

template <typename Flavour>
using Parser = HTML::ConditionalTagSimpleParser<typename Flavour::C, typename Flavour::S>;

/// Reads a marker with the keyword "if", whose end is after `consumed` characters.
template <typename Flavour>
void CheckMarker(std::string_view latin1, const Cuts& cuts, Handing handing, std::size_t consumed,
                 const std::string& expected) {
    SCOPED_TRACE("handing " + std::to_string(static_cast<int>(handing)));
    const auto text = To<typename Flavour::S>(latin1);
    const std::basic_string_view<typename Flavour::C> input(text);
    RecognizerOptions<Parser<Flavour>> options;
    options.prepare = MakePreparation<typename Parser<Flavour>::Data>("keyword=if");
    options.handing = handing;
    const auto outcome = RunRecognizer<Parser<Flavour>>(input, cuts, options);
    EXPECT_EQ(DescribeOutcome(outcome, input, true), expected);
    EXPECT_EQ(outcome.emptyPieceResult, 0U);
    EXPECT_EQ((Place{outcome.line, outcome.column}), PlaceAfter(input, consumed));
}

/// A marker with a tail: where the marker is cut, the tail begins with the piece that has its ">".
struct TailRow {
    const char* note;
    std::string_view input;
    std::string_view condition;
};

constexpr TailRow TAILS[] = {
    {"hyphens", "]-->", ""},
    {"after a condition", " IE]--> x", " IE"},
    {"one character", "]->", ""},
    {"white space and line ends", " a] \r\n\n >\n>", " a"},
    {"more brackets", " a]]b]>", " a"},
    {"an opening bracket and quotes", " a]['\"<!-- >", " a"},
    {"a NUL", " a]\0x\0>"sv, " a"},
    {"characters from 128 up", " a]\xBE\xDD>", " a"},
};

template <typename Flavour>
void CheckTail(const TailRow& row) {
    SCOPED_TRACE(row.note);
    const auto wholeInput = To<typename Flavour::S>(row.input);
    const std::basic_string_view<typename Flavour::C> input(wholeInput);
    const std::size_t bracket = row.input.find(']');
    const std::size_t end = row.input.find('>', bracket);
    ForEverySplit(input, [&](const Cuts& cuts) {
        std::size_t begin = bracket + 1;
        for (const std::size_t cut : cuts) {
            if (cut <= end)
                begin = std::max(begin, cut);
        }
        const std::string rest = Trace::Escape(input.substr(end + 1));
        const std::string expected = "19 conditional(if|" + std::string(row.condition) + "|" +
                                     Trace::Escape(input.substr(begin, end - begin)) + ")" +
                                     (rest.empty() ? "" : " rest(" + rest + ")");
        for (const Handing handing : {Handing::SAME, Handing::COPIED, Handing::ASSIGNED, Handing::EMPTY_PIECE})
            CheckMarker<Flavour>(row.input, cuts, handing, end + 1, expected);
    });
}

/// The pieces of a marker, and what they leave in the record.
struct CutTailRow {
    const char* note;
    std::string_view input;
    Cuts cuts;
    const char* expected;
};

const CutTailRow CUT_TAILS[] = {
    {"uncut: the whole tail", "]abcd>", {}, "19 conditional(if||abcd)"},
    {"cut in the tail: only the second part", "]abcd>", {3}, "19 conditional(if||cd)"},
    {"cut twice in the tail: only the last part", "]abcd>", {2, 4}, "19 conditional(if||d)"},
    {"cut before the \">\": nothing", "]abcd>", {5}, "19 conditional(if||)"},
    {"cut after the \"]\": everything", "]abcd>", {1}, "19 conditional(if||abcd)"},
    {"cut before the \"]\": everything", " a]bcd>", {2}, "19 conditional(if| a|bcd)"},
    {"the condition keeps its parts", " abc]bcd>", {1, 3}, "19 conditional(if| abc|bcd)"},
    {"in single characters: nothing", "]ab>", {1, 2, 3}, "19 conditional(if||)"},
};

const auto SUITE = RecognizerSuite<HTML::ConditionalTagSimpleParser>("ConditionalTagTest")
                       .Rows("Markers", MARKERS, "keyword=if")
                       .Rows("OpenMarkers", OPEN_MARKERS, "keyword=if")
                       .States(STATES)
                       .Calls("TheKeywordIsTheOwners", KEYWORDS)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("EndParseSaysWhatIsMissing", ENDS)
                       .LongInputs(LONG_PARTS)
                       .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS)
                       .Test("TheTailIsWhatLiesInThePieceOfTheEnd",
                             []<typename Flavour>() {
                                 for (const TailRow& row : TAILS)
                                     CheckTail<Flavour>(row);
                             })
                       .Test("TailsThatAreCut", []<typename Flavour>() {
                           for (const CutTailRow& row : CUT_TAILS) {
                               SCOPED_TRACE(row.note);
                               CheckMarker<Flavour>(row.input, row.cuts, Handing::SAME, row.input.size(), row.expected);
                           }
                       });

}  // namespace
}  // namespace Kestra::Test
