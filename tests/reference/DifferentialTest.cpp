#include <map>
#include <stdexcept>

#include "tests/reference/CopyCheck.h"
#include "tests/reference/DocumentTests.h"
#include "tests/reference/ReferenceTokenizer.h"
#include "tests/reference/TokenCheck.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using StringNS::CharSet;

constexpr std::uint64_t DOCUMENTS = 50000;
constexpr std::uint64_t DOCUMENTS_WITH_CONTENTS = 20000;

/// Before the enumerated strings.
constexpr std::string_view CONTEXTS[] = {"", "<script>", "<style>"};

/// Before those that are cut: the middle of every construct as well.
constexpr std::string_view CUT_CONTEXTS[] = {
    "",          "<script>",   "<style>",   "<p a",       "<p b=c",      "</p",         "<?xml a",    "<?xml b='c'",
    "<?p",       "<!D",        "<!--",      "<![CDATA[x", "<![if",       "<![if x]y",   "<script>//", "<script>/*",
    "<script>'", "<script>/x", "<style>/*", "<style>\"",  "<script>//<", "<script></p", "<![",        "<?xml a='b' x/"};

/// Checks a document with a parser that has parsed others before.
/// @param run  of the document uncut, fed in the same way
/// @return true when nothing differs
bool Check(TracingParser* library, std::string_view document, const ReferenceRun& run, const Feeding& feeding) {
    const Cuts cuts = feeding.Make(document.size());
    const TokenOutcome expected = ExpectedOf(run, document, cuts, feeding.wide);
    if (library->Parse(document, feeding.charset, feeding.fed, cuts, feeding.scriptsAsText) == expected)
        return true;
    if (Difference(document, feeding).empty()) {
        ADD_FAILURE() << "only after other documents: " << Trace::Escape(document) << "\ncut at " << Describe(cuts)
                      << "\nthe reference:\n"
                      << Show(expected);
        return false;
    }
    const std::string shortest = Shorten(
        std::string(document), [&](std::string_view candidate) { return !Difference(candidate, feeding).empty(); });
    ADD_FAILURE() << "the shortest document with a difference: " << Difference(shortest, feeding);
    return false;
}

bool Check(TracingParser* library, std::string_view document, const Feeding& feeding) {
    return Check(library, document, Refer(document, feeding.charset, feeding.fed, feeding.wide, feeding.scriptsAsText),
                 feeding);
}

/// The short reads of a seed, in a document of any length.
std::function<Cuts(std::size_t)> ShortReadsOf(std::uint64_t seed) {
    return [seed](std::size_t length) {
        Dice dice(seed);
        return CutsOfShortReads(length, &dice);
    };
}

class DifferentialTest : public ShardTest {};

TEST_P(DifferentialTest, RandomDocuments) {
    TracingParser library;
    ForEachSeed(DOCUMENTS, [&](std::uint64_t seed) {
        const MadeDocument made = maker.Make(seed);
        Feeding feeding;
        feeding.charset = made.charset;
        feeding.fed = Fed::STREAM;
        ASSERT_TRUE(Check(&library, made.bytes, feeding));
        feeding.fed = Fed::BUFFER;
        ASSERT_TRUE(Check(&library, made.bytes, feeding));
        feeding.fed = seed % 2 == 0 ? Fed::STREAM : Fed::BUFFER;
        feeding.cutsFor = ShortReadsOf(seed);
        ASSERT_TRUE(Check(&library, made.bytes, feeding));
    });
}

TEST_P(DifferentialTest, RandomDocumentsInUtf16) {
    TracingParser library(true);
    ForEachSeed(DOCUMENTS, [&](std::uint64_t seed) {
        const MadeDocument made = maker.Make(seed);
        const std::string document = WithoutWideSpaces(made.bytes);
        Feeding feeding;
        feeding.charset = made.charset;
        feeding.wide = true;
        feeding.fed = seed % 2 == 0 ? Fed::BUFFER : Fed::STREAM;
        ASSERT_TRUE(Check(&library, document, feeding));
        feeding.fed = seed % 4 < 2 ? Fed::STREAM : Fed::BUFFER;
        feeding.cutsFor = ShortReadsOf(seed);
        ASSERT_TRUE(Check(&library, document, feeding));
    });
}

