#include "platform/windows/WindowsApi.h"
#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

/// Wine has the class of the detector, but its detector fails always. Other answers are those of
/// Windows itself.
bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

std::string Page() {
    std::string page;
    for (int i = 0; i < 20; ++i)
        page += "<p>\xD0\x94\xD0\xBE\xD0\xB1\xD1\x80\xD1\x8B\xD0\xB9 \xD0\xB4\xD0\xB5\xD0\xBD\xD1\x8C</p>\n";
    return page;
}

TEST(ToolDetectOfTheSystem, ADetectorThatFailsIsReported) {
    const ToolRun run = RunToolOn(Page(), {"detect", "--format", "json"});
    const ToolRun text = RunToolOn(Page(), {"detect"});
    if (IsWine()) {
        EXPECT_EQ(run, (ToolRun{1,
                                R"({"file":"-","result":709,"code":0,"name":"","source":"none","confidence":0})"
                                "\n",
                                "-: DetectCharset returned 709: the charset detector failed\n"}));
        EXPECT_EQ(text.output, "-: unknown, no confidence, 709, the charset detector failed\n");
    } else {
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(Contains(run.output, R"("result":0,"code":65001,"name":"UTF-8","source":"detector",)"));
    }
}

TEST(ToolDetectOfTheSystem, AParseWithoutACharsetAsksTheDetector) {
    const std::string page = Page();
    const ToolRun unknown = RunToolOn(page, {"tokens", "--format", "json"});
    if (IsWine()) {
        EXPECT_EQ(unknown.status, 1);
        EXPECT_TRUE(Contains(unknown.output, "\"parse\":706,"));
        EXPECT_TRUE(Contains(unknown.errors, "-: parsing returned 706: the charset could not be detected"));
    } else {
        EXPECT_EQ(unknown.status, 0);
        EXPECT_TRUE(Contains(unknown.output, "\"charset\":65001,"));
    }
    // Where a charset is given, or there is too little to detect, it is not asked.
    EXPECT_EQ(RunToolOn(page, {"tokens", "--charset", "65001"}).status, 0);
    EXPECT_EQ(RunToolOn(page.substr(0, 29), {"tokens"}).status, 0);
}

}  // namespace
}  // namespace Kestra::Test
