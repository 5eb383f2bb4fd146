#include "tools/kestra-html/commands/TokensCommand.h"

#include "tests/tools/ToolRun.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Test {
namespace {

// The command line takes none without a converter; markup may lead to one.
constexpr StringNS::CharSet::Code NO_CHARSET = 99999;

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
    EXPECT_TRUE(Ended(text, 1, page + ": " + MISSING));
    EXPECT_TRUE(Contains(text.output, std::string("\nresult   ") + MISSING));

    options.format = Tool::OutputFormat::JSON;
    const ToolRun json = RunHere(options);
    EXPECT_TRUE(Ended(json, 1, page + ": " + MISSING));
    EXPECT_TRUE(Contains(json.output, "{\"event\":\"Result\",\"startParse\":0,\"parse\":0,\"endParse\":0,"));

    options.observer = Tool::TokensOptions::Observer::NARROW;
    const ToolRun narrow = RunHere(options);
    EXPECT_TRUE(Ended(narrow, 0, "")) << "nothing is converted";
    EXPECT_TRUE(Contains(narrow.output, "\"text\":\"evil()\""));
}

TEST(TokensCommand, AnotherInputHasAllItsTokens) {
    const TemporaryFolder folder;
    Tool::TokensOptions options;
    options.charset = NO_CHARSET;
    const std::string page = folder.Write("page", "<p>").string();
    options.inputs = {page, folder.Write("utf-16", std::string("\xFF\xFEx\0", 4)).string(),
                      folder.Write("empty", "").string()};
    EXPECT_TRUE(Ended(RunHere(options), 1, page + ": " + MISSING));
}

}  // namespace
}  // namespace Kestra::Test
