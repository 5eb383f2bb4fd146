#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "html/fastpath/WholeTag.h"
#include "tests/html/tags/TagRows.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"
#include "tests/support/RandomInput.h"
#include "tests/support/RecordDump.h"

/// @file
/// Reads tags both ways, as a whole and by their recognizers, and compares.

namespace Kestra::Test {
namespace {

using HTML::WholeTag;

static_assert(!std::is_default_constructible_v<WholeTag> && !std::is_aggregate_v<WholeTag>,
              "only its reader makes one");

constexpr std::size_t NO_LIMIT = SIZE_MAX;

/// How many tags were read in which way; tests assert bounds, so that no comparison is left out
/// unseen.
struct Counts {
    std::size_t tags = 0;
    std::size_t read = 0;  ///< by the fast path
    std::size_t withAttributes = 0;
    std::size_t withFoldedWords = 0;
    std::size_t withShortEnd = 0;
    std::size_t withLines = 0;
    std::size_t leftByLimit = 0;  ///< tags that are read as a whole only without a limit
};

template <typename C, typename S>
bool operator==(const HTML::SimpleParserContext<C, S>& one, const HTML::SimpleParserContext<C, S>& other) {
    return one.buffer == other.buffer && one.position == other.position && one.length == other.length &&
           one.line == other.line && one.column == other.column;
}

/// All fields, those of an attribute without a value too, which no trace shows.
template <typename C, typename S>
bool IsSame(const HTML::Attribute<C, S>& one, const HTML::Attribute<C, S>& other) {
    return one.prefix == other.prefix && one.name == other.name && one.beforeEquals == other.beforeEquals &&
           one.afterEquals == other.afterEquals && one.value == other.value && one.quote == other.quote &&
           one.hasValue == other.hasValue;
}

template <typename C, typename S>
bool IsSame(const Vector<HTML::Attribute<C, S>>& one, const Vector<HTML::Attribute<C, S>>& other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const auto& attribute, const auto& counterpart) { return IsSame(attribute, counterpart); });
}

template <typename C, typename S>
bool IsSame(const HTML::StartTagSimpleParserData<C, S>& one, const HTML::StartTagSimpleParserData<C, S>& other) {
    return one.state == other.state && one.prefix == other.prefix && one.name == other.name &&
           one.suffix == other.suffix && one.wideName == other.wideName && one.selfClosing == other.selfClosing &&
           one.closed == other.closed && one.iso2022 == other.iso2022 && IsSame(one.attributes, other.attributes);
}

template <typename C, typename S>
bool IsSame(const HTML::EndTagSimpleParserData<C, S>& one, const HTML::EndTagSimpleParserData<C, S>& other) {
    return one.state == other.state && one.prefix == other.prefix && one.name == other.name &&
           one.afterName == other.afterName && one.suffix == other.suffix &&
           one.slashBeforeClose == other.slashBeforeClose && one.closed == other.closed &&
           one.iso2022 == other.iso2022 && IsSame(one.attributes, other.attributes);
}

/// A record and its state, for messages.
template <typename Data>
std::string Describe(const Data& data) {
    return Dump(data) + " in state " + std::to_string(data.state);
}

/// What an earlier tag may have left in the record, beside its strings and attributes.
template <typename C, typename S>
void LeaveFlags(HTML::StartTagSimpleParserData<C, S>* data) {
    data->state = HTML::START_TAG_NAME;
    data->selfClosing = true;
    data->closed = false;
    data->iso2022 = true;
}

template <typename C, typename S>
void LeaveFlags(HTML::EndTagSimpleParserData<C, S>* data) {
    data->state = HTML::END_TAG_NAME;
    data->suffix = To<S>("\t");
    data->attributes.resize(1);
    data->slashBeforeClose = true;
    data->closed = false;
    data->iso2022 = true;
}

/// The tags that the fast path must not decline when they are complete.
template <typename C, typename S>
bool IsForFastPath(const HTML::StartTagSimpleParserData<C, S>&) {
    return true;
}

template <typename C, typename S>
bool IsForFastPath(const HTML::EndTagSimpleParserData<C, S>& data) {
    return data.closed && data.attributes.empty() && !data.slashBeforeClose;
}

template <typename C, typename S>
bool IsShort(const HTML::StartTagSimpleParserData<C, S>& data) {
    return data.selfClosing;
}

template <typename C, typename S>
bool IsShort(const HTML::EndTagSimpleParserData<C, S>& data) {
    return data.slashBeforeClose;
}

template <typename C, typename S>
std::optional<WholeTag> ReadAsWhole(HTML::SimpleParserContext<C, S>* context,
                                    HTML::StartTagSimpleParserData<C, S>* data, std::size_t mostAttributes) {
    return HTML::WholeTagReader<C, S>(context, mostAttributes).Read(data);
}

