#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/ParserObserver.h"
#include "html/parser/GenericParser.h"
#include "tests/reference/CopyCheck.h"
#include "tests/reference/DocumentFeeding.h"
#include "tests/reference/ReferenceTokenizer.h"
#include "tests/support/DocumentMaker.h"
#include "tests/support/Flavours.h"
#include "tests/support/Splits.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using StringNS::CharSet;

constexpr std::uint64_t DOCUMENTS = 50000;
constexpr std::uint64_t DOCUMENTS_WITH_CONTENTS = 16000;
constexpr std::uint64_t SHARDS = 16;
constexpr std::size_t CUT_LENGTH = 3;  // of the enumerated strings that are cut in every way
constexpr std::size_t ENUMERATED_LENGTH = KESTRA_ENUMERATED_LENGTH;  // of the longest enumerated strings
constexpr std::uint32_t CHECK_FAILED = HTML::PARSER_SELF_CHECK_FAILED;

/// Before the enumerated strings.
constexpr std::string_view CONTEXTS[] = {"", "<script>", "<style>"};

/// Before those that are cut: what is written back differently, too.
constexpr std::string_view CUT_CONTEXTS[] = {
    "",           "<script>", "<style>",   "<![if",        "<![if x]y",  "<![endif]", "<?xml a/", "<?xml b/c", "<!--",
    "<![CDATA[x", "<![CDATA", "<script>/", "<script>//<!", "<script>/*", "<style>/*", "</p a/",   "<p a=b"};

/// The bytes of the marks that begin a document whose kind is not given.
constexpr std::string_view UTF8_MARK = "\xEF\xBB\xBF";
constexpr std::string_view UTF16_MARK = "\xFF\xFE";

/// @param run  of the document, in the charset of the reading
/// @return true when nothing is wrong
bool Check(SelfCheckingParser* parser, std::string_view document, const ReferenceRun& run, const Reading& reading) {
    const std::string fault = Fault(parser, document, run, reading);
    if (fault.empty())
        return true;
    const auto fails = [&](std::string_view candidate) { return !Fault(candidate, reading).empty(); };
    if (!fails(document)) {
        ADD_FAILURE() << "only after other documents: " << fault;
        return false;
    }
    const std::string shortest = Shorten(std::string(document), fails);
    ADD_FAILURE() << "the shortest document with a fault: " << Fault(shortest, reading);
    return false;
}

/// The pages, read once.
const std::vector<std::string>& Pages() {
    static const std::vector<std::string> PAGES = ReadPages(KESTRA_EXAMPLE_PAGES);
    return PAGES;
}

class ReferenceRoundTripTest : public testing::TestWithParam<std::uint64_t> {
protected:
    /// Calls `check` for the documents of this shard until it answers false.
    void ForEachDocument(const std::function<bool(const MadeDocument& made, std::uint64_t seed)>& check) {
        DocumentMaker maker(&Pages());
        for (std::uint64_t seed = GetParam(); seed < DOCUMENTS; seed += SHARDS) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            ASSERT_TRUE(check(maker.Make(seed), seed));
        }
    }
};

std::function<Cuts(std::size_t)> ShortReads(std::uint64_t seed) {
    return [seed](std::size_t length) {
        Dice dice(seed);
        return CutsOfShortReads(length, &dice);
    };
}

TEST_P(ReferenceRoundTripTest, EightBitDocuments) {
    SelfCheckingParser parser;
    ForEachDocument([&](const MadeDocument& made, std::uint64_t seed) {
        Reading reading;
        reading.charset = made.charset;
        const ReferenceRun run = Refer(made.bytes, reading);
        if (!Check(&parser, made.bytes, run, reading))
            return false;
        reading.cutsFor = ShortReads(seed);
        return Check(&parser, made.bytes, run, reading);
    });
}

TEST_P(ReferenceRoundTripTest, WideDocuments) {
    SelfCheckingParser parser;
    ForEachDocument([&](const MadeDocument& made, std::uint64_t seed) {
        const std::string document = WithoutWideSpaces(made.bytes);
        Reading reading;
        reading.wide = true;
        const ReferenceRun run = Refer(document, reading);
        if (!Check(&parser, document, run, reading))
            return false;
        reading.cutsFor = ShortReads(seed);
        return Check(&parser, document, run, reading);
    });
}

