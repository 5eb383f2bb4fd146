#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolDetect = ToolTest;

const std::string UTF8 =
    Repeat("<p>\xD0\x94\xD0\xBE\xD0\xB1\xD1\x80\xD1\x8B\xD0\xB9 \xD0\xB4\xD0\xB5\xD0\xBD\xD1\x8C</p>\n", 20);
const std::string ASCII = Repeat("<p>plain</p>\n", 30);
constexpr const char* NO_ANSWER = "the charset detector has no usable answer, as for plain ASCII, or cannot be started";
constexpr const char* NOT_CONFIDENT = "the charset detector is not confident enough";

/// A few letters of Latin-1, and a text that could be many things.
const std::string UNSURE = Repeat("caf\xE9 ", 100);

ToolRun Detect(std::string_view input, Arguments arguments = {}) {
    arguments.insert(arguments.begin(), "detect");
    return RunToolOn(input, arguments);
}

TEST_F(ToolDetect, JsonOfAnAnswer) {
    EXPECT_EQ(Detect(UTF8, {"--format", "json"}),
              (ToolRun{0, "{\"file\":\"-\",\"result\":0,\"code\":65001,\"name\":\"UTF-8\"}\n", ""}));
}

TEST_F(ToolDetect, TextOfAnAnswer) {
    EXPECT_EQ(Detect(UTF8), (ToolRun{0, "-: 65001 (UTF-8), confidence 100, 0, success\n", ""}));
}

TEST_F(ToolDetect, AnAnswerOfNoUse) {
    EXPECT_EQ(Detect(ASCII), (ToolRun{1, std::string("-: unknown, confidence 100, 11, ") + NO_ANSWER + "\n",
                                      std::string("-: DetectCharset returned 11: ") + NO_ANSWER + "\n"}));
    EXPECT_EQ(Detect(ASCII, {"--format", "json"}).output, "{\"file\":\"-\",\"result\":11,\"code\":0,\"name\":\"\"}\n");
}

TEST_F(ToolDetect, NoAnswerAtAll) {
    const ToolRun run =
        Detect(std::string(300, '\x80') + Repeat("<b>", 10) + "\x1B", {"--min-confidence", "0", "--format", "json"});
    const ToolRun blank = Detect("<!--" + std::string(300, '\x80') + "-->", {"--min-confidence", "0"});
    EXPECT_EQ(blank.status, 1);
    EXPECT_EQ(blank.output, std::string("-: unknown, no confidence, 708, ") + NOT_CONFIDENT + "\n") << run.output;
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
    EXPECT_EQ(Detect(UTF8, {"--min-confidence", "101"}).output,
              std::string("-: unknown, confidence 100, 708, ") + NOT_CONFIDENT + "\n");
}

TEST_F(ToolDetect, TheLeastDataIs256Bytes) {
    EXPECT_EQ(Detect(UTF8.substr(0, 255)).status, 1);
    EXPECT_EQ(Detect(UTF8.substr(0, 256)).status, 0);
}

TEST_F(ToolDetect, OnlyTheFirst16384BytesCount) {
    const std::string plain = Repeat("<p>plain</p>\n\n\n\n", 1024);
    ASSERT_EQ(plain.size(), 16384U);
    EXPECT_EQ(Detect(plain + UTF8).output, Detect(plain).output);
    EXPECT_EQ(Detect(plain.substr(0, 16000) + UTF8).status, 0);
}

TEST_F(ToolDetect, Files) {
    Write("utf8", UTF8 + std::string(100000, 'x'));
    Write("ascii", ASCII);
    Write("short", "x");
    settings.input = UTF8;
    const ToolRun run =
        RunTool({"detect", "--format", "json", "utf8", "none", ".", "short", "-", "ascii", "utf8"}, settings);
    EXPECT_EQ(
        run,
        (ToolRun{3, R"({"file":"utf8","result":0,"code":65001,"name":"UTF-8"}
{"file":"short","result":707,"code":0,"name":""}
{"file":"-","result":0,"code":65001,"name":"UTF-8"}
{"file":"ascii","result":11,"code":0,"name":""}
{"file":"utf8","result":0,"code":65001,"name":"UTF-8"}
)",
                 "none: cannot be read\n.: cannot be read\n"
                 "short: DetectCharset returned 707: too little data to detect the charset: 1 of at least 256 bytes\n"
                 "ascii: DetectCharset returned 11: " +
                     std::string(NO_ANSWER) + "\n"}));
    EXPECT_EQ(RunTool({"detect", "utf8", "ascii"}, settings).status, 1);
}

}  // namespace
}  // namespace Kestra::Test
