#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using Arguments = std::vector<std::string>;

ToolRun Detect(std::string_view input, Arguments arguments = {}) {
    arguments.insert(arguments.begin(), "detect");
    return RunToolOn(input, arguments);
}

TEST(ToolDetectFailures, TooLittleDataSaysSoAndWhy) {
    for (const std::size_t size : {0U, 1U, 255U}) {
        const std::string input = std::string(size, 'x');
        const std::string why =
            "too little data to detect the charset: " + std::to_string(size) + " of at least 256 bytes\n";
        const ToolRun run = Detect(input);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.output, "-: unknown, no confidence, 707, " + why);
        EXPECT_EQ(run.errors, "-: DetectCharset returned 707: " + why);
        const ToolRun json = Detect(input, {"--format", "json"});
        EXPECT_EQ(json.status, 1);
        EXPECT_EQ(json.output, "{\"file\":\"-\",\"result\":707,\"code\":0,\"name\":\"\"}\n");
        EXPECT_EQ(json.errors, "-: DetectCharset returned 707: " + why);
    }
}

TEST(ToolDetectFailures, Files) {
    const TemporaryFolder folder;
    folder.Write("short", "x");
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    settings.input = "yz";
    const ToolRun run = RunTool({"detect", "--format", "json", "none", "short", ".", "-"}, settings);
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.output, R"({"file":"short","result":707,"code":0,"name":""}
{"file":"-","result":707,"code":0,"name":""}
)");
    EXPECT_EQ(run.errors,
              "none: cannot be read\n"
              "short: DetectCharset returned 707: too little data to detect the charset: 1 of at least 256 bytes\n"
              ".: cannot be read\n"
              "-: DetectCharset returned 707: too little data to detect the charset: 2 of at least 256 bytes\n");
}

TEST(ToolDetectFailures, OutputThatCannotBeWritten) {
    ToolSettings settings;
    settings.input = "x";
    settings.output = Sink::UNWRITABLE;
    const ToolRun disk = RunTool({"detect"}, settings);
    EXPECT_EQ(disk.status, 1);
    EXPECT_EQ(disk.errors,
              "-: DetectCharset returned 707: too little data to detect the charset: 1 of at least 256 bytes\n"
              "standard output: cannot be written: " +
                  GetReason(Sink::UNWRITABLE) + "\n");
}

}  // namespace
}  // namespace Kestra::Test
