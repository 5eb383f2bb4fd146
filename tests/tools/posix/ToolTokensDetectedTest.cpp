#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using namespace std::string_literals;

using Arguments = std::vector<std::string>;

Arguments Json(Arguments more = {}) {
    more.insert(more.begin(), {"tokens", "--format", "json"});
    return more;
}

/// The JSON Lines of a good run.
std::string JsonOf(std::string_view input, Arguments more = {}) {
    const ToolRun run = RunToolOn(input, Json(std::move(more)));
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    return run.output;
}

/// The last line of an output.
std::string LastLine(const std::string& output) {
    if (output.empty() || output.back() != '\n')
        return "(no line)";
    const std::size_t before = output.rfind('\n', output.size() - 2);
    return output.substr(before == std::string::npos ? 0 : before + 1,
                         output.size() - 1 - (before == std::string::npos ? 0 : before + 1));
}

/// A text with the letters of the ASCII one as UTF-16, low byte first.
std::string Utf16(std::string_view ascii) {
    std::string bytes;
    for (const char letter : ascii) {
        bytes.push_back(letter);
        bytes.push_back('\0');
    }
    return bytes;
}

std::string Repeat(std::string_view text, unsigned times) {
    std::string all;
    for (unsigned i = 0; i < times; ++i)
        all += text;
    return all;
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
        EXPECT_NE(lines.find(row.text), std::string::npos) << row.note << "\n" << lines;
        EXPECT_NE(LastLine(lines).find("\"parse\":0,\"endParse\":0,"), std::string::npos) << row.note << "\n" << lines;
        EXPECT_NE(LastLine(lines).find(row.result), std::string::npos) << row.note << "\n" << lines;
        // Nothing of the abandoned pass is there.
        for (const char* const once : {"\"StartParsing\"", "\"EndParsing\"", "\"Result\""}) {
            EXPECT_NE(lines.find(once), std::string::npos) << row.note << once;
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
        EXPECT_NE(run.output.find("{\"event\":\"Text\""), std::string::npos) << row.note;
        EXPECT_NE(LastLine(run.output).find("\"parse\":705,"), std::string::npos) << row.note << run.output;
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
    EXPECT_NE(
        run.output.find(
            "\nbytes    580\ntokens   80: text 40, start 20, end 20\ncharset  65001 (UTF-8), found in a first pass\n"
            "result   0, success\n"),
        std::string::npos)
        << run.output;
}

TEST(ToolTokensDetected, TheLeastConfidenceKeepsTheDetectorSilent) {
    const std::string lines = JsonOf(DETECTABLE_TEXTS[0].bytes, {"--min-confidence", "101"});
    EXPECT_NE(LastLine(lines).find("\"parse\":0,\"endParse\":0,"), std::string::npos) << lines;
    EXPECT_NE(LastLine(lines).find("\"charset\":0,"), std::string::npos) << lines;
}

TEST(ToolTokensDetected, ABufferIsNotDetected) {
    const std::string lines = JsonOf(DETECTABLE_TEXTS[0].bytes, {"--feed", "buffer"});
    EXPECT_NE(LastLine(lines).find("\"charset\":0,"), std::string::npos) << lines;
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
    EXPECT_NE(wide.output.find("\"endParse\":704,"), std::string::npos) << wide.output;
    const ToolRun unknown = RunToolOn(detected, {"check", "--format", "json", "--min-confidence", "101"});
    EXPECT_EQ(unknown.status, 0) << unknown.errors;
    EXPECT_NE(unknown.output.find("\"identical\":true"), std::string::npos) << unknown.output;
}

}  // namespace
}  // namespace Kestra::Test
