#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolDetect = ToolTest;

const std::string UTF8 =
    Repeat("<p>\xD0\x94\xD0\xBE\xD0\xB1\xD1\x80\xD1\x8B\xD0\xB9 \xD0\xB4\xD0\xB5\xD0\xBD\xD1\x8C</p>\n", 20);
const std::string ASCII = Repeat("<p>plain</p>\n", 30);
constexpr const char* NOT_CONFIDENT = "the charset detector is not confident enough";

/// A few letters of Latin-1, and a text that could be many things.
const std::string UNSURE = Repeat("caf\xE9 ", 100);

ToolRun Detect(std::string_view input, Arguments arguments = {}) {
    arguments.insert(arguments.begin(), "detect");
    return RunToolOn(input, arguments);
}

TEST_F(ToolDetect, JsonOfAnAnswer) {
    EXPECT_EQ(Detect(UTF8, {"--format", "json"}),
              (ToolRun{0,
                       R"({"file":"-","result":0,"code":65001,"name":"UTF-8","source":"detector","confidence":100})"
                       "\n",
                       ""}));
}

TEST_F(ToolDetect, TextOfAnAnswer) {
    EXPECT_EQ(Detect(UTF8), (ToolRun{0, "-: 65001 (UTF-8), confidence 100, 0, the detector\n", ""}));
}

TEST_F(ToolDetect, AsciiIsAnAnswerThoughTheDetectorHasNone) {
    EXPECT_EQ(Detect(ASCII), (ToolRun{0, "-: 20127 (US-ASCII), confidence 100, 11, plain ASCII\n", ""}));
    EXPECT_EQ(Detect(ASCII, {"--format", "json"}).output,
              R"({"file":"-","result":11,"code":20127,"name":"US-ASCII","source":"ascii","confidence":100})"
              "\n");
    // Neither of the two is the sign of plain text.
    for (const char letter : {'\0', '\x1B'}) {
        const ToolRun run = Detect(ASCII + letter, {"--format", "json"});
        EXPECT_FALSE(Contains(run.output, "ascii")) << run.output;
    }
}

TEST_F(ToolDetect, NoAnswerAtAll) {
    const ToolRun blank = Detect("<!--" + std::string(300, '\x80') + "-->", {"--min-confidence", "0"});
    EXPECT_EQ(blank, (ToolRun{1, std::string("-: unknown, no confidence, 708, ") + NOT_CONFIDENT + "\n",
                              std::string("-: DetectCharset returned 708: ") + NOT_CONFIDENT + "\n"}));
    EXPECT_EQ(Detect("<!--" + std::string(300, '\x80') + "-->", {"--format", "json"}).output,
              R"({"file":"-","result":708,"code":0,"name":"","source":"none","confidence":0})"
              "\n");
}

TEST_F(ToolDetect, TheConfidenceIsTheGreatestMinimumThatIsMet) {
    // The line without a minimum tells it; the detector answers with that minimum, and with one
    // more it does not.
    const ToolRun unsure = Detect(UNSURE, {"--min-confidence", "0"});
    ASSERT_EQ(unsure.status, 0) << unsure.output;
    static constexpr std::string_view WORD = "confidence ";
    const std::size_t at = unsure.output.find(WORD);
    ASSERT_NE(at, std::string::npos) << unsure.output;
    const int confidence = std::stoi(unsure.output.substr(at + WORD.size()));
    EXPECT_GT(confidence, 0);
    EXPECT_LT(confidence, 100);
    EXPECT_EQ(Detect(UNSURE, {"--min-confidence", std::to_string(confidence)}).output, unsure.output);
    const ToolRun tooMuch = Detect(UNSURE, {"--min-confidence", std::to_string(confidence + 1)});
    EXPECT_EQ(tooMuch.status, 1);
    EXPECT_EQ(tooMuch.output,
              "-: unknown, confidence " + std::to_string(confidence) + ", 708, " + NOT_CONFIDENT + "\n");
    EXPECT_TRUE(Contains(Detect(UNSURE, {"--min-confidence", "0", "--format", "json"}).output,
                         "\"source\":\"detector\",\"confidence\":" + std::to_string(confidence) + "}"));
}