TEST_P(ReferenceRoundTripTest, DocumentsWithContents) {
    SelfCheckingParser parser;
    DocumentMaker maker(&Pages());
    for (std::uint64_t seed = GetParam(); seed < DOCUMENTS_WITH_CONTENTS; seed += SHARDS) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const MadeDocument made = maker.MakeWithContents(seed);
        Reading reading;
        reading.scriptsAsText = true;
        reading.wide = seed / SHARDS % 3 == 0;
        reading.charset = reading.wide ? CharSet::WINDOWS_1252 : made.charset;
        reading.cutsFor = ShortReads(seed);
        const std::string document = reading.wide ? WithoutWideSpaces(made.bytes) : made.bytes;
        ASSERT_TRUE(Check(&parser, document, Refer(document, reading), reading));
    }
}

INSTANTIATE_TEST_SUITE_P(Shards, ReferenceRoundTripTest, testing::Range<std::uint64_t>(0, SHARDS));

/// By the first character.
class EnumeratedRoundTripTest : public testing::TestWithParam<std::size_t> {
protected:
    char First() const {
        return ENUMERATED_CHARACTERS[GetParam()];
    }
};

TEST_P(EnumeratedRoundTripTest, WholeAndInShortReads) {
    SelfCheckingParser parser;
    Dice dice(GetParam());
    Cuts shortReads;
    Reading whole;
    Reading cut;
    // Cuts of the longer document are cuts of the shortened one too.
    cut.cutsFor = [&](std::size_t length) {
        return Cuts(shortReads.begin(), std::lower_bound(shortReads.begin(), shortReads.end(), length));
    };
    bool passes = true;
    for (const std::string_view context : CONTEXTS) {
        ForEachString(context, First(), ENUMERATED_LENGTH, [&](std::string_view document) {
            shortReads = CutsOfShortReads(document.size(), &dice);
            const ReferenceRun run = Refer(document, whole);
            for (const bool wide : {false, true}) {
                whole.wide = wide;
                cut.wide = wide;
                passes = passes && Check(&parser, document, run, whole) && Check(&parser, document, run, cut);
            }
            return passes;
        });
        ASSERT_TRUE(passes);
    }
}

TEST_P(EnumeratedRoundTripTest, EverySplit) {
    SelfCheckingParser parser;
    bool passes = true;
    for (const std::string_view context : CUT_CONTEXTS) {
        ForEachString(context, First(), CUT_LENGTH, [&](std::string_view document) {
            const ReferenceRun run = Refer(document, Reading());
            ForEverySplitOfTheTail(document.size(), document.size() - context.size(), [&](const Cuts& cuts) {
                Reading reading;
                reading.cutsFor = [&cuts](std::size_t length) {
                    return Cuts(cuts.begin(), std::lower_bound(cuts.begin(), cuts.end(), length));
                };
                for (const bool wide : {false, true}) {
                    reading.wide = wide;
                    passes = passes && Check(&parser, document, run, reading);
                }
                return passes;
            });
            return passes;
        });
        ASSERT_TRUE(passes);
    }
}

INSTANTIATE_TEST_SUITE_P(FirstCharacter, EnumeratedRoundTripTest,
                         testing::Range<std::size_t>(0, ENUMERATED_CHARACTERS.size()));

// Documents whose kind is found out by a mark

/// What the first bytes decide.
struct Beginning {
    enum class Kind { NOTHING_RUNS, EIGHT_BIT, UTF8, UTF16 };

    Kind kind = Kind::NOTHING_RUNS;
    /// Where the text begins: after the mark, or after the pieces that held only a possible mark.
    std::size_t content = 0;
};

Beginning BeginningOf(std::string_view document, const Cuts& cuts) {
    std::string seen;
    for (const auto& [begin, end] : PiecesOf(cuts, document.size())) {
        for (std::size_t at = begin; at < end; ++at) {
            seen += document[at];
            if (seen == UTF8_MARK)
                return {Beginning::Kind::UTF8, at + 1};
            if (seen == UTF16_MARK)
                return {Beginning::Kind::UTF16, at + 1};
            if (!UTF8_MARK.starts_with(seen) && !UTF16_MARK.starts_with(seen))
                return {Beginning::Kind::EIGHT_BIT, begin};
        }
    }
    return {Beginning::Kind::NOTHING_RUNS, document.size()};
}

/// The cuts after `begin`, counted from there.
Cuts CutsFrom(const Cuts& cuts, std::size_t begin, std::size_t unit) {
    Cuts later;
    for (const std::size_t cut : cuts) {
        if (cut > begin)
            later.push_back((cut - begin) / unit);
    }
    return later;
}

