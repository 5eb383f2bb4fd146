#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

/// Files can have 1 MiB, and the memory that is kept for a copy is 4 MiB.
class ToolCheckOnAFullDisk : public ToolTest {
protected:
    ToolCheckOnAFullDisk() {
        Write("page", std::string(5000000, 'x'));
        Write("short", std::string(4000000, 'x'));
        settings.largestFile = std::uint64_t{1} << 20;
    }
};

constexpr const char* LOST =
    "EndParse returned 704: the temporary file for the copy of the tokens could not be written or read, its folder may "
    "be full, read-only or missing (line 1, column 5000001)\n";

TEST_F(ToolCheckOnAFullDisk, ALostCopyIsNoDifference) {
    const ToolRun text = Run({"check", "--charset", "1252", "page"});
    EXPECT_TRUE(Ended(text, 1, std::string("page: ") + LOST));
    EXPECT_TRUE(StartsWith(text.output,
                           "page: not checked, the temporary file for the copy of the tokens could not be written or "
                           "read, its folder may be full, read-only or missing, 5000000 bytes, "));
    EXPECT_FALSE(Contains(text.output, "difference"));
    EXPECT_TRUE(Contains(text.output, ", 0 reproduced, 1 not checked\n"));
    EXPECT_EQ(Run({"check", "--charset", "1252", "--format", "json", "page"}),
              (ToolRun{1,
                       "{\"file\":\"page\",\"bytes\":5000000,\"tokens\":1,\"endParse\":704,\"identical\":false,"
                       "\"firstDifference\":null,\"parse\":0,"
                       "\"error\":\"the temporary file for the copy of the tokens could not be written or read, "
                       "its folder may be full, read-only or missing\"}\n",
                       text.errors}));
}

TEST_F(ToolCheckOnAFullDisk, TheSelfCheckOfTokens) {
    EXPECT_TRUE(
        Ended(Run({"tokens", "--charset", "1252", "--self-check", "copy", "page"}), 1, std::string("page: ") + LOST));
    EXPECT_EQ(Run({"tokens", "--charset", "1252", "--self-check", "crc", "page"}).status, 0)
        << "checksums need no file";
}

TEST_F(ToolCheckOnAFullDisk, AShortCopyNeedsNoFile) {
    EXPECT_EQ(Run({"check", "--charset", "1252", "short"}).status, 0);
}

TEST_F(ToolCheckOnAFullDisk, APipeThatCannotBeKept) {
    settings.input = std::string(2000000, 'x');
    const std::string why = "cannot be kept in a temporary file: the folder " + folder.GetPath().string() +
                            " is full, read-only or missing";
    settings.environment["TMPDIR"] = folder.GetPath().string();
    EXPECT_EQ(Run({"check", "--format", "json"}),
              (ToolRun{1, "{\"error\":\"" + why + "\",\"file\":\"-\"}\n", "-: " + why + "\n"}));
    settings.input->resize(1000000);
    EXPECT_EQ(Run({"check"}).status, 0) << "one that is short needs no file";
}

}  // namespace
}  // namespace Kestra::Test
