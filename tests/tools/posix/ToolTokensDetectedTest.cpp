#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

Arguments Json(Arguments more = {}) {
    more.insert(more.begin(), {"tokens", "--format", "json"});
    return more;
}

/// The JSON Lines of a good run.
std::string JsonOf(std::string_view input, Arguments more = {}) {
    const ToolRun run = RunToolOn(input, Json(std::move(more)));
    EXPECT_TRUE(Ended(run, 0, ""));
    return run.output;
}

/// Texts of a charset that the detector is sure of.
struct DetectableText {
    const char* note;
    std::string bytes;
    const char* result;
    const char* text;
};

const DetectableText DETECTABLE_TEXTS[] = {
    {"UTF-8", Repeat("<p>\xD0\x94\xD0\xBE\xD0\xB1\xD1\x80\xD1\x8B\xD0\xB9 \xD0\xB4\xD0\xB5\xD0\xBD\xD1\x8C</p>\n", 20),
     "\"charset\":65001,\"isWParser\":false",
     R"("text":"\u0414\u043e\u0431\u0440\u044b\u0439 \u0434\u0435\u043d\u044c")"},
    {"UTF-16 without a mark", Utf16(Repeat("<p>An English text that goes on for a while</p>\n", 20)),
     "\"charset\":1200,\"isWParser\":true", R"("text":"An English text that goes on for a while")"},
};

TEST(ToolTokensDetected, ALateCharsetStartsAgain) {
    for (const DetectableText& row : DETECTABLE_TEXTS) {
        const std::string lines = JsonOf(row.bytes);
        EXPECT_TRUE(Contains(lines, row.text)) << row.note << "\n" << lines;
        EXPECT_TRUE(Contains(LastLine(lines), "\"parse\":0,\"endParse\":0,")) << row.note << "\n" << lines;
        EXPECT_TRUE(Contains(LastLine(lines), row.result)) << row.note << "\n" << lines;
        // Nothing of the abandoned pass is there.
        for (const char* const once : {"\"StartParsing\"", "\"EndParsing\"", "\"Result\""}) {
            EXPECT_TRUE(Contains(lines, once)) << row.note << once;
            EXPECT_EQ(lines.find(once), lines.rfind(once)) << row.note << once;
        }
    }
}

TEST(ToolTokensDetected, TheSecondPassIsTheOneWithTheCharsetGiven) {
    const std::string& utf8 = DETECTABLE_TEXTS[0].bytes;
    EXPECT_EQ(JsonOf(utf8), JsonOf(utf8, {"--charset", "65001"}));
    EXPECT_EQ(JsonOf(utf8, {"--observer", "narrow"}), JsonOf(utf8, {"--observer", "narrow", "--charset", "65001"}));
    EXPECT_EQ(JsonOf(utf8, {"--input", "8bit"}), JsonOf(utf8, {"--input", "8bit", "--charset", "65001"}));
    const std::string& utf16 = DETECTABLE_TEXTS[1].bytes;
    EXPECT_EQ(JsonOf(utf16), JsonOf(utf16, {"--input", "utf16"}));
}

TEST(ToolTokensDetected, WithoutReparsingTheResultIs705) {
    for (const DetectableText& row : DETECTABLE_TEXTS) {
        const ToolRun run = RunToolOn(row.bytes, Json({"--no-reparse"}));
        EXPECT_EQ(run.status, 1) << row.note;
        EXPECT_TRUE(Contains(run.output, "{\"event\":\"Text\"")) << row.note;
        EXPECT_TRUE(Contains(LastLine(run.output), "\"parse\":705,")) << row.note;
        EXPECT_EQ(
            run.errors,
            "-: parsing returned 705: another charset was found, the input must be parsed again (line 1, column 1)\n")
            << row.note;
    }
}

TEST(ToolTokensDetected, TheTextFormatAfterALateCharset) {
    const ToolRun run = RunToolOn(DETECTABLE_TEXTS[0].bytes, {"tokens"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.output.find("start-parsing"), run.output.rfind("start-parsing"));
    EXPECT_TRUE(Contains(
        run.output,
        "\nbytes    580\ntokens   80: text 40, start 20, end 20\ncharset  65001 (UTF-8), found in a first pass\n"
        "result   0, success\n"));
}

TEST(ToolTokensDetected, TheTextFormatSaysWhatIsAssumed) {
    const ToolRun assumed = RunToolOn("<p>caf\xC3\xA9</p>", {"tokens"});
    EXPECT_TRUE(Contains(assumed.output, "text(caf\xC3\x83\xC2\xA9)")) << assumed.output;
    EXPECT_TRUE(Contains(assumed.output, "\ncharset  1252 (windows-1252), assumed\n")) << assumed.output;
    const ToolRun given = RunToolOn("<p>caf\xC3\xA9</p>", {"tokens", "--charset", "utf-8"});
    EXPECT_TRUE(Contains(given.output, "text(caf\xC3\xA9)")) << given.output;
    EXPECT_TRUE(Contains(given.output, "\ncharset  65001 (UTF-8)\n")) << given.output;
    const ToolRun bytes = RunToolOn("<p>caf\xC3\xA9</p>", {"tokens", "--observer", "narrow"});
    EXPECT_TRUE(Contains(bytes.output, "\ncharset  unknown\n")) << "nothing is decoded\n" << bytes.output;
}

TEST(ToolTokensDetected, TheLeastConfidenceKeepsTheDetectorSilent) {
    const std::string lines = JsonOf(DETECTABLE_TEXTS[0].bytes, {"--min-confidence", "101"});
    EXPECT_TRUE(Contains(LastLine(lines), "\"parse\":0,\"endParse\":0,"));
    EXPECT_TRUE(Contains(LastLine(lines), "\"charset\":0,"));
}

TEST(ToolTokensDetected, ABufferIsNotDetected) {
    const std::string lines = JsonOf(DETECTABLE_TEXTS[0].bytes, {"--feed", "buffer"});
    EXPECT_TRUE(Contains(LastLine(lines), "\"charset\":0,"));
}

TEST(ToolTokensDetected, TheSelfCheckOfADetectedCharset) {
    EXPECT_EQ(JsonOf(DETECTABLE_TEXTS[1].bytes, {"--self-check", "crc"}), JsonOf(DETECTABLE_TEXTS[1].bytes));
}

TEST(ToolCheckDetected, ADetectedCharsetIsFollowed) {
    // Only as UTF-16 it has comments, which are not reproduced there.
    std::string detected;
    while (detected.size() < 1000) {
        for (const char letter : "<p>An English text that goes on for a while</p><!--c-->\n"s)
            detected += {letter, '\0'};
    }
    const ToolRun wide = RunToolOn(detected, {"check", "--format", "json"});
    EXPECT_EQ(wide.status, 1);
    EXPECT_TRUE(Contains(wide.output, "\"endParse\":704,"));
    const ToolRun unknown = RunToolOn(detected, {"check", "--format", "json", "--feed", "buffer"});
    EXPECT_EQ(unknown.status, 0) << unknown.errors;
    EXPECT_TRUE(Contains(unknown.output, "\"identical\":true"));
}

}  // namespace
}  // namespace Kestra::Test