/// @param cuts  in bytes, as the document is read; even after a mark of UTF-16
/// @param latin1  the text after a mark of UTF-16, in 8 bits
CopyOutcome ExpectMarked(std::string_view document, const Cuts& cuts, std::string_view latin1) {
    const Beginning beginning = BeginningOf(document, cuts);
    const std::string_view text = document.substr(beginning.content);
    Reading reading;
    CopyOutcome outcome;
    switch (beginning.kind) {
        case Beginning::Kind::NOTHING_RUNS:
            return outcome;
        case Beginning::Kind::EIGHT_BIT:
            return Expect(text, reading, CutsFrom(cuts, beginning.content, 1)).outcome;
        case Beginning::Kind::UTF8:
            reading.charset = CharSet::UTF8;
            outcome = Expect(text, reading, CutsFrom(cuts, beginning.content, 1)).outcome;
            outcome.copy.insert(0, UTF8_MARK);
            return outcome;
        case Beginning::Kind::UTF16:
            reading.wide = true;
            outcome = Expect(latin1, reading, CutsFrom(cuts, beginning.content, sizeof(WideChar))).outcome;
            outcome.copy.insert(0, UTF16_MARK);
            return outcome;
    }
    return outcome;
}

void CheckMarked(SelfCheckingParser* parser, std::string_view document, const Cuts& cuts, std::string_view latin1) {
    const CopyOutcome expected = ExpectMarked(document, cuts, latin1);
    const CopyOutcome& actual = parser->Parse(document, CharSet::WINDOWS_1252, GenericParser::DATA_STREAM_AUTO, cuts);
    ASSERT_TRUE(actual == expected) << Trace::Escape(document) << "\ncut at " << Describe(cuts) << "\nthe library:\n"
                                    << Show(actual) << "expected:\n"
                                    << Show(expected);
}

TEST_P(ReferenceRoundTripTest, DocumentsThatMayBeginWithAMark) {
    constexpr std::string_view BEGINNINGS[] = {"\xEF\xBB\xBF",     "\xEF\xBB",     "\xEF",     "\xFF", "\xEF\xBB\xEF",
                                               "\xEF\xEF\xBB\xBF", "\xFF\xFF\xFE", "\xFE\xFF", "\xBF", ""};
    SelfCheckingParser parser;
    ForEachDocument([&](const MadeDocument& made, std::uint64_t seed) {
        Dice dice(seed);
        std::string document(dice.Pick(BEGINNINGS));
        // An empty rest, so that the possible mark is the whole input, comes often enough.
        document += made.bytes.substr(0, dice.OneIn(8) ? 0 : made.bytes.size());
        const bool mayBeWide = BeginningOf(document, {}).kind == Beginning::Kind::UTF16;
        const Cuts shortReads = CutsOfShortReads(document.size(), &dice);
        for (const Cuts& cuts : {Cuts(), shortReads}) {
            if (!mayBeWide)
                CheckMarked(&parser, document, CutsAsRead(cuts, document.size(), GenericParser::BUFFER_SIZE), "");
        }
        const std::string latin1 = WithoutWideSpaces(made.bytes);
        document = std::string(UTF16_MARK) + Widened(latin1);
        Cuts even = Scaled(CutsOfShortReads(document.size() / 2, &dice), sizeof(WideChar));
        if (dice.OneIn(2))
            even.insert(even.begin(), 1);
        even.erase(std::unique(even.begin(), even.end()), even.end());
        // The mark cut in two is an odd piece and another one; after it the pieces are even.
        CheckMarked(&parser, document, CutsAsRead(even, document.size(), GenericParser::BUFFER_SIZE), latin1);
        return !HasFatalFailure();
    });
}

// Every short text of the bytes of both marks and two others, and each way to cut it.
TEST(ReferenceMarkTest, EveryBeginningAndSplit) {
    constexpr std::string_view BYTES = "\xEF\xBB\xBF\xFF\xFE<a";
    constexpr std::size_t LONGEST = 4;
    SelfCheckingParser parser;
    std::size_t oddPieces = 0;
    for (std::size_t length = 1; length <= LONGEST; ++length) {
        std::size_t count = 1;
        for (std::size_t i = 0; i < length; ++i)
            count *= BYTES.size();
        for (std::size_t number = 0; number < count; ++number) {
            std::string document;
            for (std::size_t rest = number, i = 0; i < length; ++i, rest /= BYTES.size())
                document += BYTES[rest % BYTES.size()];
            ForEverySplitOfTheTail(length, length, [&](const Cuts& cuts) {
                const Beginning beginning = BeginningOf(document, cuts);
                CopyOutcome expected;
                if (beginning.kind == Beginning::Kind::UTF16) {
                    // Two bytes of this set are no "<" of UTF-16, so every whole character is text.
                    // A piece with half of one is refused.
                    expected.copy = document;
                    for (const auto& [begin, end] : PiecesOf(cuts, length)) {
                        if (end > beginning.content && (end - std::max(begin, beginning.content)) % 2 != 0) {
                            expected.parseResult = HTML::PARSER_INVALID_ARGUMENT;
                            expected.copy = document.substr(0, std::max(begin, beginning.content));
                            ++oddPieces;
                            break;
                        }
                    }
                } else {
                    expected = ExpectMarked(document, cuts, "");
                }
                const CopyOutcome& actual =
                    parser.Parse(document, CharSet::WINDOWS_1252, GenericParser::DATA_STREAM_AUTO, cuts);
                EXPECT_TRUE(actual == expected)
                    << Trace::Escape(document) << "\ncut at " << Describe(cuts) << "\nthe library:\n"
                    << Show(actual) << "expected:\n"
                    << Show(expected);
                return actual == expected;
            });
            ASSERT_FALSE(HasFailure());
        }
    }
    EXPECT_GT(oddPieces, 0U);
}