template <typename C, typename S>
std::optional<WholeTag> ReadAsWhole(HTML::SimpleParserContext<C, S>* context, HTML::EndTagSimpleParserData<C, S>* data,
                                    std::size_t) {
    return HTML::WholeTagReader<C, S>(context).Read(data);
}

/// The attributes of a tag as they were written, words that have become a part of a value included.
template <typename C, typename S>
std::size_t CountWrittenAttributes(const Vector<HTML::Attribute<C, S>>& attributes) {
    std::size_t count = 0;
    Vector<HTML::Attribute<C, S>> parts;
    for (const HTML::Attribute<C, S>& attribute : attributes) {
        parts.clear();
        HTML::AttributesNormalizer<C, S>::Split(attribute, HTML::SPLIT_PLAIN, &parts);
        count += parts.size();
    }
    return count;
}

/// Wide characters that no byte has, some with the low byte of a character that ends a name: white
/// space, "=" and ">".
void AddWideCharacters(std::string*) {}

void AddWideCharacters(WideString* input) {
    for (WideChar& character : *input) {
        if (character >= 0x90 && character < 0x98)
            character = WideString{0x3000, 0x2028, 0x013D, 0x203E, 0x0A0A, 0x4120, 0xD83D, 0xFFFF}[character - 0x90U];
    }
}

/// Reads one tag after another both ways. The record of the fast path goes from tag to tag, as that
/// of the driver does.
template <template <typename, typename> class RecognizerOf, typename Flavour>
class Comparison {
public:
    using C = typename Flavour::C;
    using S = typename Flavour::S;
    using Recognizer = RecognizerOf<C, S>;
    using Data = typename Recognizer::Data;

    /// @param latin1  what follows the opener of a tag
    void Compare(std::string_view latin1, std::size_t mostAttributes = NO_LIMIT) {
        constexpr std::string_view BEFORE = "x\ny<";
        S input = To<S>(std::string(BEFORE) + std::string(latin1));
        AddWideCharacters(&input);
        const HeapPiece<C> piece{std::basic_string_view<C>(input)};
        HTML::SimpleParserContext<C, S> begin;
        begin.buffer = piece.Data();
        begin.length = piece.Size();
        begin.position = BEFORE.size();
        begin.line = 5;
        begin.column = 9;

        HTML::SimpleParserContext<C, S> expectedEnd = begin;
        Data expected;
        const bool isComplete = Recognize(&expectedEnd, &expected);

        HTML::SimpleParserContext<C, S> end = begin;
        LeaveFlags(&data);
        const bool isRead = ReadAsWhole(&end, &data, mostAttributes).has_value();
        ++counts.tags;
        if (!isRead) {
            EXPECT_TRUE(end == begin) << "declined, but the context has changed";
            const bool isForFastPath = isComplete && IsForFastPath(expected);
            EXPECT_FALSE(isForFastPath && mostAttributes == NO_LIMIT) << "declined for no reason";
            counts.leftByLimit += isForFastPath ? 1 : 0;
            return;
        }
        ASSERT_TRUE(isComplete) << "read as " << Dump(data);
        EXPECT_TRUE(end == expectedEnd) << "position " << end.position << " line " << end.line << " column "
                                        << end.column;
        EXPECT_TRUE(IsSame(data, expected)) << Describe(data) << " instead of " << Describe(expected);
        const std::size_t written = CountWrittenAttributes(data.attributes);
        EXPECT_LE(written, mostAttributes);
        ++counts.read;
        counts.withAttributes += data.attributes.empty() ? 0 : 1;
        counts.withFoldedWords += written > data.attributes.size() ? 1 : 0;
        counts.withShortEnd += IsShort(data) ? 1 : 0;
        counts.withLines += end.line != begin.line ? 1 : 0;
    }

    const Counts& GetCounts() const {
        return counts;
    }

private:
    static bool Recognize(HTML::SimpleParserContext<C, S>* context, Data* record) {
        Recognizer recognizer;
        recognizer.BeginParse(record);
        std::uint32_t result = HTML::SP_NEED_MORE_DATA;
        // An end tag's call ends after a "/" too.
        while (result == HTML::SP_NEED_MORE_DATA && context->position < context->length)
            result = recognizer.Parse(context, record);
        return result == HTML::SP_TOKEN_COMPLETE;
    }

    Data data;
    Counts counts;
};

template <typename Flavour>
using StartTags = Comparison<HTML::StartTagSimpleParser, Flavour>;

template <typename Flavour>
using EndTags = Comparison<HTML::EndTagSimpleParser, Flavour>;

