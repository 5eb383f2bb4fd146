#include <variant>

#include "tests/platform/windows/ScriptedLanguageService.h"
#include "tests/tools/ToolRun.h"
#include "tests/tools/windows/Handle.h"
#include "tools/kestra-html/commandline/CommandLine.h"
#include "tools/kestra-html/commands/CheckCommand.h"
#include "tools/kestra-html/commands/DetectCommand.h"
#include "tools/kestra-html/commands/EventsCommand.h"
#include "tools/kestra-html/commands/RewriteCommand.h"
#include "tools/kestra-html/commands/TokensCommand.h"
#include "tools/kestra-html/output/Console.h"

// The tool and the answers of the charset detector. The test registers a detector for its own
// process only, so the commands run in it.

namespace Kestra::Test {
namespace {

Tool::ExitStatus RunCommand(const Tool::TokensOptions& options, Tool::Console* console) {
    return Tool::RunTokens(options, console);
}

Tool::ExitStatus RunCommand(const Tool::EventsOptions& options, Tool::Console* console) {
    return Tool::RunEvents(options, console);
}

Tool::ExitStatus RunCommand(const Tool::CheckOptions& options, Tool::Console* console) {
    return Tool::RunCheck(options, console);
}

Tool::ExitStatus RunCommand(const Tool::DetectOptions& options, Tool::Console* console) {
    return Tool::RunDetect(options, console);
}

Tool::ExitStatus RunCommand(const Tool::RewriteOptions& options, Tool::Console* console) {
    return Tool::RunRewrite(options, console);
}

Tool::ExitStatus RunCommand(const Tool::ViewOptions& options, Tool::Console* console) {
    return Tool::RunView(options, console);
}

/// A standard stream of this process that goes into a file for a while.
class Redirection {
public:
    Redirection(DWORD redirectedStream, const fs::path& filePath)
        : stream(redirectedStream),
          former(GetStdHandle(stream)),
          path(filePath),
          file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                           nullptr)) {
        SetStdHandle(stream, file.Get());
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;
    ~Redirection() {
        SetStdHandle(stream, former);
    }

    std::string Read() const {
        std::ifstream written(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(written), std::istreambuf_iterator<char>()};
    }

private:
    DWORD stream;
    HANDLE former;
    fs::path path;
    Handle file;
};

class ScriptedDetector : public testing::Test {
protected:
    ScriptedDetector() : home(fs::current_path()) {
        Checked(SUCCEEDED(CoInitialize(nullptr)), "CoInitialize");
        fs::current_path(folder.GetPath());
    }
    ~ScriptedDetector() override {
        fs::current_path(home);
        CoUninitialize();
    }

    /// The tool on the file "page" with this content.
    ToolRun RunOn(std::string_view page, Arguments arguments) {
        folder.Write("page", page);
        arguments.push_back("page");
        const ScriptedLanguageService service(&script);
        const Redirection output(STD_OUTPUT_HANDLE, folder.GetPath() / "output");
        const Redirection errors(STD_ERROR_HANDLE, folder.GetPath() / "errors");
        ToolRun run;
        {
            Tool::Console console;
            const Tool::CommandLine line = Tool::ParseCommandLine(arguments);
            EXPECT_FALSE(line.answered) << line.answer;
            run.status =
                std::visit([&console](const auto& options) { return RunCommand(options, &console); }, line.run);
        }
        run.output = output.Read();
        run.errors = errors.Read();
        return run;
    }

    void Answer(UINT code, INT confidence) {
        script.code = code;
        script.confidence = confidence;
    }

