#include "html/stateless/StatelessHTMLParser.h"
#include "platform/CharSet.h"
#include "tests/reference/DocumentTests.h"
#include "tests/reference/events/StatelessReference.h"
#include "tests/support/EventRun.h"

// The stateless parser against the second implementation of it, on random documents in random
// pieces.

namespace Kestra::Test {
namespace {

using StringNS::CharSet;

constexpr std::uint64_t DOCUMENTS = 50000;
constexpr std::size_t LONGEST = 2000;  // bytes

/// What the states of the parser turn on.
const RandomGrammar GRAMMAR({
    {"soup", "{part*0-39}"},
    {"part",
     "<|>|</|<!|<!--|-->|-|--|<?|?>|/>|/|?|'|\"|=| |\n|\r\n|\r|a|b1|_x:y-z|%|<a>|</a>|<p b='c'>|"
     "<br/>|<!D x>|<?x y=z?>|<script>|</script>|</scripx|<style>|</style>|</SCRIPT>|<xmp>|</xmp|"
     "<title>|</title >|<script|//|/*|*/|\\|\xE9|\xC1|"
     "<meta http-equiv=Content-Type content='text/html; charset=koi8-r'>|"
     "<meta content=\"charset=utf-8\" http-equiv='content-type'/>|"
     "<?xml encoding='windows-1251' ?>|<?xml encoding=x-none ?>"},
});

CharSet::Code PickCharset(Dice* dice) {
    constexpr CharSet::Code CHARSETS[] = {
        0, 0, 0, CharSet::WINDOWS_1252, CharSet::UTF8, 1251, 932, CharSet::UTF16_LE, 12345};
    return CHARSETS[dice->Below(std::size(CHARSETS))];
}

std::vector<std::string> Pieces(const std::string& document, const Cuts& cuts) {
    std::vector<std::string> pieces;
    for (const auto& [begin, end] : PiecesOf(cuts, document.size()))
        pieces.push_back(document.substr(begin, end - begin));
    return pieces;
}

/// A piece that the first failure leaves unfed has no result on either side.
std::string Describe(const StatelessReferenceRun& run) {
    EventRun shown;
    shown.trace = run.trace;
    shown.parseResults = run.parseResults;
    shown.line = run.line;
    shown.column = run.column;
    return shown.Describe();
}

/// @param parser  has no observer
/// @return what differs, or nothing
std::string Difference(HTML::StatelessHTMLParser* parser, const std::vector<std::string>& pieces, CharSet::Code charset,
                       std::uint32_t flags) {
    const EventRun actual = ParseEvents(parser, pieces, charset, flags);
    const bool asText = parser->GetScriptMode() == HTML::StatelessHTMLParser::SCRIPT_AS_TEXT;
    const StatelessReferenceRun expected = ParseStatelessByReference(pieces, charset, flags, asText);
    if (actual.Describe() == Describe(expected) && actual.parseResults == expected.parseResults &&
        actual.endResult == expected.endResult)
        return "";
    std::string shown = (asText ? "as text, charset " : "charset ") + std::to_string(charset) + ", flags " +
                        std::to_string(flags) + ", pieces:\n";
    for (const std::string& piece : pieces)
        shown += "  " + Trace::Escape(piece) + "\n";
    return shown + "the library:\n" + actual.Describe() + "the reference:\n" + Describe(expected);
}

class StatelessDifferentialTest : public ShardTest {};

TEST_P(StatelessDifferentialTest, RandomDocuments) {
    ForEachSeed(DOCUMENTS, [&](std::uint64_t seed) {
        Dice dice(seed);
        const std::string document =
            dice.OneIn(2) ? GRAMMAR.Make("soup", &dice) : maker.Make(seed).bytes.substr(0, LONGEST);
        const CharSet::Code charset = PickCharset(&dice);
        const std::uint32_t flags = dice.OneIn(4) ? 0 : 1;
        const Cuts cuts = CutsOfShortReads(document.size(), &dice);
        // One parser for all readings of a document: it opens its converter once, and there may be
        // none, after a long search.
        HTML::StatelessHTMLParser parser;
        const auto mode =
            dice.OneIn(2) ? HTML::StatelessHTMLParser::SCRIPT_AS_TEXT : HTML::StatelessHTMLParser::SCRIPT_AS_TOKENS;
        parser.SetScriptMode(mode);
        // After a failure nothing is fed; the rest of the document is tried from there on.
        std::string rest = document;
        for (int attempt = 0; attempt < 4 && !rest.empty(); ++attempt) {
            std::string difference = Difference(&parser, {rest}, charset, flags);
            if (difference.empty())
                difference = Difference(
                    &parser, Pieces(rest, Cuts(cuts.begin(), std::lower_bound(cuts.begin(), cuts.end(), rest.size()))),
                    charset, flags);
            const auto fails = [&](std::string_view candidate) {
                HTML::StatelessHTMLParser another;
                another.SetScriptMode(mode);
                return !Difference(&another, {std::string(candidate)}, charset, flags).empty();
            };
            ASSERT_EQ(difference, "") << "seed " << seed
                                      << ", the shortest in one piece: " << Trace::Escape(Shorten(rest, fails));
            rest.erase(0, rest.size() / 3 + 1);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Shards, StatelessDifferentialTest, ALL_SHARDS);

// The comparison itself must see every part of an outcome.
TEST(StatelessDifferentialCheckTest, SeesADifference) {
    const std::string actual = ParseEvents({"a<p b=c>"}).Describe();
    EXPECT_EQ(actual, Describe(ParseStatelessByReference({"a<p b=c>"})));
    for (const char* const other : {"b<p b=c>", "a<p b=d>", "a<p b=c> ", "a<p b=c><", "a<p  b=c>", "a<p b=c>< ="})
        EXPECT_NE(actual, Describe(ParseStatelessByReference({other}))) << other;
}

}  // namespace
}  // namespace Kestra::Test
