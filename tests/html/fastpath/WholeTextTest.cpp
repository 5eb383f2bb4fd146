#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>

#include "html/fastpath/WholeText.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

template <typename Flavour>
class WholeTextTest : public testing::Test {};

TYPED_TEST_SUITE(WholeTextTest, Flavours);

TYPED_TEST(WholeTextTest, EndsAtATagOrWithThePiece) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    struct Row {
        const char* note;
        std::string_view input;
        std::string_view characters;
        bool endsAtTag;
        std::uint64_t line;  // after the text and the "<"
        std::uint64_t column;
    };
    const Row ROWS[] = {
        {"the \"<\" is read, and nothing after it", "abc<d", "abc", true, 1, 5},
        {"no text before the \"<\"", "<p>", "", true, 1, 2},
        {"the piece ends first", "abc", "abc", false, 1, 4},
        {"the \"<\" is the last character of the piece", "abc<", "abc", true, 1, 5},
        {"an empty piece", "", "", false, 1, 1},
        {"only \"<\" ends a text", "a>\"'/[=]\0\xFF&<"sv, "a>\"'/[=]\0\xFF&"sv, true, 1, 13},
        {"lines in the text", "a\nb\r\nc<", "a\nb\r\nc", true, 3, 3},
        {"a line feed before the \"<\"", "a\n<", "a\n", true, 2, 2},
        {"a line feed at the end of the piece", "a\n", "a\n", false, 2, 1},
        {"longer than a block", "0123456789\n0123456789012345678901234567890123456789<",
         "0123456789\n0123456789012345678901234567890123456789", true, 2, 42},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.note);
        const S input = To<S>(row.input);
        const HeapPiece<C> piece{std::basic_string_view<C>(input)};
        HTML::SimpleParserContext<C, S> context;
        context.buffer = piece.Data();
        context.length = piece.Size();
        const HTML::WholeText<C> text = HTML::ReadWholeText(&context);
        EXPECT_EQ(text.characters, To<S>(row.characters));
        EXPECT_EQ(text.characters.data(), piece.Data());
        EXPECT_EQ(text.endsAtTag, row.endsAtTag);
        EXPECT_EQ(context.position, row.characters.size() + (row.endsAtTag ? 1 : 0));
        EXPECT_EQ(context.line, row.line);
        EXPECT_EQ(context.column, row.column);
    }
}

}  // namespace
}  // namespace Kestra::Test