    LanguageServiceScript script;

private:
    TemporaryFolder folder;
    fs::path home;
};

const std::string UTF8 = Repeat("<p>\xD0\x94\xD0\xBE\xD0\xB1\xD1\x80\xD1\x8B\xD0\xB9</p>\n", 20);
const std::string UTF16 = Utf16(Repeat("<p>An English text that goes on for a while</p>\n", 20));

constexpr const char* NO_ANSWER = "the charset detector has no usable answer, as for plain ASCII, or cannot be started";
constexpr const char* NOT_CONFIDENT = "the charset detector is not confident enough";

TEST_F(ScriptedDetector, AnAnswer) {
    Answer(65001, 90);
    EXPECT_EQ(RunOn(UTF8, {"detect", "--format", "json"}),
              (ToolRun{0,
                       R"({"file":"page","result":0,"code":65001,"name":"UTF-8","source":"detector","confidence":90})"
                       "\n",
                       ""}));
    EXPECT_EQ(RunOn(UTF8, {"detect"}).output, "page: 65001 (UTF-8), confidence 90, 0, the detector\n");
    EXPECT_EQ(script.references, 0);
}

TEST_F(ScriptedDetector, NoUsableAnswer) {
    Answer(65001, 60);
    EXPECT_EQ(RunOn(UTF8, {"detect", "--min-confidence", "60"}).status, 0);
    EXPECT_EQ(RunOn(UTF8, {"detect", "--min-confidence", "61"}),
              (ToolRun{1, std::string("page: unknown, confidence 60, 708, ") + NOT_CONFIDENT + "\n",
                       std::string("page: DetectCharset returned 708: ") + NOT_CONFIDENT + "\n"}));
    script.count = 0;
    EXPECT_EQ(RunOn(UTF8, {"detect"}).output,
              std::string("page: unknown, no confidence, 708, ") + NOT_CONFIDENT + "\n");
    script.count = 1;
    Answer(20127, 100);
    EXPECT_EQ(RunOn(UTF8, {"detect"}),
              (ToolRun{1, std::string("page: unknown, confidence 100, 11, ") + NO_ANSWER + "\n",
                       std::string("page: DetectCharset returned 11: ") + NO_ANSWER + "\n"}));
}

TEST_F(ScriptedDetector, TheLeastData) {
    Answer(65001, 90);
    EXPECT_EQ(RunOn(UTF8.substr(0, 255), {"detect"}),
              (ToolRun{0, "page: 65001 (UTF-8), confidence 90, 707, the detector\n", ""}));
    EXPECT_EQ(script.calls, 1);
    EXPECT_EQ(script.bytes, UTF8.substr(0, 255) + " ") << "blanks make it long enough";
    EXPECT_EQ(RunOn(UTF8.substr(0, 256), {"detect"}).status, 0);
    EXPECT_EQ(script.bytes, UTF8.substr(0, 256));
    EXPECT_EQ(RunOn(UTF8 + std::string(20000, 'x'), {"detect"}).status, 0);
    EXPECT_EQ(script.bytes, UTF8 + std::string(20000, 'x'));
    EXPECT_EQ(RunOn(UTF8 + std::string(20000, 'x'), {"detect", "--bytes", "300"}).status, 0);
    EXPECT_EQ(script.bytes, UTF8.substr(0, 300));
    EXPECT_EQ(script.calls, 4) << "once for each input";
    EXPECT_EQ(RunOn("<meta charset=koi8-r>" + UTF8, {"detect"}).output,
              "page: 20866 (KOI8-R), confidence 100, 0, declared in meta\n");
    EXPECT_EQ(script.calls, 4) << "what is declared need not be detected";
}

TEST_F(ScriptedDetector, AClassThatIsNotRegistered) {
    script.creation = REGDB_E_CLASSNOTREG;
    EXPECT_EQ(RunOn(UTF8, {"detect"}), (ToolRun{1, std::string("page: unknown, no confidence, 11, ") + NO_ANSWER + "\n",
                                                std::string("page: DetectCharset returned 11: ") + NO_ANSWER + "\n"}));
    const ToolRun tokens = RunOn(UTF8, {"tokens", "--format", "json"});
    EXPECT_EQ(tokens.status, 0) << "the text stays as it was read";
    EXPECT_TRUE(Contains(tokens.output, "\"parse\":0,\"endParse\":0,"));
    EXPECT_TRUE(Contains(tokens.output, "\"charset\":0,"));
}

TEST_F(ScriptedDetector, ADetectorThatFails) {
    script.result = E_FAIL;
    const ToolRun run = RunOn(UTF8, {"detect", "--format", "json"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output, R"({"file":"page","result":709,"code":0,"name":"","source":"none","confidence":0})"
                          "\n");
    const ToolRun tokens = RunOn(UTF8, {"tokens", "--format", "json"});
    EXPECT_EQ(tokens.status, 1);
    EXPECT_TRUE(Contains(tokens.output, "\"parse\":706,"));
    EXPECT_TRUE(Contains(tokens.errors, "page: parsing returned 706: the charset could not be detected"));
}

TEST_F(ScriptedDetector, ALateCharsetStartsAgain) {
    const struct {
        const char* note;
        UINT code;
        const std::string* page;
        Arguments given;
    } CASES[] = {
        {"UTF-8", 65001, &UTF8, {"--charset", "65001"}},
        {"UTF-16 without a mark", 1200, &UTF16, {"--input", "utf16"}},
    };
    for (const auto& row : CASES) {
        Answer(row.code, 90);
        const ToolRun detected = RunOn(*row.page, {"tokens", "--format", "json"});
        EXPECT_EQ(detected.status, 0) << row.note << detected.errors;
        EXPECT_GT(script.calls, 0) << row.note;
        script.calls = 0;
        Arguments arguments = {"tokens", "--format", "json"};
        arguments.insert(arguments.end(), row.given.begin(), row.given.end());
        EXPECT_EQ(detected.output, RunOn(*row.page, arguments).output)
            << row.note << ": nothing of the abandoned pass is there";
        EXPECT_EQ(script.calls, 0) << row.note << ": it is not asked";
        EXPECT_TRUE(
            Ended(RunOn(*row.page, {"tokens", "--format", "json", "--no-reparse"}), 1,
                  "page: parsing returned 705: another charset was found, the input must be parsed again (line 1, "
                  "column 1)\n"))
            << row.note;
    }
}

TEST_F(ScriptedDetector, WhatKeepsTheTextAsItWasRead) {
    Answer(65001, 90);
    for (const Arguments& arguments : {Arguments{"--min-confidence", "91"}, Arguments{"--feed", "buffer"}}) {
        Arguments all = {"tokens", "--format", "json"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const ToolRun run = RunOn(UTF8, all);
        EXPECT_EQ(run.status, 0) << arguments[0];
        EXPECT_TRUE(Contains(run.output, "\"charset\":0,")) << arguments[0];
    }
}

}  // namespace
}  // namespace Kestra::Test