TEST_F(ToolDetect, ShortInputs) {
    const std::string utf8 = UTF8.substr(0, 29);
    EXPECT_EQ(Detect(utf8, {"--format", "json"}),
              (ToolRun{0,
                       R"({"file":"-","result":707,"code":65001,"name":"UTF-8","source":"detector","confidence":100})"
                       "\n",
                       ""}));
    EXPECT_EQ(Detect(utf8).output, "-: 65001 (UTF-8), confidence 100, 707, the detector\n");
    EXPECT_TRUE(Contains(Detect(UTF8.substr(0, 255)).output, ", 707, "));
    EXPECT_TRUE(Contains(Detect(UTF8.substr(0, 256)).output, ", 0, "));
    // Of words of two and three letters nobody is sure, and blanks around them add nothing.
    for (const char* const word : {"\xC4\xC1", "k\xF9\xF2", "\xED\xE5\xF2", "caf\xE9"}) {
        EXPECT_TRUE(Contains(Detect(word).output, "no confidence, 707, assumed")) << word;
        EXPECT_FALSE(Contains(Detect(word + std::string(252, ' ')).output, "the detector")) << word;
    }
    // One letter beyond ASCII is no evidence.
    EXPECT_EQ(Detect("caf\xE9", {"--min-confidence", "100"}),
              (ToolRun{0,
                       "-: 1252 (windows-1252), no confidence, 707, assumed: too little data to detect the charset: "
                       "4 of at least 256 bytes\n",
                       ""}));
    EXPECT_EQ(Detect("caf\xE9", {"--min-confidence", "100", "--format", "json"}).output,
              R"({"file":"-","result":707,"code":1252,"name":"windows-1252","source":"assumed","confidence":0})"
              "\n");
    // A letter that is cut at the end of the input is none of UTF-8.
    EXPECT_FALSE(Contains(Detect("caf\xC3").output, "65001"));
}

TEST_F(ToolDetect, WhatComesAfterALongBeginningCounts) {
    const std::string script = "<script>" + Repeat("call(1);\n", 3000) + "</script>\n";
    ASSERT_GT(script.size(), 20000U);
    EXPECT_EQ(Detect(script + UTF8).output, Detect(UTF8).output);
    // As much as the library itself looks at is ASCII alone.
    EXPECT_EQ(Detect(script + UTF8, {"--bytes", "16384"}).output, Detect(script).output);
    EXPECT_TRUE(Contains(Detect(script).output, "plain ASCII"));
}

TEST_F(ToolDetect, Files) {
    Write("utf8", UTF8 + std::string(100000, 'x'));
    Write("ascii", ASCII);
    Write("unsure", UNSURE);
    settings.input = UTF8;
    const ToolRun run =
        RunTool({"detect", "--format", "json", "--min-confidence", "100", "utf8", "none", ".", "unsure", "-", "ascii"},
                settings);
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.errors,
              "none: cannot be read: no such file\n"
              ".: cannot be read: it is a folder, use --recursive\n"
              "unsure: DetectCharset returned 708: "s +
                  NOT_CONFIDENT + "\n");
    EXPECT_TRUE(run.output.starts_with(R"({"file":"utf8","result":0,"code":65001,)")) << run.output;
    EXPECT_TRUE(Contains(run.output, R"({"file":"unsure","result":708,"code":0,"name":"","source":"none",)"));
    EXPECT_TRUE(Contains(run.output, R"({"file":"-","result":0,"code":65001,)"));
    EXPECT_TRUE(Contains(run.output, R"({"file":"ascii","result":11,"code":20127,)"));
    EXPECT_EQ(RunTool({"detect", "--min-confidence", "100", "unsure", "ascii"}, settings).status, 1);
}

}  // namespace
}  // namespace Kestra::Test
