#include "tools/kestra-html/TokensCommand.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/ToolRun.h"
#include "tools/kestra-html/Console.h"

namespace Kestra::Test {
namespace {

constexpr StringNS::CharSet::Code NO_CHARSET =
    99999;  // the command line takes none without a converter; markup may lead to one

constexpr const char* MISSING =
    "tokens are missing, a conversion from the charset 99999 returned 50: there is no converter for the charset\n";

ToolRun RunHere(const Tool::TokensOptions& options) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    ToolRun run;
    {
        Tool::Console console;
        run.status = Tool::RunTokens(options, &console);
    }
    run.output = testing::internal::GetCapturedStdout();
    run.errors = testing::internal::GetCapturedStderr();
    return run;
}

TEST(TokensCommand, TokensThatCannotBeConvertedAreToldOf) {
    const TemporaryFolder folder;
    const std::string page = folder.Write("page", "<p>abc</p><script>evil()</script>").string();
    Tool::TokensOptions options;
    options.charset = NO_CHARSET;
    options.inputs = {page};
    const ToolRun text = RunHere(options);
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.errors, page + ": " + MISSING);
    EXPECT_NE(text.output.find(std::string("\nresult   ") + MISSING), std::string::npos) << text.output;

    options.format = Tool::OutputFormat::JSON;
    const ToolRun json = RunHere(options);
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.errors, page + ": " + MISSING);
    EXPECT_NE(json.output.find("{\"event\":\"Result\",\"startParse\":0,\"parse\":0,\"endParse\":0,"), std::string::npos)
        << json.output;

    options.observer = Tool::TokensOptions::Observer::NARROW;
    const ToolRun narrow = RunHere(options);
    EXPECT_EQ(narrow.status, 0) << "nothing is converted";
    EXPECT_EQ(narrow.errors, "");
    EXPECT_NE(narrow.output.find("\"text\":\"evil()\""), std::string::npos) << narrow.output;
}

TEST(TokensCommand, AnotherInputHasAllItsTokens) {
    const TemporaryFolder folder;
    Tool::TokensOptions options;
    options.charset = NO_CHARSET;
    const std::string page = folder.Write("page", "<p>").string();
    options.inputs = {page, folder.Write("utf-16", std::string("\xFF\xFEx\0", 4)).string(),
                      folder.Write("empty", "").string()};
    const ToolRun run = RunHere(options);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, page + ": " + MISSING);
}

}  // namespace
}  // namespace Kestra::Test