/// Tags and what looks like tags: half of them in the order of a tag, the others of such parts at
/// random.
class RandomTags {
public:
    explicit RandomTags(std::uint32_t seed)
        : random(seed, {"a",
                        "b",
                        "br",
                        "id",
                        " ",
                        " ",
                        "\n",
                        "\t",
                        "\r\n",
                        "\v",
                        "\f",
                        "=",
                        "=",
                        "/",
                        "/",
                        ">",
                        "<",
                        "[",
                        "]",
                        "'",
                        "\"",
                        "'x'",
                        "\"y\"",
                        "=z",
                        "\\",
                        "?",
                        "!",
                        "&",
                        std::string(1, '\0'),
                        "\x1B",
                        "\x1C",
                        "\x7F",
                        "\x80",
                        "\x85",
                        "\x8A",
                        "\x90",
                        "\x91",
                        "\x92",
                        "\x93",
                        "\x94",
                        "\x95",
                        "\x96",
                        "\x97",
                        "\xA0",
                        "\xBD",
                        "\xBE",
                        "\xFF",
                        "a-name-that-is-longer-than-a-block-of-a-scan",
                        " = 'a value\nof two lines that is longer than a block'"}) {}

    std::string Next() {
        return random.Flip() ? NextTag() : random.Next(12) + (random.Flip() ? ">" + random.Next(2) : "");
    }

    /// A tag whose list is long enough for its recognizer to read attributes as a whole.
    std::string NextLongTag() {
        std::string tag = "a";
        for (std::size_t count = 9 + random.Below(6); count > 0; --count)
            tag += random.Below(8) == 0 ? random.Next(3) : NextAttribute();
        return tag + End();
    }

    std::size_t Below(std::size_t limit) {
        return random.Below(limit);
    }

private:
    std::string NextTag() {
        std::string tag = random.Below(8) == 0 ? random.Next(3) : "p";
        for (std::size_t count = random.Below(6); count > 0; --count)
            tag += NextAttribute();
        return tag + End();
    }

    std::string NextAttribute() {
        const char* const SPACES[] = {" ", " ", " ", "\n", "\t ", "\r\n\t", "\xA0", "\x93", ""};
        const char* const VALUES[] = {"",     "",           " ",         "=b",      "=\"c\"", "='d'",
                                      "= e",  " =f",        "=",         "=\"\n\"", "='/'",   "=g/",
                                      "=h/i", "=\"j > k\"", "='l\n\nm'", "=<",      "/",      "=\"\""};
        std::string attribute = SPACES[random.Below(std::size(SPACES))];
        attribute += random.Below(10) == 0 ? random.Next(2) : "n" + std::to_string(random.Below(100));
        return attribute + VALUES[random.Below(std::size(VALUES))];
    }

    std::string End() {
        const char* const ENDS[] = {">",   ">",   ">",   "/>", " />", " >",    "\n>",
                                    "/ >", "//>", "=/>", "",   "<",   ">text", "/>\n<b>"};
        return ENDS[random.Below(std::size(ENDS))];
    }

    RandomInput random;
};

constexpr std::size_t ROUNDS = 100000;
constexpr std::size_t LONG_LISTS = 5000;

template <typename Flavour>
class WholeTagTest : public testing::Test {};

TYPED_TEST_SUITE(WholeTagTest, Flavours);

TYPED_TEST(WholeTagTest, EveryRowOfTheStartTagTables) {
    StartTags<TypeParam> startTags;
    for (const std::span<const RecognizerRow> table : START_TAG_TABLES) {
        for (const RecognizerRow& row : table) {
            SCOPED_TRACE(row.note);
            startTags.Compare(row.input);
        }
    }
    EXPECT_GE(startTags.GetCounts().tags, 110U);
    EXPECT_GE(startTags.GetCounts().read, 85U);
}

TYPED_TEST(WholeTagTest, EveryRowOfTheEndTagTables) {
    EndTags<TypeParam> endTags;
    StartTags<TypeParam> startTags;
    for (const std::span<const RecognizerRow> table : END_TAG_TABLES) {
        for (const RecognizerRow& row : table) {
            SCOPED_TRACE(row.note);
            endTags.Compare(row.input);
            startTags.Compare(row.input);
        }
    }
    EXPECT_GE(endTags.GetCounts().tags, 60U);
    EXPECT_GE(endTags.GetCounts().read, 11U);  // most rows have attributes
    EXPECT_GE(startTags.GetCounts().read, 40U);
}

TYPED_TEST(WholeTagTest, RandomStartTags) {
    RandomTags random(14);
    StartTags<TypeParam> startTags;
    for (std::size_t round = 0; round < ROUNDS; ++round) {
        const std::string tag = random.Next();
        startTags.Compare(tag);
        ASSERT_FALSE(this->HasFailure()) << testing::PrintToString(tag);
    }
    const Counts& counts = startTags.GetCounts();
    EXPECT_GT(counts.read, ROUNDS / 2);
    EXPECT_GT(counts.withAttributes, ROUNDS / 3);
    EXPECT_GT(counts.withFoldedWords, ROUNDS / 10);
    EXPECT_GT(counts.withShortEnd, ROUNDS / 10);
    EXPECT_GT(counts.withLines, ROUNDS / 10);
}

