#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/Layout.h"
#include "tests/support/RecognizerSuite.h"

/// @file
/// The means of the tests are tested here: a check that cannot fail would hide every defect.

namespace Kestra::Test {
namespace {

std::vector<Cuts> SplitsOf(std::size_t length) {
    std::vector<Cuts> splits;
    ForEverySplit(length, [&](const Cuts& cuts) { splits.push_back(cuts); });
    return splits;
}

TEST(TestSupportTest, EverySplitIsTried) {
    EXPECT_EQ(SplitsOf(0), std::vector<Cuts>({{}}));
    EXPECT_EQ(SplitsOf(1), std::vector<Cuts>({{}}));
    EXPECT_EQ(SplitsOf(2), std::vector<Cuts>({{}, {1}}));
    EXPECT_EQ(SplitsOf(3), std::vector<Cuts>({{}, {1}, {2}, {1, 2}}));
    EXPECT_EQ(SplitsOf(4), std::vector<Cuts>({{}, {1}, {2}, {3}, {1, 2}, {1, 3}, {2, 3}, {1, 2, 3}}));
    EXPECT_EQ(SplitsOf(64).size(), 1U + 63U + 63U * 62U / 2 + 1U);
    const std::vector<Cuts> longSplits = SplitsOf(65);
    EXPECT_EQ(longSplits.size(), 1U + 64U + 1U);
    EXPECT_EQ(longSplits.back().size(), 64U);
}

TEST(TestSupportTest, PiecesCoverTheInput) {
    using Pieces = std::vector<std::pair<std::size_t, std::size_t>>;
    EXPECT_EQ(PiecesOf({}, 0), Pieces({{0, 0}}));
    EXPECT_EQ(PiecesOf({}, 3), Pieces({{0, 3}}));
    EXPECT_EQ(PiecesOf({1, 2}, 3), Pieces({{0, 1}, {1, 2}, {2, 3}}));
    EXPECT_EQ(PiecesOf({2, 2}, 3), Pieces({{0, 2}, {2, 2}, {2, 3}}));
    EXPECT_EQ(CutsEvery(2, 5), Cuts({2, 4}));
    EXPECT_EQ(CutsEvery(2, 4), Cuts({2}));
    EXPECT_EQ(Scaled({1, 3}, 2), Cuts({2, 6}));
}

TEST(TestSupportTest, StringsOfFlavours) {
    EXPECT_EQ(To<std::string>("a\xE9"), "a\xE9");
    EXPECT_EQ(To<WideString>("a\xE9"), (WideString{'a', 0x00E9}));
    EXPECT_EQ(ToUtf16LE(WideString{0x0061, 0x3042}), std::string("a\0\x42\x30", 4));
    EXPECT_EQ(ToUtf16LE("a\xE9"), std::string("a\0\xE9\0", 4));
}

TEST(TestSupportTest, PlacesAreCounted) {
    EXPECT_EQ(PlaceAfter(std::string_view("a\n\r\nbc"), 0), (Place{1, 1}));
    EXPECT_EQ(PlaceAfter(std::string_view("a\n\r\nbc"), 1), (Place{1, 2}));
    EXPECT_EQ(PlaceAfter(std::string_view("a\n\r\nbc"), 2), (Place{2, 1}));
    EXPECT_EQ(PlaceAfter(std::string_view("a\n\r\nbc"), 3), (Place{2, 2}));
    EXPECT_EQ(PlaceAfter(std::string_view("a\n\r\nbc"), 6), (Place{3, 3}));
}

TEST(TestSupportTest, ExpectedLinesWithAndWithoutARecord) {
    EXPECT_TRUE(HasRecord("19 text(a)"));
    EXPECT_TRUE(HasRecord("19 text() rest(b)"));
    EXPECT_TRUE(HasRecord("end 16 {|}"));
    EXPECT_FALSE(HasRecord("11 rest(x)"));
    EXPECT_FALSE(HasRecord("11 rest({x)"));
    EXPECT_FALSE(HasRecord("end 16"));
    EXPECT_EQ(ToWideEscapes("a\\x1B\\xE9\\x80\\\\x9"), "a\\x1B\\u00E9\\u0080\\\\x9");
}

/// State of a recognizer that ends before "." and has one fault.
struct FaultyData : HTML::SimpleParserData<char, std::string> {
    std::string text;
    std::uint32_t answers = 0;
};

enum class Fault {
    NONE,
    FORGETS_ITS_TEXT,
    DOES_NOT_COUNT,
    READS_AFTER_A_STOP,
    STANDS_STILL,
    FORGETS_TO_BEGIN,
    REFUSES_EMPTY_PIECES
};

template <typename C, typename S>
class FaultySimpleParser {
public:
    using Data = FaultyData;

    std::uint32_t BeginParse(Data* data) {
        if (fault != Fault::FORGETS_TO_BEGIN)
            data->text.clear();
        return HTML::SP_NEED_MORE_DATA;
    }

