#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolNames = ToolTest;

/// A name that would clear the terminal, in three ways, and turn the rest of the line around; and
/// how it is shown.
const std::string NAME =
    "a\x1B[2J\xC2\x9B"
    "2J\xE2\x80\xAElmth\x9B.html";
const std::string SHOWN = "a\\x1B[2J\\u009B2J\\u202Elmth\\x9B.html";

bool IsRaw(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return (byte < 0x20 && byte != '\n' && byte != '\r') || byte >= 0x7F;
}

/// The bytes of an output that no terminal must see. A progress line begins with a carriage return.
std::string FindRawBytes(const std::string& output) {
    std::string raw;
    for (const char character : output) {
        if (IsRaw(character))
            raw.push_back(character);
    }
    return raw;
}

/// The part is in the output; an empty one means that there is no output.
testing::AssertionResult HasPart(const std::string& output, const std::string& part) {
    if (!part.empty())
        return Contains(output, part);
    return (output.empty() ? testing::AssertionSuccess() : testing::AssertionFailure()) << "none expected:\n" << output;
}

TEST_F(ToolNames, NothingRawReachesTheTerminal) {
    const struct {
        Arguments arguments;
        std::string output;  ///< a part of it; empty: there is none
        std::string errors;  ///< a part of them; empty: there are none
    } CASES[] = {
        {{"tokens", NAME, NAME}, "==> " + SHOWN + " <==\n", ""},
        {{"tokens", "--feed", "buffer", "--charset", "1252", NAME},
         "result   parsing returned 11: ",
         SHOWN + ": parsing returned 11"},
        {{"events", NAME, NAME}, "==> " + SHOWN + " <==\n", SHOWN + ": parsing returned"},
        {{"check", NAME}, SHOWN + ": ok, ", ""},
        {{"check", "--recursive", "."}, SHOWN + ": ok, ", ""},
        {{"check", "--feed", "buffer", "--charset", "1252", NAME}, SHOWN + ": 11, ", SHOWN + ": parsing returned 11"},
        {{"detect", NAME}, SHOWN + ": 20127 (US-ASCII)", ""},
        {{"detect", "dark" + NAME}, "dark" + SHOWN + ": unknown", "dark" + SHOWN + ": DetectCharset returned"},
        {{"rewrite", "--dry-run", "--set", "a.x=" + std::string(NAME.substr(0, 5)), "good" + NAME},
         "good" + SHOWN + ":1:1: (none) -> a\\x1B[2J\n",
         ""},
        {{"rewrite", NAME + "x"}, "", SHOWN + "x: cannot be read: no such file\n"},
        {{"tokens", NAME + "x"}, "", SHOWN + "x: cannot be read: no such file\n"},
        {{"events", NAME + "x"}, "", SHOWN + "x: cannot be read: no such file\n"},
        {{"check", NAME + "x"}, "0 files, 0 bytes, ", SHOWN + "x: cannot be read: no such file\n"},
        {{"detect", NAME + "x"}, "", SHOWN + "x: cannot be read: no such file\n"},
    };
    Write(NAME, "a<b / >");
    Write("good" + NAME, "<a>");
    Write("dark" + NAME, "<!--" + std::string(300, '\x80') + "-->");
    for (const auto& row : CASES) {
        settings.errors = Sink::CAPTURED;
        const ToolRun run = RunTool(row.arguments, settings);
        EXPECT_TRUE(HasPart(run.output, row.output)) << testing::PrintToString(row.arguments);
        EXPECT_TRUE(HasPart(run.errors, row.errors)) << testing::PrintToString(row.arguments);
        EXPECT_EQ(FindRawBytes(run.output), "") << testing::PrintToString(row.arguments);
        EXPECT_EQ(FindRawBytes(run.errors), "") << testing::PrintToString(row.arguments);
        settings.errors = Sink::TERMINAL;
        EXPECT_EQ(FindRawBytes(RunTool(row.arguments, settings).errors), "") << testing::PrintToString(row.arguments);
    }
}

}  // namespace
}  // namespace Kestra::Test
