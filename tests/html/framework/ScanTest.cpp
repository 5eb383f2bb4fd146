#include "html/framework/AssignText.h"
#include "html/framework/Scan.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/Flavours.h"

// The scan helpers against the one-character advance that they must agree with.

namespace Kestra::Test {
namespace {

namespace Scan = HTML::Scan;

/// What a run leaves in the context.
template <typename S>
struct Outcome {
    S run;
    std::uint64_t position = 0;
    std::uint64_t line = 0;
    std::uint64_t column = 0;

    bool operator==(const Outcome&) const = default;
};

template <typename C, typename S>
HTML::SimpleParserContext<C, S> MakeContext(const std::vector<C>& piece, std::uint64_t position) {
    return {piece.data(), position, piece.size(), 7, 40};
}

/// Character by character with `MovePointer`, which is the rule.
template <typename C, typename S, typename Stop>
Outcome<S> WalkUntil(const std::vector<C>& piece, std::uint64_t position, Stop isStop) {
    HTML::SimpleParserContext<C, S> context = MakeContext<C, S>(piece, position);
    Outcome<S> outcome;
    while (context.position < context.length && !isStop(context.buffer[context.position])) {
        outcome.run += context.buffer[context.position];
        context.MovePointer(1);
    }
    outcome.position = context.position;
    outcome.line = context.line;
    outcome.column = context.column;
    return outcome;
}

/// Any character of the flavour. Wide ones have often the sign bit, or only the low byte of a
/// character that matters, or are white space.
template <typename C>
C AnyCharacter(std::mt19937& random) {
    if (sizeof(C) == 1)
        return static_cast<C>(random() % 0x100);
    constexpr std::uint16_t SPACES[] = {0x85, 0xA0, 0x1680, 0x2000, 0x200A, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
    switch (random() % 5) {
        case 0:
            return static_cast<C>(random() % 0x100);
        case 1:
            return static_cast<C>(0x8000 + random() % 0x8000);
        case 2:
            return static_cast<C>(static_cast<unsigned char>("<>=[]/'\"\\\r\n\t \x1B-*?"[random() % 17]) +
                                  0x100 * (random() % 0x100));
        case 3:
            return static_cast<C>(SPACES[random() % std::size(SPACES)]);
        default:
            return static_cast<C>(random() % 0x10000);
    }
}

template <typename Flavour>
class ScanTest : public testing::Test {};

TYPED_TEST_SUITE(ScanTest, Flavours);

TYPED_TEST(ScanTest, RunsAgreeWithTheOneCharacterAdvance) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const Scan::Classes masks[] = {
        Scan::LESS_THAN,
        Scan::LINE_FEED,
        Scan::ESCAPE,
        Scan::LESS_THAN | Scan::SLASH | Scan::APOSTROPHE | Scan::QUOTATION_MARK | Scan::ESCAPE,
        Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN,
        Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN | Scan::BRACKET | Scan::LESS_THAN,
        Scan::LESS_THAN | Scan::LINE_FEED | Scan::CARRIAGE_RETURN | Scan::SLASH | Scan::BACKSLASH,
        Scan::HYPHEN,
        Scan::CLOSING_BRACKET,
        Scan::ASTERISK,
        Scan::QUESTION_MARK | Scan::APOSTROPHE | Scan::QUOTATION_MARK | Scan::SLASH | Scan::GREATER_THAN,
        Scan::Classes{0},
    };
    std::mt19937 random(20261);
    for (int round = 0; round < 20000; ++round) {
        // Few, some or only characters that matter, so that runs of every length around that of a
        // block are met.
        const auto rarity = 1 + random() % 12;
        std::vector<C> piece(random() % 40);
        for (C& character : piece)
            character = random() % rarity == 0 ? static_cast<C>("<>=[]/'\"\\\r\n\t \x1B-*?"[random() % 17])
                                               : AnyCharacter<C>(random);
        const std::uint64_t position = random() % (piece.size() + 1);
        const Scan::Classes stops = masks[random() % std::size(masks)];
        SCOPED_TRACE(testing::Message() << "round " << round);

        HTML::SimpleParserContext<C, S> context = MakeContext<C, S>(piece, position);
        const S run(Scan::ConsumeUntil(context, stops));
        const Outcome<S> expected = WalkUntil<C, S>(
            piece, position, [stops](C character) { return (Scan::ClassesOf(character) & stops) != 0; });
        ASSERT_EQ((Outcome<S>{run, context.position, context.line, context.column}), expected);

        context = MakeContext<C, S>(piece, position);
        const S white(Scan::ConsumeWhiteSpace(context));
        const Outcome<S> expectedWhite =
            WalkUntil<C, S>(piece, position, [](C character) { return !IsSpace(character); });
        ASSERT_EQ((Outcome<S>{white, context.position, context.line, context.column}), expectedWhite);
    }
}

/// Checks both ways to find `STOPS` by blocks from every place of a piece.
template <Scan::Classes STOPS, typename C, typename S>
void ExpectBlocksToAgree(const std::vector<C>& piece) {
    const auto isStop = [](C character) { return (Scan::ClassesOf(character) & STOPS) != 0; };
    const C* const end = piece.data() + piece.size();
    for (std::uint64_t position = 0; position <= piece.size(); ++position) {
        const Outcome<S> expected = WalkUntil<C, S>(piece, position, isStop);
        ASSERT_EQ(Scan::Find<STOPS>(piece.data() + position, end), piece.data() + expected.position)
            << "from " << position;
        if constexpr ((STOPS & Scan::WHITE_SPACE) == 0) {
            HTML::SimpleParserContext<C, S> context = MakeContext<C, S>(piece, position);
            const S run(Scan::ConsumeUntil<STOPS>(context));
            ASSERT_EQ((Outcome<S>{run, context.position, context.line, context.column}), expected)
                << "from " << position;
        }
    }
}

TYPED_TEST(ScanTest, BlocksAgreeWithTheOneCharacterAdvance) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    std::mt19937 random(1926);
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        // Many line feeds or few, stops seldom: several blocks are passed, and lines end in them.
        const auto rarity = 1 + random() % 40;
        std::vector<C> piece(random() % 80);
        for (C& character : piece)
            character = random() % rarity == 0 ? static_cast<C>("<>=[]/'\"\\\r\n\n\t \x1B-*?\0"[random() % 19])
                                               : AnyCharacter<C>(random);
        ASSERT_NO_FATAL_FAILURE((ExpectBlocksToAgree<Scan::LESS_THAN, C, S>(piece)));
        ASSERT_NO_FATAL_FAILURE((ExpectBlocksToAgree<Scan::LINE_FEED | Scan::LESS_THAN, C, S>(piece)));
        ASSERT_NO_FATAL_FAILURE((
            ExpectBlocksToAgree<Scan::LESS_THAN | Scan::SLASH | Scan::APOSTROPHE | Scan::QUOTATION_MARK, C, S>(piece)));
        ASSERT_NO_FATAL_FAILURE((
            ExpectBlocksToAgree<Scan::CARRIAGE_RETURN | Scan::BACKSLASH | Scan::HYPHEN | Scan::ASTERISK, C, S>(piece)));
        ASSERT_NO_FATAL_FAILURE(
            (ExpectBlocksToAgree<Scan::ESCAPE | Scan::QUESTION_MARK | Scan::CLOSING_BRACKET, C, S>(piece)));
        ASSERT_NO_FATAL_FAILURE(
            (ExpectBlocksToAgree<Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN, C, S>(piece)));
        ASSERT_NO_FATAL_FAILURE(
            (ExpectBlocksToAgree<
                Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN | Scan::BRACKET | Scan::LESS_THAN, C, S>(
                piece)));
    }
}

