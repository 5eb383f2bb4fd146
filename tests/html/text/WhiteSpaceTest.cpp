#include "html/text/WhiteSpaceSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

constexpr RecognizerRow RUNS[] = {
    {"a run ends before the first other character", " \tx", "19 text( \\t) rest(x)"},
    {"a run may be empty", "x ", "19 text() rest(x )"},
    {"all six kinds of white space", " \t\n\v\f\r<", "19 text( \\t\\n\\x0B\\x0C\\r) rest(<)"},
    {"a run at the end of the input is complete", "  ", "end 19 text(  )"},
    {"no input at all is a complete empty run", "", "end 19 text()"},
    {"a NUL is no white space", " \0 "sv, "19 text( ) rest(\\x00 )"},
    {"lines are counted", "\n\r\n \n  x", "19 text(\\n\\r\\n \\n  ) rest(x)"},
    {"the separators 28 to 31 are no white space", "\n\034", "19 text(\\n) rest(\\x1C)"},
};

constexpr RecognizerRow WIDE_RUNS[] = {
    {"only the line feed of wide white space begins a line", "\\u2028\\u0085\\n\\u3000\\u2029x",
     "19 text(\\u2028\\u0085\\n\\u3000\\u2029) rest(x)"},
};

/// All characters that are white space: six bytes, and for wide text one fixed table, in order.
template <typename Flavour>
void CheckWhiteSpace() {
    EXPECT_EQ((FindCharacters<HTML::WhiteSpaceSimpleParser<typename Flavour::C, typename Flavour::S>>(true)),
              WithWideSpaces<Flavour>("\t\n\v\f\r "));
}

const auto SUITE = RecognizerSuite<HTML::WhiteSpaceSimpleParser>("WhiteSpaceTest")
                       .Rows("Runs", RUNS)
                       .WideRows("WideRuns", WIDE_RUNS)
                       .Test("AllWhiteSpace", []<typename Flavour>() { CheckWhiteSpace<Flavour>(); });

}  // namespace
}  // namespace Kestra::Test