TEST_P(DifferentialTest, DocumentsWithContents) {
    TracingParser libraries[] = {TracingParser(), TracingParser(true)};
    ForEachSeed(DOCUMENTS_WITH_CONTENTS, [&](std::uint64_t seed) {
        const MadeDocument made = maker.MakeWithContents(seed);
        const std::uint64_t choice = seed / SHARDS;
        Feeding feeding;
        feeding.charset = made.charset;
        feeding.scriptsAsText = true;
        feeding.wide = choice % 3 == 0;
        feeding.fed = choice % 2 == 0 ? Fed::STREAM : Fed::BUFFER;
        const std::string document = feeding.wide ? WithoutWideSpaces(made.bytes) : made.bytes;
        ASSERT_TRUE(Check(&libraries[feeding.wide], document, feeding));
        feeding.cutsFor = ShortReadsOf(seed);
        ASSERT_TRUE(Check(&libraries[feeding.wide], document, feeding));
    });
}

INSTANTIATE_TEST_SUITE_P(Shards, DifferentialTest, ALL_SHARDS);

class EnumeratedDifferentialTest : public FirstCharacterTest {};

TEST_P(EnumeratedDifferentialTest, Uncut) {
    TracingParser library;
    Feeding streamed;
    Feeding buffered;
    buffered.fed = Fed::BUFFER;
    ForEachDocument(CONTEXTS, ENUMERATED_LENGTH, [&](std::string_view document, std::string_view) {
        return Check(&library, document, streamed) && Check(&library, document, buffered);
    });
}

TEST_P(EnumeratedDifferentialTest, EverySplit) {
    TracingParser library;
    ForEachDocument(CUT_CONTEXTS, CUT_LENGTH, [&](std::string_view document, std::string_view context) {
        const ReferenceRun streamed = Refer(document, CharSet::WINDOWS_1252, Fed::STREAM);
        const ReferenceRun buffered = Refer(document, CharSet::WINDOWS_1252, Fed::BUFFER);
        bool same = true;
        ForEverySplitOfTheTail(document.size(), document.size() - context.size(), [&](const Cuts& cuts) {
            Feeding feeding;
            feeding.cutsFor = [&cuts](std::size_t length) {
                return Cuts(cuts.begin(), std::lower_bound(cuts.begin(), cuts.end(), length));
            };
            for (const Fed fed : {Fed::STREAM, Fed::BUFFER}) {
                feeding.fed = fed;
                same = same && Check(&library, document, fed == Fed::STREAM ? streamed : buffered, feeding);
            }
            return same;
        });
        return same;
    });
}

INSTANTIATE_TEST_SUITE_P(FirstCharacter, EnumeratedDifferentialTest, ALL_FIRST_CHARACTERS);

// Every sequence of what counts in a script that is text, each whole and in pieces.
TEST(ScriptContentTest, EverySequence) {
    constexpr std::string_view PARTS[] = {"<!--", "-->", "<Script", "</script", ">", "-", "<", "/"};
    constexpr std::size_t LONGEST = 4;
    constexpr std::size_t CHOICES = std::size(PARTS);
    TracingParser libraries[] = {TracingParser(), TracingParser(true)};
    Feeding feeding;
    feeding.scriptsAsText = true;
    std::size_t count = 1;
    for (std::size_t length = 0; length <= LONGEST; ++length, count *= CHOICES) {
        for (std::size_t number = 0; number < count; ++number) {
            std::string document = "<script>";
            for (std::size_t rest = number, i = 0; i < length; ++i, rest /= CHOICES)
                document += PARTS[rest % CHOICES];
            document += "</script>";
            feeding.wide = number % 4 == 0;
            const std::size_t size = number % 5;
            feeding.cutsFor = [size](std::size_t documentLength) {
                return size == 0 ? Cuts() : CutsEvery(size, documentLength);
            };
            ASSERT_TRUE(Check(&libraries[feeding.wide], document, feeding));
        }
    }
}

// The contexts by themselves, which the enumeration leaves out.
TEST(DifferentialCheckTest, NothingAfterAContext) {
    TracingParser library;
    for (const std::string_view context : CUT_CONTEXTS) {
        Feeding feeding;
        EXPECT_TRUE(Check(&library, context, feeding)) << context;
        feeding.fed = Fed::BUFFER;
        EXPECT_TRUE(Check(&library, context, feeding)) << context;
    }
}

