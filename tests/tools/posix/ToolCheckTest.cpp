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
    EXPECT_TRUE(Ended(text, 1, std::string("-: ") + LOST));
    EXPECT_TRUE(StartsWith(text.output,
                           "-: 704, the copy of the tokens could not be written to a temporary file or read back "
                           "from it, 5000000 bytes, "));
    EXPECT_FALSE(Contains(text.output, "difference"));
    EXPECT_TRUE(Contains(text.output, ", 0 reproduced\n"));
    EXPECT_EQ(
        RunTool({"check", "--charset", "1252", "--format", "json"}, FullDisk()),
        (ToolRun{
            1,
            "{\"file\":\"-\",\"bytes\":5000000,\"tokens\":1,\"endParse\":704,\"identical\":false,\"firstDifference\":"
            "null}\n",
            text.errors}));
}

TEST(ToolCheckOnAFullDisk, TheSelfCheckOfTokens) {
    EXPECT_TRUE(Ended(RunTool({"tokens", "--charset", "1252", "--self-check", "copy"}, FullDisk()), 1,
                      std::string("-: ") + LOST));
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