    std::uint32_t Parse(HTML::SimpleParserContext<C, S>* context, Data* data) {
        if (fault == Fault::STANDS_STILL)
            return HTML::SP_NEED_MORE_DATA;
        if (fault == Fault::REFUSES_EMPTY_PIECES && context->length == 0)
            return HTML::SP_MALFORMED;
        if (fault == Fault::FORGETS_ITS_TEXT)
            data->text.clear();
        while (context->position < context->length) {
            const C character = context->buffer[context->position];
            if (character == '.' && fault == Fault::READS_AFTER_A_STOP)
                context->MovePointer(1);
            if (character == '.')
                return HTML::SP_TOKEN_COMPLETE;
            data->text.push_back(character);
            if (fault == Fault::DOES_NOT_COUNT)
                ++context->position;
            else
                context->MovePointer(1);
        }
        return HTML::SP_NEED_MORE_DATA;
    }

    std::uint32_t EndParse(Data*) {
        return HTML::SP_TOKEN_COMPLETE;
    }

    static inline Fault fault = Fault::NONE;
};

std::string Dump(const FaultyData& data) {
    return "text(" + data.text + ")";
}

using Faulty = FaultySimpleParser<char, std::string>;

void CheckFaulty() {
    CheckRecognizer<Faulty>("ab\nc.d", "19 text(ab\nc) rest(.d)");
}

TEST(TestSupportTest, ARecognizerWithoutFaultsPasses) {
    Faulty::fault = Fault::NONE;
    CheckFaulty();
}

/// Failures that a check reports.
template <typename Check>
int CountFailures(Check check) {
    testing::TestPartResultArray failures;
    {
        testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        check();
    }
    return failures.size();
}

int CountFaults(Fault fault) {
    Faulty::fault = fault;
    const int failures = CountFailures(CheckFaulty);
    Faulty::fault = Fault::NONE;
    return failures;
}

TEST(TestSupportTest, EachFaultIsFound) {
    EXPECT_EQ(CountFaults(Fault::NONE), 0);
    EXPECT_GT(CountFaults(Fault::FORGETS_ITS_TEXT), 0);
    EXPECT_GT(CountFaults(Fault::DOES_NOT_COUNT), 0);
    EXPECT_GT(CountFaults(Fault::READS_AFTER_A_STOP), 0);
    EXPECT_GT(CountFaults(Fault::STANDS_STILL), 0);
    EXPECT_GT(CountFaults(Fault::FORGETS_TO_BEGIN), 0);
    EXPECT_GT(CountFaults(Fault::REFUSES_EMPTY_PIECES), 0);
}

struct Fields {
    std::uint32_t first = 0;
    bool second = false;
    std::uint64_t third = 0;
};

TEST(TestSupportTest, FieldsOutOfOrderAreFound) {
    const Fields fields;
    FieldWalk<Fields>(fields, 0)
        .Next("first", fields.first)
        .Next("second", fields.second)
        .Next("third", fields.third)
        .Last();
    EXPECT_EQ(CountFailures([&fields] { FieldWalk<Fields>(fields, 0).Next("second", fields.second); }), 1);
    EXPECT_EQ(CountFailures([&fields] {
                  FieldWalk<Fields>(fields, 0).Next("first", fields.first).Next("second", fields.second).Last();
              }),
              1);
}

using BlockComment = HTML::CCommentSimpleParser<char, std::string>;

TEST(TestSupportTest, WrongCallsAreFound) {
    constexpr RecognizerCall RIGHT[] = {
        {NEW_RECORD, "text=b", "a*", {0, 2}, "text(ba)", "state=2"},
        {CONTINUED, "", "/", {19, 1}, "text(ba)"},
        {BEGUN_AGAIN, "", "*/", {19, 2}, "text()"},
        {AT_END, "state=2", "", {16, 0}, "text()"},
    };
    constexpr RecognizerCall WRONG[] = {
        {NEW_RECORD, "", "a*/", {19, 2}, "text(a)"},           {NEW_RECORD, "", "a*/", {16, 3}, "text(a)"},
        {NEW_RECORD, "", "a*/", {19, 3}, "text(b)"},           {NEW_RECORD, "", "a*", {0, 2}, "text(a)", "state=1"},
        {NEW_RECORD, "", "a*", {0, 2}, "text(a)", "status=2"}, {NEW_RECORD, "status=2", "a*", {0, 2}, "text(a)"},
        {NEW_RECORD, "-z", "a*", {0, 2}, "text(a)"},           {AT_END, "", "", {19, 0}, "text()"},
    };
    CheckCalls<BlockComment>(RIGHT);
    for (const RecognizerCall& call : WRONG)
        EXPECT_EQ(CountFailures([&call] { CheckCalls<BlockComment>({&call, 1}); }), 1) << &call - WRONG;
}

TEST(TestSupportTest, WrongLongRowsAreFound) {
    CheckLongRow<BlockComment>({"@*/", "x", "19 text(@)"});
    for (const char* expected : {"19 text(@x)", "19 text()", "19 text(@) rest(*)", "16 text(@)"})
        EXPECT_EQ(CountFailures([expected] { CheckLongRow<BlockComment>({"@*/", "x", expected}); }), 1) << expected;
    // A string is a call of its own here.
    using FreeStyle = HTML::ExternTagFreeStyleSimpleParser<char, std::string>;
    CheckLongRow<FreeStyle>({"'@'>", "x", "19 text('@'>)", false});
}

struct Slots {
    virtual void First() {}
    virtual void Second() {}
};

TEST(TestSupportTest, SlotsAreCounted) {
    EXPECT_EQ(SlotOf(&Slots::First), 0U);
    EXPECT_EQ(SlotOf(&Slots::Second), 1U);
}

}  // namespace
}  // namespace Kestra::Test
