#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolViewOnPosix = ToolTest;

TEST_F(ToolViewOnPosix, NoPartOfAPageIsLeft) {
    Write("a.html", Repeat("<b>x</b>", 20000));
    settings.largestFile = 50000;
    const ToolRun run = Run({"view", "a.html", "-o", "b.html"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(StartsWith(run.errors, "b.html: cannot be written: "));
    EXPECT_EQ(GetNames(), Arguments{"a.html"});
}

TEST_F(ToolViewOnPosix, ALinkToTheInputIsTheInput) {
    Write("a.html", "<b>");
    fs::create_symlink("a.html", Path("b.html"));
    EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "b.html"}), 1, "b.html: cannot be written: it is the input\n"));
    EXPECT_EQ(Read("a.html"), "<b>");
}

TEST_F(ToolViewOnPosix, ADeviceIsWrittenAndStays) {
    Write("a.html", "<b>");
    EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "/dev/null"}), 0, ""));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    const ToolRun full = Run({"view", "a.html", "-o", "/dev/full"});
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(StartsWith(full.errors, "/dev/full: cannot be written: "));
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

}  // namespace
}  // namespace Kestra::Test