struct MarkRow {
    const char* note;
    std::string_view document;
    Cuts cuts;
    std::string_view copy;
};

// The model of the beginnings, by hand.
TEST(ReferenceMarkTest, WhatEndsAPieceAndIsNoMarkIsGone) {
    const MarkRow rows[] = {
        {"a possible mark is the whole input", "\xEF\xBB", {}, ""},
        {"also in two pieces", "\xEF\xBB", {1}, ""},
        {"bytes that ended a piece and were no mark", "\xEF\xBB<p>", {2}, "<p>"},
        {"in two pieces, and the third shows it", "\xEF\xBB<p>", {1, 2}, "<p>"},
        {"only the piece that shows it is kept whole", "\xEF\xBB<p>", {1}, "\xBB<p>"},
        {"uncut, nothing is gone", "\xEF\xBB<p>", {}, "\xEF\xBB<p>"},
        {"half a mark of UTF-16", "\xFFx", {1}, "x"},
        {"a mark in pieces is one", "\xEF\xBB\xBFx", {1, 2}, "\xEF\xBB\xBFx"},
        {"junk after lost bytes is read from the right place", "\xEF<p a=/><q>", {1}, "<p a=/><q>"},
    };
    SelfCheckingParser parser;
    for (const MarkRow& row : rows) {
        const CopyOutcome& actual =
            parser.Parse(row.document, CharSet::WINDOWS_1252, GenericParser::DATA_STREAM_AUTO, row.cuts);
        EXPECT_EQ(Show(actual), Show(CopyOutcome{0, 0, std::string(row.copy)})) << row.note;
        EXPECT_EQ(Show(ExpectMarked(row.document, row.cuts, "")), Show(actual)) << row.note;
    }
}

struct ExceptionRow {
    const char* note;
    std::string_view document;
    Cuts cuts;
    std::string_view copy;
};

// Each exception by hand, so that the model of the others is not the only witness.
TEST(RoundTripRuleTest, TheExceptions) {
    const ExceptionRow rows[] = {
        {"a tail in one piece with its end is kept", "<![if x]abc>d", {6}, "<![if x]abc>d"},
        {"a tail loses what lies in an earlier piece", "<![if x]abc>d", {10}, "<![if x]c>d"},
        {"also when only its end is left", "<![if x]abc>d", {11}, "<![if x]>d"},
        {"an open tail is lost", "<![if x]abc", {}, "<![if x]"},
        {"a slash before white space comes back after it", "<?xml a/ >", {}, "<?xml a />"},
        {"a failed line comment whose opener is cut loses its slash", "<script>//<!-x", {9}, "<script>/<!-x"},
        {"an open block comment too", "<script>/*x", {9}, "<script>*x"},
        {"uncut it is kept", "<script>/*x", {}, "<script>/*x"},
        {"a whole one keeps its slash", "<script>/*x*/", {9}, "<script>/*x*/"},
    };
    SelfCheckingParser parser;
    for (const ExceptionRow& row : rows) {
        Reading reading;
        reading.cutsFor = [&](std::size_t) { return row.cuts; };
        const CopyOutcome& actual =
            parser.Parse(row.document, CharSet::WINDOWS_1252, GenericParser::DATA_STREAM_8BIT, row.cuts);
        EXPECT_EQ(Show(actual),
                  Show(CopyOutcome{0, row.copy == row.document ? 0 : CHECK_FAILED, std::string(row.copy)}))
            << row.note;
        EXPECT_EQ(Expect(row.document, reading, row.cuts).isException, row.copy != row.document) << row.note;
    }
}