TYPED_TEST(ScanTest, WhiteSpaceIsPassedAsByTheOneCharacterAdvance) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    std::mt19937 random(2061);
    std::size_t longRuns = 0;
    for (int round = 0; round < 5000; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        // White space, with a few other characters or none at all.
        const auto rarity = 1 + random() % 60;
        std::vector<C> piece(random() % 80);
        for (C& character : piece) {
            do {
                character = random() % 2 == 0 ? static_cast<C>(" \t\n\r\v\f"[random() % 6]) : AnyCharacter<C>(random);
            } while (!IsSpace(character) && random() % rarity != 0);
        }
        const C* const end = piece.data() + piece.size();
        for (std::uint64_t position = 0; position <= piece.size(); ++position) {
            const Outcome<S> expected =
                WalkUntil<C, S>(piece, position, [](C character) { return !IsSpace(character); });
            HTML::SimpleParserContext<C, S> context = MakeContext<C, S>(piece, position);
            Scan::Lines<C> lines;
            const C* const found = Scan::FindAfterWhiteSpace(piece.data() + position, end, &lines);
            ASSERT_EQ(found, piece.data() + expected.position) << "from " << position;
            lines.Consume(context, found);
            ASSERT_EQ((Outcome<S>{S(piece.begin() + static_cast<std::ptrdiff_t>(position),
                                    piece.begin() + (found - piece.data())),
                                  context.position, context.line, context.column}),
                      expected)
                << "from " << position;
            longRuns += expected.run.size() > 16 ? 1U : 0U;
        }
    }
    EXPECT_GE(longRuns, 1000U);
}

