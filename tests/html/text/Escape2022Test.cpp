#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "html/text/Escape2022SimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::Escape2022SimpleParser;
using HTML::Escape2022SimpleParserData;

constexpr std::string_view DESIGNATIONS[] = {"$@",  "$B",  "$(",  "$A",  "$)C", "$)A", "$)G",
                                             "$*H", "$)E", "$+I", "$+J", "$+K", "$+L", "$+M"};
constexpr std::string_view SHADOWED_DESIGNATIONS[] = {"$(C", "$(O", "$(P", "$(Q"};
constexpr std::string_view RETURNS[] = {"(B", "(J", ".F", ".A", "(I"};

template <typename Flavour>
using Parser = Escape2022SimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = Escape2022SimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
class Escape2022Test : public testing::Test {};

TYPED_TEST_SUITE(Escape2022Test, Flavours);

TYPED_TEST(Escape2022Test, Runs) {
    struct Case {
        const char* note;
        std::string_view input;  // after the opening ESC
        std::string_view expected;
    };
    const Case CASES[] = {
        {"a run from designation to return, both ESC characters included", "$Babc\033(Bd",
         "19 text(\\x1B$Babc\\x1B(B) rest(d)"},
        {"an empty run", "$B\033(Jd", "19 text(\\x1B$B\\x1B(J) rest(d)"},
        {"everything inside the run is data", "$B<'\">/*\n\r\\\033(B<",
         "19 text(\\x1B$B<'\">/*\\n\\r\\\\\\x1B(B) rest(<)"},
        {"a NUL inside the run is data", "$Ba\0b\033(B<"sv, "19 text(\\x1B$Ba\\x00b\\x1B(B) rest(<)"},
        {"characters from 128 up inside the run are data", "$B\x80\xFF\033(B<",
         "19 text(\\x1B$B\\x80\\xFF\\x1B(B) rest(<)"},
        {"\"$(\" completes at once: a return may follow directly", "$(\033(Bz", "19 text(\\x1B$(\\x1B(B) rest(z)"},
        {"the character after \"$(\" belongs to the run", "$(C\033(Bz", "19 text(\\x1B$(C\\x1B(B) rest(z)"},
        {"whatever follows \"$(\"", "$(<\033(Bz", "19 text(\\x1B$(<\\x1B(B) rest(z)"},
        {"an escape that designates nothing ends at its first character", "xy", "19 text(\\x1Bx) rest(y)"},
        {"a \"<\" may be that character", "<y", "19 text(\\x1B<) rest(y)"},
        {"a second ESC may be that character", "\033$B", "19 text(\\x1B\\x1B) rest($B)"},
        {"a NUL may be that character", "\0y"sv, "19 text(\\x1B\\x00) rest(y)"},
        {"a return designates nothing", "(By", "19 text(\\x1B() rest(By)"},
        {"\"$\" and a wrong second character", "$xy", "19 text(\\x1B$x) rest(y)"},
        {"\"$\" and a wrong second letter", "$Cy", "19 text(\\x1B$C) rest(y)"},
        {"\"$\" and ESC", "$\033y", "19 text(\\x1B$\\x1B) rest(y)"},
        {"\"$)\" and a wrong third character", "$)By", "19 text(\\x1B$)B) rest(y)"},
        {"\"$*\" and a wrong third character", "$*Iy", "19 text(\\x1B$*I) rest(y)"},
        {"\"$+\" and a letter before the first", "$+Hy", "19 text(\\x1B$+H) rest(y)"},
        {"\"$+\" and a letter after the last", "$+Ny", "19 text(\\x1B$+N) rest(y)"},
        {"letters are compared exactly", "$by", "19 text(\\x1B$b) rest(y)"},
        {"a designation inside a run is data", "$Ba\033$Bb\033(Bc", "19 text(\\x1B$Ba\\x1B$Bb\\x1B(B) rest(c)"},
        {"\"(\" and a wrong character inside a run are data", "$Ba\033(X\033(Bc",
         "19 text(\\x1B$Ba\\x1B(X\\x1B(B) rest(c)"},
        {"\".\" and a wrong character inside a run are data", "$Ba\033.B\033(Bc",
         "19 text(\\x1B$Ba\\x1B.B\\x1B(B) rest(c)"},
        {"ESC after ESC does not begin a return", "$Ba\033\033(Bc", "end 19 text(\\x1B$Ba\\x1B\\x1B(Bc)"},
        {"ESC after \"(\" does not begin a return", "$Ba\033(\033(Bc", "end 19 text(\\x1B$Ba\\x1B(\\x1B(Bc)"},
        {"the run goes on until a return comes", "$Ba\033\033(Bc\033(Bd",
         "19 text(\\x1B$Ba\\x1B\\x1B(Bc\\x1B(B) rest(d)"},
        {"the input ends after the opening ESC", "", "end 19 text(\\x1B)"},
        {"the input ends inside a designation", "$", "end 19 text(\\x1B$)"},
        {"the input ends inside a longer designation", "$)", "end 19 text(\\x1B$))"},
        {"the input ends inside the run", "$Bab", "end 19 text(\\x1B$Bab)"},
        {"the input ends after a designation", "$B", "end 19 text(\\x1B$B)"},
        {"the input ends after a later ESC", "$Bab\033", "end 19 text(\\x1B$Bab\\x1B)"},
        {"the input ends inside a return", "$Bab\033(", "end 19 text(\\x1B$Bab\\x1B()"},
        {"lines are counted", "$B\n\n\033(B\n", "19 text(\\x1B$B\\n\\n\\x1B(B) rest(\\n)"},
    };
    for (const Case& c : CASES)
        CheckRow<Escape2022SimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(Escape2022Test, EveryDesignationAndEveryReturn) {
    for (const std::string_view designation : DESIGNATIONS) {
        for (const std::string_view back : RETURNS) {
            const std::string input = std::string(designation) + "a<\033" + std::string(back) + "b";
            const std::string expected =
                "19 text(\\x1B" + std::string(designation) + "a<\\x1B" + std::string(back) + ") rest(b)";
            CheckRow<Escape2022SimpleParser, TypeParam>(input, input, expected);
        }
    }
}

TYPED_TEST(Escape2022Test, ADesignationCompletesWithItsLastCharacter) {
    using S = typename TypeParam::S;
    for (const std::string_view designation : DESIGNATIONS) {
        SCOPED_TRACE(designation);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        for (std::size_t i = 0; i < designation.size(); ++i) {
            EXPECT_EQ(data.state, 0U);
            EXPECT_EQ(data.pending, To<S>(designation.substr(0, i)));
            EXPECT_TRUE(data.text.empty());
            EXPECT_EQ(ParseOnce(&parser, &data, designation.substr(i, 1)), (CallOutcome{0, 1}));
        }
        EXPECT_EQ(data.state, 1U);
        EXPECT_TRUE(data.pending.empty());
        EXPECT_EQ(data.text, To<S>("\033" + std::string(designation)));
    }
    for (const std::string_view designation : SHADOWED_DESIGNATIONS) {
        SCOPED_TRACE(designation);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, designation.substr(0, 2)), (CallOutcome{0, 2}));
        EXPECT_EQ(data.state, 1U);
        EXPECT_TRUE(data.pending.empty());
        EXPECT_EQ(data.text, To<S>("\033$("));
    }
}

