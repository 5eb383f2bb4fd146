#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolDetectFailures = ToolTest;

ToolRun Detect(std::string_view input, Arguments arguments = {}) {
    arguments.insert(arguments.begin(), "detect");
    return RunToolOn(input, arguments);
}

TEST_F(ToolDetectFailures, TooLittleDataSaysSoAndWhy) {
    for (const std::size_t size : {0U, 1U, 255U}) {
        const std::string input = std::string(size, 'x');
        const std::string why =
            "too little data to detect the charset: " + std::to_string(size) + " of at least 256 bytes\n";
        EXPECT_EQ(Detect(input),
                  (ToolRun{1, "-: unknown, no confidence, 707, " + why, "-: DetectCharset returned 707: " + why}));
        EXPECT_EQ(Detect(input, {"--format", "json"}),
                  (ToolRun{1, "{\"file\":\"-\",\"result\":707,\"code\":0,\"name\":\"\"}\n",
                           "-: DetectCharset returned 707: " + why}));
    }
}

TEST_F(ToolDetectFailures, Files) {
    Write("short", "x");
    settings.input = "yz";
    EXPECT_EQ(
        RunTool({"detect", "--format", "json", "none", "short", ".", "-"}, settings),
        (ToolRun{3, R"({"file":"short","result":707,"code":0,"name":""}
{"file":"-","result":707,"code":0,"name":""}
)",
                 "none: cannot be read\n"
                 "short: DetectCharset returned 707: too little data to detect the charset: 1 of at least 256 bytes\n"
                 ".: cannot be read\n"
                 "-: DetectCharset returned 707: too little data to detect the charset: 2 of at least 256 bytes\n"}));
}

TEST_F(ToolDetectFailures, OutputThatCannotBeWritten) {
    settings.input = "x";
    settings.output = Sink::UNWRITABLE;
    EXPECT_TRUE(Ended(RunTool({"detect"}, settings), 1,
                      "-: DetectCharset returned 707: too little data to detect the charset: 1 of at least 256 bytes\n"
                      "standard output: cannot be written: " +
                          GetReason(Sink::UNWRITABLE) + "\n"));
}

}  // namespace
}  // namespace Kestra::Test
