#include <gtest/gtest.h>

#include <string>

#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

/// A text whose copy does not fit the memory that is kept for it, 4 MiB, and goes to a file. Files
/// can have 1 MiB.
ToolSettings FullDisk() {
    ToolSettings settings;
    settings.input = std::string(5000000, 'x');
    settings.largestFile = std::uint64_t{1} << 20;
    return settings;
}

constexpr const char* LOST =
    "EndParse returned 704: the copy of the tokens could not be written to a temporary file or read back from it (line "
    "1, column "
    "5000001)\n";

TEST(ToolCheckOnAFullDisk, ALostCopyIsNoDifference) {
    const ToolRun text = RunTool({"check", "--charset", "1252"}, FullDisk());
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.errors, std::string("-: ") + LOST);
    EXPECT_EQ(text.output.find("-: 704, the copy of the tokens could not be written to a temporary file or read back "
                               "from it, 5000000 bytes, "),
              0U)
        << text.output;
    EXPECT_EQ(text.output.find("difference"), std::string::npos) << text.output;
    EXPECT_NE(text.output.find(", 0 reproduced\n"), std::string::npos) << text.output;
    const ToolRun json = RunTool({"check", "--charset", "1252", "--format", "json"}, FullDisk());
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.errors, text.errors);
    EXPECT_EQ(json.output,
              "{\"file\":\"-\",\"bytes\":5000000,\"tokens\":1,\"endParse\":704,\"identical\":false,\"firstDifference\":"
              "null}\n");
}

TEST(ToolCheckOnAFullDisk, TheSelfCheckOfTokens) {
    const ToolRun copy = RunTool({"tokens", "--charset", "1252", "--self-check", "copy"}, FullDisk());
    EXPECT_EQ(copy.status, 1);
    EXPECT_EQ(copy.errors, std::string("-: ") + LOST);
    EXPECT_EQ(RunTool({"tokens", "--charset", "1252", "--self-check", "crc"}, FullDisk()).status, 0)
        << "checksums need no file";
}

TEST(ToolCheckOnAFullDisk, AShortCopyNeedsNoFile) {
    ToolSettings settings = FullDisk();
    settings.input->resize(4000000);
    EXPECT_EQ(RunTool({"check", "--charset", "1252"}, settings).status, 0);
}

}  // namespace
}  // namespace Kestra::Test
