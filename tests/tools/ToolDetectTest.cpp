#include "tests/tools/ToolRun.h"

// What no detector of a system is asked for.

namespace Kestra::Test {
namespace {

using ToolDetectWithoutDetector = ToolTest;

ToolRun Detect(std::string_view input, Arguments arguments = {}) {
    arguments.insert(arguments.begin(), "detect");
    return RunToolOn(input, arguments);
}

struct DetectRow {
    const char* note;
    std::string input;
    const char* text;
    const char* members;
};

constexpr const char* SHORT_ASCII = "20127 (US-ASCII), confidence 100, 707, plain ASCII";
constexpr const char* SHORT_ASCII_MEMBERS =
    R"("result":707,"code":20127,"name":"US-ASCII","source":"ascii","confidence":100)";
constexpr const char* KOI8_R = "20866 (KOI8-R), confidence 100, 0, declared in meta";
constexpr const char* KOI8_R_MEMBERS = R"("result":0,"code":20866,"name":"KOI8-R","source":"meta","confidence":100)";

const DetectRow WITHOUT_DETECTOR[] = {
    {"nothing is plain ASCII", "", SHORT_ASCII, SHORT_ASCII_MEMBERS},
    {"a letter too", "x", SHORT_ASCII, SHORT_ASCII_MEMBERS},
    {"and all that is too short for the detector", std::string(255, 'x'), SHORT_ASCII, SHORT_ASCII_MEMBERS},
    {"a mark of UTF-8", "\xEF\xBB\xBFx", "65001 (UTF-8), confidence 100, 0, the byte-order mark",
     R"("result":0,"code":65001,"name":"UTF-8","source":"mark","confidence":100)"},
    {"a mark of UTF-16", "\xFF\xFEx"s + '\0', "1200 (UTF-16), confidence 100, 0, the byte-order mark",
     R"("result":0,"code":1200,"name":"UTF-16","source":"mark","confidence":100)"},
    {"a mark comes before what the markup declares", "\xEF\xBB\xBF<meta charset=koi8-r>",
     "65001 (UTF-8), confidence 100, 0, the byte-order mark",
     R"("result":0,"code":65001,"name":"UTF-8","source":"mark","confidence":100)"},
    {"meta", "<meta charset=koi8-r>", KOI8_R, KOI8_R_MEMBERS},
    {"a content type", "<meta http-equiv=Content-Type content='text/html; charset=koi8-r'>", KOI8_R, KOI8_R_MEMBERS},
    {"the first one counts", "<meta charset=koi8-r><meta charset=utf-8>", KOI8_R, KOI8_R_MEMBERS},
    {"an unknown name is none", "<meta charset=x-mine><meta charset=koi8-r>", KOI8_R, KOI8_R_MEMBERS},
    {"it may come late, after text and junk", "caf\xE9 <!x-[ " + std::string(100000, 'x') + "<meta charset=koi8-r>",
     KOI8_R, KOI8_R_MEMBERS},
    {"in a comment it is none", "<!-- <meta charset=koi8-r> -->", SHORT_ASCII, SHORT_ASCII_MEMBERS},
};

TEST_F(ToolDetectWithoutDetector, TheCharsetInForceAndItsSource) {
    for (const DetectRow& row : WITHOUT_DETECTOR) {
        EXPECT_EQ(Detect(row.input), (ToolRun{0, "-: "s + row.text + "\n", ""})) << row.note;
        EXPECT_EQ(Detect(row.input, {"--format", "json"}), (ToolRun{0, R"({"file":"-",)"s + row.members + "}\n", ""}))
            << row.note;
    }
}

TEST_F(ToolDetectWithoutDetector, LongAsciiIsAnAnswerToo) {
    // What the detector says of it is the system's affair.
    const ToolRun run = Detect(Repeat("<p>plain</p>\n", 30), {"--format", "json"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_TRUE(Contains(run.output, R"("code":20127,"name":"US-ASCII","source":"ascii","confidence":100})"))
        << run.output;
}

TEST_F(ToolDetectWithoutDetector, OnlyWhatIsLookedAtCounts) {
    const std::string late = std::string(1U << 20U, 'x') + "<meta charset=koi8-r>";
    const std::string early = std::string(1000, 'x') + "<meta charset=koi8-r>";
    const struct {
        const char* note;
        const std::string* input;
        Arguments arguments;
        const char* source;
    } rows[] = {
        {"1 MiB, if nothing is said", &late, {}, "ascii"},
        {"all of it", &late, {"--bytes", "0"}, "meta"},
        {"to the last byte", &late, {"--bytes", std::to_string(late.size())}, "meta"},
        {"but for the last byte", &late, {"--bytes", std::to_string(late.size() - 1)}, "ascii"},
        {"more than there is", &early, {"--bytes", "18446744073709551615"}, "meta"},
        {"a beginning without it", &early, {"--bytes", "1000"}, "ascii"},
        {"one byte", &early, {"--bytes", "1"}, "ascii"},
    };
    for (const auto& row : rows) {
        Write("page", *row.input);
        for (const char* const name : {"page", "-"}) {
            settings.input = *row.input;
            Arguments arguments = {"detect", "--format", "json", name};
            arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
            const ToolRun run = RunTool(arguments, settings);
            EXPECT_EQ(run.status, 0) << row.note;
            EXPECT_TRUE(Contains(run.output, R"("source":")"s + row.source + '"')) << row.note << run.output;
        }
    }
}

TEST_F(ToolDetectWithoutDetector, Files) {
    Write("short", "x");
    Write("koi8", "<meta charset=koi8-r>");
    settings.input = "yz";
    EXPECT_EQ(RunTool({"detect", "--format", "json", "none", "short", ".", "koi8", "-"}, settings),
              (ToolRun{3,
                       R"({"error":"cannot be read: no such file","file":"none"}
)"s + R"({"file":"short",)" +
                           SHORT_ASCII_MEMBERS + "}\n" +
                           R"({"error":"cannot be read: it is a folder, use --recursive","file":"."}
)" + R"({"file":"koi8",)" + KOI8_R_MEMBERS +
                           "}\n" + R"({"file":"-",)" + SHORT_ASCII_MEMBERS + "}\n",
                       "none: cannot be read: no such file\n.: cannot be read: it is a folder, use --recursive\n"}));
    EXPECT_EQ(RunTool({"detect", "short", "koi8"}, settings).status, 0);
}

TEST_F(ToolDetectWithoutDetector, OutputThatCannotBeWritten) {
    settings.input = "x";
    settings.output = Sink::UNWRITABLE;
    EXPECT_TRUE(Ended(RunTool({"detect"}, settings), 1,
                      "standard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n"));
}

}  // namespace
}  // namespace Kestra::Test
