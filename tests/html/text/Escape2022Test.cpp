#include "html/text/Escape2022SimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the opening ESC.

constexpr std::string_view DESIGNATIONS[] = {"$@",  "$B",  "$(",  "$A",  "$)C", "$)A", "$)G",
                                             "$*H", "$)E", "$+I", "$+J", "$+K", "$+L", "$+M"};
constexpr std::string_view SHADOWED_DESIGNATIONS[] = {"$(C", "$(O", "$(P", "$(Q"};
constexpr std::string_view RETURNS[] = {"(B", "(J", ".F", ".A", "(I"};

constexpr RecognizerRow RUNS[] = {
    {"a run from designation to return, both ESC characters included", "$Babc\033(Bd",
     "19 text(\\x1B$Babc\\x1B(B) rest(d)"},
    {"an empty run", "$B\033(Jd", "19 text(\\x1B$B\\x1B(J) rest(d)"},
    {"everything inside the run is data", "$B<'\">/*\n\r\\\033(B<", "19 text(\\x1B$B<'\">/*\\n\\r\\\\\\x1B(B) rest(<)"},
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
    {"the run goes on until a return comes", "$Ba\033\033(Bc\033(Bd", "19 text(\\x1B$Ba\\x1B\\x1B(Bc\\x1B(B) rest(d)"},
    {"the input ends after the opening ESC", "", "end 19 text(\\x1B)"},
    {"the input ends inside a designation", "$", "end 19 text(\\x1B$)"},
    {"the input ends inside a longer designation", "$)", "end 19 text(\\x1B$))"},
    {"the input ends inside the run", "$Bab", "end 19 text(\\x1B$Bab)"},
    {"the input ends after a designation", "$B", "end 19 text(\\x1B$B)"},
    {"the input ends after a later ESC", "$Bab\033", "end 19 text(\\x1B$Bab\\x1B)"},
    {"the input ends inside a return", "$Bab\033(", "end 19 text(\\x1B$Bab\\x1B()"},
    {"lines are counted", "$B\n\n\033(B\n", "19 text(\\x1B$B\\n\\n\\x1B(B) rest(\\n)"},
};

constexpr StateRow STATES[] = {{"", 0},        {"$", 0},        {"$)", 0},       {"$)C", 1},         {"$Ba", 1},
                               {"$Ba\033", 2}, {"$Ba\033(", 2}, {"$Ba\033x", 1}, {"$Ba\033\033", 1}, {"$Ba\033(C", 1}};

/// A sequence that is cut off by the end is kept up to its first NUL.
constexpr RecognizerCall ENDS[] = {
    {AT_END, "state=0 text=t pending=$\\x00B", "", {19, 0}, "text(t\\x1B$)"},
    {AT_END, "state=0 text=t pending=\\x00B", "", {19, 0}, "text(t\\x1B)"},
    {AT_END, "state=0 text=t pending=$+", "", {19, 0}, "text(t\\x1B$+)"},
    {AT_END, "state=1 text=t pending=$", "", {19, 0}, "text(t)"},
    {AT_END, "state=2 text=t pending=(\\x00", "", {19, 0}, "text(t\\x1B()"},
    {AT_END, "state=2 text=t pending=", "", {19, 0}, "text(t\\x1B)"},
    {AT_END, "state=3", "", {19, 0}, "text()"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low byte of the first is \"$\"", "\\u0124B", "19 text(\\x1B\\u0124) rest(B)"},
    {"the low bytes are those of ESC, \"B\" and \"(\"", "$B\\u011B(B\\x1B(\\u0142\\x1B\\u0128\\x1B(Bx",
     "19 text(\\x1B$B\\u011B(B\\x1B(\\u0142\\x1B\\u0128\\x1B(B) rest(x)"},
};

template <typename Flavour>
void CheckEveryDesignationAndEveryReturn() {
    for (const std::string_view designation : DESIGNATIONS) {
        for (const std::string_view back : RETURNS) {
            const std::string begin = std::string(designation) + "a<";
            const std::string input = begin + "\033" + std::string(back) + "b";
            CheckRow<HTML::Escape2022SimpleParser, Flavour>(
                input, input, "19 text(\\x1B" + begin + "\\x1B" + std::string(back) + ") rest(b)");
        }
    }
}

/// Gives the characters of a sequence in single calls: until the last one they are pending.
template <typename Parser>
void CheckSequence(std::string_view sequence, std::uint32_t state, std::string_view text, const CallOutcome& outcome,
                   std::uint32_t stateAfter, Parser* parser, typename Parser::Data* data) {
    using S = typename RecognizerFlavour<Parser>::S;
    SCOPED_TRACE(sequence);
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        EXPECT_EQ(data->state, state);
        EXPECT_EQ(data->pending, To<S>(sequence.substr(0, i)));
        EXPECT_EQ(data->text, To<S>(text));
        EXPECT_EQ(ParseOnce(parser, data, sequence.substr(i, 1)),
                  i + 1 < sequence.size() ? (CallOutcome{0, 1}) : outcome);
    }
    EXPECT_EQ(data->state, stateAfter);
    EXPECT_TRUE(data->pending.empty());
    EXPECT_EQ(data->text, To<S>(std::string(text) + "\033" + std::string(sequence)));
}

template <typename Flavour>
void CheckThatSequencesComplete() {
    using Parser = HTML::Escape2022SimpleParser<typename Flavour::C, typename Flavour::S>;
    Parser parser;
    typename Parser::Data data;
    for (const std::string_view designation : DESIGNATIONS) {
        parser.BeginParse(&data);
        CheckSequence(designation, 0, "", {0, 1}, 1, &parser, &data);
    }
    for (const std::string_view designation : SHADOWED_DESIGNATIONS) {
        parser.BeginParse(&data);
        CheckSequence(designation.substr(0, 2), 0, "", {0, 1}, 1, &parser, &data);
    }
    for (const std::string_view back : RETURNS) {
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, "$B"), (CallOutcome{0, 2}));
        EXPECT_EQ(ParseOnce(&parser, &data, "\033"), (CallOutcome{0, 1}));
        CheckSequence(back, 2, "\033$B", {19, 1}, 2, &parser, &data);
    }
}

const auto SUITE =
    RecognizerSuite<HTML::Escape2022SimpleParser>("Escape2022Test")
        .Rows("Runs", RUNS)
        .States(STATES)
        .Calls("ASequenceCutOffByTheEndIsKeptUpToItsFirstNul", ENDS)
        .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS)
        .Test("EveryDesignationAndEveryReturn", []<typename F>() { CheckEveryDesignationAndEveryReturn<F>(); })
        .Test("ASequenceCompletesWithItsLastCharacter", []<typename F>() { CheckThatSequencesComplete<F>(); });

}  // namespace
}  // namespace Kestra::Test
