#include "html/framework/SimpleParserContext.h"

#include <gtest/gtest.h>

#include <limits>
#include <string_view>

#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

template <typename Flavour>
class SimpleParserContextTest : public testing::Test {
protected:
    using Context = HTML::SimpleParserContext<typename Flavour::C, typename Flavour::S>;

    static Context Over(const HeapPiece<typename Flavour::C>& piece) {
        Context context;
        context.Init();
        context.buffer = piece.Data();
        context.length = piece.Size();
        return context;
    }
};

TYPED_TEST_SUITE(SimpleParserContextTest, Flavours);

TYPED_TEST(SimpleParserContextTest, StartsAtLineOneColumnOne) {
    using C = typename TypeParam::C;
    typename TestFixture::Context context;
    const C character = 'x';
    context.buffer = &character;
    context.position = 1;
    context.length = 1;
    context.line = 7;
    context.column = 9;
    context.Init();
    EXPECT_EQ(context.buffer, nullptr);
    EXPECT_EQ(context.position, 0U);
    EXPECT_EQ(context.length, 0U);
    EXPECT_EQ(context.line, 1U);
    EXPECT_EQ(context.column, 1U);
}

TYPED_TEST(SimpleParserContextTest, MovesOverLinesAndColumns) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    struct Case {
        const char* note;
        std::string_view input;
        std::uint64_t moves;
        std::uint64_t position;
        std::uint64_t line;
        std::uint64_t column;
    };
    const Case CASES[] = {
        {"a move by nothing does nothing", "ab", 0, 0, 1, 1},
        {"a move over nothing does nothing, on a line feed either", "\n", 0, 0, 1, 1},
        {"one character is one column", "ab", 1, 1, 1, 2},
        {"a move to the very end", "ab", 2, 2, 1, 3},
        {"a move by five over two characters stops after them", "ab", 5, 2, 1, 3},
        {"a move over an empty piece stays", "", 3, 0, 1, 1},
        {"a line feed begins a line", "a\nb", 2, 2, 2, 1},
        {"carriage return, line feed, a: one line more, column 2", "\r\na", 3, 3, 2, 2},
        {"a carriage return is one column", "a\rb", 3, 3, 1, 4},
        {"a tab is one column", "\t\tb", 2, 2, 1, 3},
        {"every line feed counts", "\n\n\n", 3, 3, 4, 1},
        {"a form feed and a vertical tab are columns", "\f\v", 2, 2, 1, 3},
        {"a character from 128 up is one column", "\x85\xA0\xFF", 3, 3, 1, 4},
        {"a NUL is one column", "\0\n\0"sv, 3, 3, 2, 2},
    };
    for (const Case& c : CASES) {
        SCOPED_TRACE(c.note);
        const S input = To<S>(c.input);
        const HeapPiece<C> piece{std::basic_string_view<C>(input)};
        auto context = TestFixture::Over(piece);
        context.MovePointer(c.moves);
        EXPECT_EQ(context.position, c.position);
        EXPECT_EQ(context.line, c.line);
        EXPECT_EQ(context.column, c.column);
    }
}

TYPED_TEST(SimpleParserContextTest, AMoveAfterTheEndChangesNothing) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const S input = To<S>("a\n");
    const HeapPiece<C> piece{std::basic_string_view<C>(input)};
    auto context = TestFixture::Over(piece);
    context.MovePointer(std::numeric_limits<std::uint64_t>::max());
    context.MovePointer(1);
    context.MovePointer(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(context.buffer, piece.Data());
    EXPECT_EQ(context.position, 2U);
    EXPECT_EQ(context.length, 2U);
    EXPECT_EQ(context.line, 2U);
    EXPECT_EQ(context.column, 1U);
}

TYPED_TEST(SimpleParserContextTest, LineAndColumnRunOnIntoTheNextPiece) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const S first = To<S>("ab\nc");
    const S second = To<S>("de\n");
    typename TestFixture::Context context;
    context.Init();
    {
        const HeapPiece<C> piece{std::basic_string_view<C>(first)};
        context.buffer = piece.Data();
        context.length = piece.Size();
        context.MovePointer(4);
    }
    const HeapPiece<C> piece{std::basic_string_view<C>(second)};
    context.buffer = piece.Data();
    context.position = 0;
    context.length = piece.Size();
    context.MovePointer(2);
    EXPECT_EQ(context.line, 2U);
    EXPECT_EQ(context.column, 4U);
    context.MovePointer(1);
    EXPECT_EQ(context.line, 3U);
    EXPECT_EQ(context.column, 1U);
}

TYPED_TEST(SimpleParserContextTest, ACopyStandsAtTheSamePlaceAndMovesAlone) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const S input = To<S>("a\nbc");
    const HeapPiece<C> piece{std::basic_string_view<C>(input)};
    auto context = TestFixture::Over(piece);
    context.MovePointer(3);
    const auto copy = context;
    typename TestFixture::Context assigned;
    assigned = context;
    context.MovePointer(1);
    for (const auto* other : {&copy, static_cast<const typename TestFixture::Context*>(&assigned)}) {
        EXPECT_EQ(other->buffer, piece.Data());
        EXPECT_EQ(other->position, 3U);
        EXPECT_EQ(other->length, 4U);
        EXPECT_EQ(other->line, 2U);
        EXPECT_EQ(other->column, 2U);
    }
    EXPECT_EQ(context.position, 4U);
}

TEST(SimpleParserContextTest, OnlyTheUnitTenIsALineFeedOfTheWideFlavour) {
    // Units whose low or high byte is 10, and the line separators of Unicode.
    const WideString input = {0x0A0A, 0x0A00, 0x010A, 0x2028, 0x2029, 0x0085, 0x000A, 'x'};
    const HeapPiece<WideChar> piece{WideStringView(input)};
    HTML::SimpleParserContext<WideChar, WideString> context;
    context.buffer = piece.Data();
    context.length = piece.Size();
    context.MovePointer(6);
    EXPECT_EQ(context.line, 1U);
    EXPECT_EQ(context.column, 7U);
    context.MovePointer(2);
    EXPECT_EQ(context.line, 2U);
    EXPECT_EQ(context.column, 2U);
}

}  // namespace
}  // namespace Kestra::Test