// The comparison itself must see every part of an outcome.
TEST(DifferentialCheckTest, SeesADifference) {
    const std::string document = "<p a>\nx";
    TracingParser library;
    const TokenOutcome actual = library.Parse(document, CharSet::WINDOWS_1252, Fed::STREAM, {});
    ASSERT_EQ(Show(actual), Show(ExpectedOf(document, CharSet::WINDOWS_1252, Fed::STREAM, {})));
    for (const char* const other : {"<p b>\nx", "<p a>\ny", "<p a>\nx<", "<p a> x", "<p a>\n"})
        EXPECT_FALSE(actual == ExpectedOf(other, CharSet::WINDOWS_1252, Fed::STREAM, {})) << other;
    const TokenOutcome open = library.Parse("<p", CharSet::WINDOWS_1252, Fed::BUFFER, {});
    EXPECT_FALSE(open == ExpectedOf("<p", CharSet::WINDOWS_1252, Fed::STREAM, {}));
    EXPECT_TRUE(open == ExpectedOf("<p", CharSet::WINDOWS_1252, Fed::BUFFER, {}));
}

TEST(DifferentialCheckTest, SeesADifferenceInUtf16) {
    const auto expectedOf = [](std::string_view document) {
        return ExpectedOf(Refer(document, CharSet::WINDOWS_1252, Fed::STREAM, true), document, {}, true);
    };
    const std::string document = "\\xE9\xE9<p>\x1B$B<![x\xE9<script>//c\\\xE9\n";
    TracingParser library(true);
    const TokenOutcome actual = library.Parse(document, CharSet::ISO_2022_JP, Fed::STREAM, {});
    ASSERT_EQ(Show(actual), Show(expectedOf(document)));
    EXPECT_EQ(actual.trace,
              (std::vector<std::string>{"start-parsing", "charset(1200)", "text(\\\\xE9\\u00E9)", "start(|p||)",
                                        "text(\\x1B$B)", "junk(<\\x00!\\x00[\\x00x\\x00\\xE9\\x00)", "start(|script||)",
                                        "js-start", "cpp-comment(c\\\\\\u00E9)", "text(\\n)", "end-parsing"}));
    for (const std::size_t place : {std::size_t{0}, document.find('\xE9'), document.find('p'), document.find('$'),
                                    document.find("x\xE9<"), document.find("\xE9<s"), document.find("c\\")}) {
        std::string other = document;
        other[place] = 'q';
        EXPECT_FALSE(actual == expectedOf(other)) << place;
    }
}

TEST(DifferentialCheckTest, ShorteningKeepsOnlyWhatFails) {
    const auto fails = [](std::string_view document) {
        return document.find('x') != std::string_view::npos && document.find('z') != std::string_view::npos;
    };
    EXPECT_EQ(Shorten("aaaxbbbbbzc", fails), "xz");
    EXPECT_EQ(Shorten("", fails), "");
}

TEST(DifferentialCheckTest, TheStringsAreAllThere) {
    std::map<std::string, int> strings;
    for (const char first : ENUMERATED_CHARACTERS) {
        ForEachString("p", first, 3, [&](std::string_view document) {
            ++strings[std::string(document)];
            return true;
        });
    }
    EXPECT_EQ(strings.size(), 16U + 16U * 16U + 16U * 16U * 16U);
    for (const auto& [document, count] : strings) {
        EXPECT_EQ(count, 1) << document;
        EXPECT_EQ(document.find_first_not_of(ENUMERATED_CHARACTERS, 1), std::string::npos) << document;
    }
}

TEST(DifferentialCheckTest, TheSplitsAreAllThere) {
    std::vector<Cuts> splits;
    const auto keep = [&](const Cuts& cuts) {
        splits.push_back(cuts);
        return true;
    };
    ForEverySplitOfTheTail(3, 3, keep);
    EXPECT_EQ(splits, (std::vector<Cuts>{{}, {1}, {2}, {1, 2}}));
    splits.clear();
    ForEverySplitOfTheTail(4, 1, keep);
    EXPECT_EQ(splits, (std::vector<Cuts>{{}, {1, 2}, {3}, {1, 2, 3}}));
}