struct WideRow {
    const char* note;
    std::string_view document;
    std::string_view body;  ///< of which the first half of the bytes is written
};

TEST(RoundTripRuleTest, TheBodiesOfTheWideFlavour) {
    const WideRow rows[] = {
        {"no body", "<!---->", ""},
        {"a comment", "<!--ab-->", "ab"},
        {"an open comment with its dashes", "<!--ab-", "ab-"},
        {"no closer, but a body", "<!--->", "->"},
        {"a section begins with its bracket", "<![CDATA[]]>", "["},
        {"a section without one", "<![CDATA]]>", ""},
        {"a section that another character ends", "<![CDATA]]", "]]"},
        {"a condition", "<![if x]>", " x"},
        {"no condition and no tail", "<![endif]>", ""},
        {"a tail", "<![endif]-->", "--"},
        {"text", "<p>\xE9</p>", ""},
    };
    SelfCheckingParser parser;
    for (const WideRow& row : rows) {
        std::string copy = Widened(row.document);
        if (!row.body.empty())
            copy.replace(copy.rfind(Widened(row.body)), row.body.size() * 2, WidenedBody(row.body));
        const CopyOutcome& actual =
            parser.Parse(Widened(row.document), CharSet::WINDOWS_1252, GenericParser::DATA_STREAM_UTF16, {});
        EXPECT_EQ(Show(actual), Show(CopyOutcome{0, row.body.empty() ? 0 : CHECK_FAILED, copy})) << row.note;
        Reading reading;
        reading.wide = true;
        EXPECT_EQ(Show(Expect(row.document, reading, {}).outcome), Show(actual)) << row.note;
    }
}

TEST(RoundTripRuleTest, SeesAFault) {
    SelfCheckingParser parser;
    Reading reading;
    EXPECT_EQ(Fault("<p a=/>", reading), "");
    // A charset that hides markup in escape runs, which the parser is not told.
    const std::string document = "\x1B$B<p>\x1B(B<![if x]y";
    const CopyOutcome other = parser.Parse(document, CharSet::WINDOWS_1252, GenericParser::DATA_STREAM_8BIT, {});
    reading.charset = CharSet::ISO_2022_JP;
    const Expectation expected = Expect(document, reading, {});
    EXPECT_EQ(Show(other), Show(expected.outcome));
    EXPECT_TRUE(expected.isException);
    EXPECT_FALSE(other == Expect("\x1B$B<p>\x1B(B<![if x]>", reading, {}).outcome);
}

// Without exceptions, the rule for them would say nothing.
TEST(RoundTripRuleTest, TheDocumentsHoldEveryException) {
    std::size_t openTails = 0;
    std::size_t cutTails = 0;
    std::size_t swaps = 0;
    std::size_t lostSlashes = 0;
    std::size_t keptSlashes = 0;
    std::size_t wideBodies = 0;
    std::size_t wideWithout = 0;
    DocumentMaker maker(&Pages());
    for (std::uint64_t seed = 0; seed < 6000; ++seed) {
        const MadeDocument made = maker.Make(seed);
        const Cuts cuts =
            CutsAsRead(ShortReads(seed)(made.bytes.size()), made.bytes.size(), GenericParser::BUFFER_SIZE);
        bool body = false;
        ReferenceSettings settings;
        settings.charset = made.charset;
        for (const ReferenceStretch& stretch : ParseByReference(made.bytes, settings).stretches) {
            const bool isConditional = stretch.kind == ReferenceStretch::Kind::CONDITIONAL;
            openTails += isConditional && !stretch.closed && IsException(stretch, {}) ? 1U : 0U;
            cutTails += isConditional && stretch.closed && IsException(stretch, cuts) ? 1U : 0U;
            swaps += stretch.swapsSlashAndSpace ? 1U : 0U;
            lostSlashes += LosesItsSlash(stretch, cuts) ? 1U : 0U;
            keptSlashes += stretch.failedScriptComment && !LosesItsSlash(stretch, cuts) ? 1U : 0U;
            body = body || HasBody(made.bytes, stretch);
        }
        (body ? wideBodies : wideWithout) += 1;
    }
    EXPECT_GE(openTails, 10U);
    EXPECT_GE(cutTails, 10U);
    EXPECT_GE(swaps, 10U);
    EXPECT_GE(lostSlashes, 10U);
    EXPECT_GE(keptSlashes, 10U);
    EXPECT_GE(wideBodies, 1000U);
    EXPECT_GE(wideWithout, 1000U);
}

}  // namespace
}  // namespace Kestra::Test