TYPED_TEST(WholeTagTest, RandomEndTags) {
    RandomTags random(15);
    EndTags<TypeParam> endTags;
    for (std::size_t round = 0; round < ROUNDS; ++round) {
        const std::string tag = random.Next();
        endTags.Compare(tag);
        ASSERT_FALSE(this->HasFailure()) << testing::PrintToString(tag);
    }
    EXPECT_GT(endTags.GetCounts().read, ROUNDS / 10);
    EXPECT_GT(endTags.GetCounts().withLines, ROUNDS / 100);
}

TYPED_TEST(WholeTagTest, ALimitOfAttributesIsNeverExceeded) {
    RandomTags random(16);
    StartTags<TypeParam> startTags;
    for (std::size_t round = 0; round < ROUNDS / 10; ++round) {
        const std::string tag = random.Next();
        startTags.Compare(tag, random.Below(12));
        ASSERT_FALSE(this->HasFailure()) << testing::PrintToString(tag);
    }
    EXPECT_GT(startTags.GetCounts().withAttributes, ROUNDS / 100);
    EXPECT_GT(startTags.GetCounts().leftByLimit, ROUNDS / 100);
}

/// The shortest tags that have as many attributes as they have room for: a limit of exactly so many
/// lets them pass.
TYPED_TEST(WholeTagTest, ALimitThatIsReached) {
    StartTags<TypeParam> startTags;
    for (const std::string_view tag : {"a b>", "a b c>", "a b c d>", "=a b>"})
        startTags.Compare(tag, 2 * tag.size());
    EXPECT_EQ(startTags.GetCounts().read, 4U);
    for (const std::string_view tag : {"a b>", "a b c>", "=>", "a b c d>"})
        startTags.Compare(tag, 1);
    EXPECT_EQ(startTags.GetCounts().read, 5U);  // "=>" alone
    EXPECT_EQ(startTags.GetCounts().leftByLimit, 3U);
}

/// Attributes of two characters each, the shortest that there are: a limit that is too low never
/// lets them pass.
TYPED_TEST(WholeTagTest, ALimitOfTheShortestAttributes) {
    StartTags<TypeParam> startTags;
    for (std::size_t number = 1; number <= 20; ++number) {
        std::string list;
        for (std::size_t i = 0; i < number; ++i)
            list += " b";
        for (std::size_t most = 0; most <= number + 1; ++most)
            startTags.Compare("a" + list + ">", most);
    }
    EXPECT_EQ(startTags.GetCounts().read, 20U);
}

/// In one piece the recognizer reads the attributes after the eighth as a whole, character by
/// character it cannot.
TYPED_TEST(WholeTagTest, TheRestOfALongListIsReadAsTheRecognizerReadsIt) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using Recognizer = HTML::StartTagSimpleParser<C, S>;
    RandomTags random(17);
    std::size_t complete = 0;
    std::size_t shortTags = 0;
    for (std::size_t round = 0; round < LONG_LISTS; ++round) {
        const std::string tag = random.NextLongTag();
        S input = To<S>(tag);
        AddWideCharacters(&input);
        Cuts everywhere;
        for (std::size_t i = 1; i < input.size(); ++i)
            everywhere.push_back(i);
        const Cuts one = {random.Below(input.size() + 1)};
        const RecognizerOptions<Recognizer> options;
        const auto expected = RunRecognizer<Recognizer>(std::basic_string_view<C>(input), everywhere, options);
        for (const Cuts& cuts : {Cuts(), one}) {
            const auto outcome = RunRecognizer<Recognizer>(std::basic_string_view<C>(input), cuts, options);
            EXPECT_EQ(outcome.result, expected.result);
            EXPECT_EQ(outcome.consumed, expected.consumed);
            EXPECT_EQ(outcome.line, expected.line);
            EXPECT_EQ(outcome.column, expected.column);
            EXPECT_TRUE(IsSame(outcome.data, expected.data))
                << Describe(outcome.data) << " instead of " << Describe(expected.data);
        }
        ASSERT_FALSE(this->HasFailure()) << testing::PrintToString(tag);
        complete += expected.result == HTML::SP_TOKEN_COMPLETE ? 1 : 0;
        shortTags += expected.result == HTML::SP_TOKEN_COMPLETE && expected.data.selfClosing ? 1 : 0;
    }
    EXPECT_GT(complete, LONG_LISTS / 2);
    EXPECT_GT(shortTags, LONG_LISTS / 10);
}

}  // namespace
}  // namespace Kestra::Test