TYPED_TEST(ScanTest, NoWhiteSpaceIsMissedWithoutTheTable) {
    using C = typename TypeParam::C;
    unsigned others = 0;
    for (unsigned code = 0; code <= std::numeric_limits<std::make_unsigned_t<C>>::max(); ++code) {
        const C character = static_cast<C>(code);
        const bool mayBe = Scan::MayBeWhiteSpace(character);
        ASSERT_TRUE(mayBe || !IsSpace(character)) << code;
        others += mayBe ? 0U : 1U;
    }
    EXPECT_GE(others, 95U);  // what tags are made of
}

TYPED_TEST(ScanTest, AStringIsAssignedWhateverItHeld) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    for (std::size_t before = 0; before <= 70; ++before) {
        for (std::size_t length = 0; length <= 70; ++length) {
            std::vector<C> run(length);  // a heap block of its exact size
            for (std::size_t i = 0; i < length; ++i)
                run[i] = static_cast<C>('a' + i % 25);
            const S expected(run.begin(), run.end());
            S text(before, static_cast<C>('z'));
            HTML::AssignText(run.data(), run.data() + length, &text);
            ASSERT_EQ(text, expected) << before << " characters before";
            S space(before, static_cast<C>('z'));
            HTML::AssignSpace(run.data(), run.data() + length, &space);
            ASSERT_EQ(space, expected) << before << " characters before";
        }
    }
}

TYPED_TEST(ScanTest, EveryCharacterHasTheClassesOfItsTable) {
    using C = typename TypeParam::C;
    const std::map<unsigned, Scan::Classes> marked = {
        {'\n', Scan::LINE_FEED},
        {'\r', Scan::CARRIAGE_RETURN},
        {'<', Scan::LESS_THAN},
        {'>', Scan::GREATER_THAN},
        {'=', Scan::EQUALS_SIGN},
        {'[', Scan::BRACKET},
        {'/', Scan::SLASH},
        {'\'', Scan::APOSTROPHE},
        {']', Scan::BRACKET | Scan::CLOSING_BRACKET},
        {'"', Scan::QUOTATION_MARK},
        {27, Scan::ESCAPE},
        {'\\', Scan::BACKSLASH},
        {'-', Scan::HYPHEN},
        {'*', Scan::ASTERISK},
        {'?', Scan::QUESTION_MARK},
    };
    for (unsigned code = 0; code < (sizeof(C) == 1 ? 256U : 65536U); ++code) {
        const C character = static_cast<C>(code);
        const Scan::Classes expected = marked.contains(code) ? marked.at(code) : Scan::Classes{0};
        ASSERT_EQ((Scan::ClassesOf(character) & Scan::WHITE_SPACE) != 0, IsSpace(character)) << code;
        ASSERT_EQ(Scan::ClassesOf(character) & ~Scan::WHITE_SPACE, expected) << code;
    }
}

}  // namespace
}  // namespace Kestra::Test