TYPED_TEST(Escape2022Test, AReturnCompletesWithItsLastCharacter) {
    using S = typename TypeParam::S;
    for (const std::string_view back : RETURNS) {
        SCOPED_TRACE(back);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, "$B"), (CallOutcome{0, 2}));
        EXPECT_EQ(ParseOnce(&parser, &data, "\033"), (CallOutcome{0, 1}));
        EXPECT_EQ(data.state, 2U);
        EXPECT_TRUE(data.pending.empty());
        EXPECT_EQ(data.text, To<S>("\033$B"));
        EXPECT_EQ(ParseOnce(&parser, &data, back.substr(0, 1)), (CallOutcome{0, 1}));
        EXPECT_EQ(data.state, 2U);
        EXPECT_EQ(data.pending, To<S>(back.substr(0, 1)));
        EXPECT_EQ(data.text, To<S>("\033$B"));
        EXPECT_EQ(ParseOnce(&parser, &data, back.substr(1)), (CallOutcome{19, 1}));
        EXPECT_TRUE(data.pending.empty());
        EXPECT_EQ(data.text, To<S>("\033$B\033" + std::string(back)));
    }
}

TYPED_TEST(Escape2022Test, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$)"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$)C"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$Ba"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$Ba\033"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$Ba\033("), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$Ba\033x"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$Ba\033\033"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("$Ba\033(C"), 1U);
}

TYPED_TEST(Escape2022Test, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(3);
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    data.state = 3;
    EXPECT_EQ(parser.EndParse(&data), HTML::SP_TOKEN_COMPLETE);
}

TYPED_TEST(Escape2022Test, ASequenceCutOffByTheEndIsKeptUpToItsFirstNul) {
    using S = typename TypeParam::S;
    struct Row {
        std::uint32_t state;
        std::string_view pending;
        std::string_view expected;
    };
    const Row ROWS[] = {
        {0, "$\0B"sv, "t\033$"}, {0, "\0B"sv, "t\033"},  {0, "$+", "t\033$+"},
        {1, "$", "t"},           {2, "(\0"sv, "t\033("}, {2, "", "t\033"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(testing::PrintToString(row.pending) + " in state " + std::to_string(row.state));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = row.state;
        data.text = To<S>("t");
        data.pending = To<S>(row.pending);
        EXPECT_EQ(parser.EndParse(&data), HTML::SP_TOKEN_COMPLETE);
        EXPECT_EQ(data.text, To<S>(row.expected));
    }
}

TEST(Escape2022Test, WideUnitsAreComparedWhole) {
    const WideString designation = {0x0124, 'B'};  // the low byte is "$"
    CheckRecognizer<Parser<Wide>>(designation, "19 text(\\x1B\\u0124) rest(B)");
    const WideString back = {'$', 'B', 0x011B, '(', 'B', 27, '(', 0x0142, 27, 0x0128, 27, '(', 'B', 'x'};
    CheckRecognizer<Parser<Wide>>(back, "19 text(\\x1B$B\\u011B(B\\x1B(\\u0142\\x1B\\u0128\\x1B(B) rest(x)");
}

}  // namespace
}  // namespace Kestra::Test