TEST(RandomGrammarTest, MakesAllThatItsRulesSay) {
    const RandomGrammar grammar({{"letter", "x|8:y|"}, {"b", "<{letter*2-2}`{{|1}`}>"}, {"run", "#pq"}}, 5);
    std::map<std::string, int> made;
    std::map<std::size_t, int> lengths;
    Dice dice(1);
    for (int i = 0; i < 2000; ++i) {
        ++made[grammar.Make("b", &dice)];
        const std::string run = grammar.Make("run", &dice);
        EXPECT_EQ(run.find_first_not_of("pq"), std::string::npos);
        ++lengths[run.size()];
    }
    std::vector<std::string> strings;
    for (const auto& [string, count] : made)
        strings.push_back(string);
    EXPECT_EQ(strings, (std::vector<std::string>{"<xx{1}>", "<xx{}>", "<xy{1}>", "<xy{}>", "<x{1}>", "<x{}>", "<yx{1}>",
                                                 "<yx{}>", "<yy{1}>", "<yy{}>", "<y{1}>", "<y{}>", "<{1}>", "<{}>"}));
    EXPECT_GT(made["<yy{}>"], 10 * made["<xx{}>"]);
    EXPECT_EQ(lengths.size(), 5U);
    EXPECT_EQ(lengths.rbegin()->first, 5U);
    for (const char* const bad :
         {"{nothing}", "{byte", "{byte|x", "byte}", "{byte*1-2", "{Byte}", "{byte_}", "{byte*2}", "{byte*1:2}"})
        EXPECT_THROW(RandomGrammar({{"a", bad}}), std::invalid_argument) << bad;
    EXPECT_THROW(grammar.Make("c", &dice), std::invalid_argument);
}

TEST(RandomGrammarTest, ARangeHasBothItsEnds) {
    const RandomGrammar grammar({{"a", "{|x}"}, {"b", "{a*0-3}"}});
    std::map<std::string, int> made;
    Dice dice(1);
    for (int i = 0; i < 1000; ++i)
        ++made[grammar.Make("b", &dice)];
    EXPECT_EQ(made.size(), 4U);
    EXPECT_EQ(made.rbegin()->first, "xxx");
}

// A document of a seed never changes, and together they reach every kind of token and every result.
TEST(DifferentialCheckTest, TheDocumentsHoldEveryKindOfToken) {
    const char* const kinds[] = {
        "text(",        "start(",   "short(",       "end(",           "s-string(",      "d-string(",
        "junk(",        "js-start", "js-end",       "css-start",      "css-end",        ", slash",
        "|'",           "|\"",      "c-comment(",   "comment(",       "cdata(",         "conditional(",
        "entity(",      "extern(",  "extern-text(", "charset(50221)", "charset(65001)", "conditional(endif|",
        ", no-bracket", "\\x1B"};
    std::map<std::string, int> counts;
    std::map<std::uint32_t, int> results;
    std::size_t severalReads = 0;
    DocumentMaker maker(&Pages());
    for (std::uint64_t seed = 0; seed < 3000; ++seed) {
        const MadeDocument made = maker.Make(seed);
        severalReads += made.bytes.size() > GenericParser::BUFFER_SIZE ? 1U : 0U;
        const TokenOutcome outcome = ExpectedOf(made.bytes, made.charset, Fed::BUFFER, {});
        ++results[outcome.parseResult];
        ++results[outcome.endResult];
        std::string lines;
        for (const std::string& line : ExpectedOf(made.bytes, made.charset, Fed::STREAM, {}).trace)
            lines += line + "\n";
        for (const char* const kind : kinds)
            counts[kind] += lines.find(kind) != std::string::npos ? 1 : 0;
    }
    for (const char* const kind : kinds)
        EXPECT_GE(counts[kind], 10) << kind;
    for (const std::uint32_t result : {0U, 11U, 16U})
        EXPECT_GE(results[result], 10) << result;
    EXPECT_GE(severalReads, 10U);
    EXPECT_EQ(maker.Make(7).bytes, DocumentMaker(&Pages()).Make(7).bytes);
    EXPECT_NE(maker.Make(7).bytes, maker.Make(8).bytes);
}

}  // namespace
}  // namespace Kestra::Test
