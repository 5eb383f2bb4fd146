#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

/// Runs the tool in a folder with a good file "good" and a file "bad" whose parse fails when it is
/// fed as a buffer.
class ToolFiles : public ToolTest {
protected:
    ToolFiles() {
        Write("good", "a");
        Write("bad", "<a / >");
        settings.input = "s";
    }

    ToolRun Run(Arguments arguments) {
        arguments.insert(arguments.begin(), {"tokens", "--feed", "buffer", "--charset", "1252"});
        return ToolTest::Run(arguments);
    }

    /// The names in the result lines, in order.
    static std::string Files(const std::string& output) {
        static constexpr std::string_view MEMBER = "\"file\":\"";
        std::string names;
        for (std::size_t at = output.find(MEMBER); at != std::string::npos; at = output.find(MEMBER, at + 1)) {
            const std::size_t begin = at + MEMBER.size();
            names += output.substr(begin, output.find('"', begin) - begin) + ";";
        }
        return names;
    }
};

constexpr const char* BAD =
    "bad: parsing returned 11: malformed markup, a required part is missing or cannot be recognized; "
    "EndParse returned 16: the input ended inside a construct (line 1, column 6)\n";

TEST_F(ToolFiles, ExitStatus) {
    const struct {
        Arguments files;
        int status;
        std::string errors;
        std::string results;
    } CASES[] = {
        {{"good"}, 0, "", "good;"},
        {{"good", "good"}, 0, "", "good;good;"},
        {{"bad"}, 1, BAD, "bad;"},
        {{"bad", "good"}, 1, BAD, "bad;good;"},
        {{"good", "bad"}, 1, BAD, "good;bad;"},
        {{"none"}, 3, "none: cannot be read: no such file\n", "none;"},
        {{"none", "good"}, 3, "none: cannot be read: no such file\n", "none;good;"},
        {{"none", "bad"}, 3, std::string("none: cannot be read: no such file\n") + BAD, "none;bad;"},
        {{"bad", "none", "good"}, 3, std::string(BAD) + "none: cannot be read: no such file\n", "bad;none;good;"},
        {{"."}, 3, ".: cannot be read: it is a folder, use --recursive\n", ".;"},
        {{""}, 3, ": cannot be read: no such file\n", ";"},
        {{"good/x"}, 3, "good/x: cannot be read: no such file\n", "good/x;"},
        {{"no\nne"}, 3, "no\\x0Ane: cannot be read: no such file\n", "no\\nne;"},
        {{"n\x01o\t\x1B[2J\x7F"},
         3,
         "n\\x01o\\x09\\x1B[2J\\x7F: cannot be read: no such file\n",
         "n\\u0001o\\t\\u001b[2J\\u007f;"},
        {{"n\xC2\x9B\xE2\x80\xAElmth"},
         3,
         "n\\u009B\\u202Elmth: cannot be read: no such file\n",
         "n\\u009b\\u202elmth;"},
        {{"good", "--bogus"},
         2,
         "kestra-html: tokens: there is no option --bogus (see kestra-html tokens --help)\n",
         ""},
    };
    for (const auto& row : CASES) {
        Arguments arguments = row.files;
        arguments.insert(arguments.begin(), {"--format", "json"});
        const ToolRun run = Run(arguments);
        EXPECT_TRUE(Ended(run, row.status, row.errors)) << testing::PrintToString(row.files);
        EXPECT_EQ(Files(run.output), row.results) << testing::PrintToString(row.files);
    }
}

TEST_F(ToolFiles, StandardInput) {
    EXPECT_EQ(Files(Run({"--format", "json"}).output), "-;");
    EXPECT_EQ(Files(Run({"--format", "json", "good", "-", "good"}).output), "good;-;good;");
    settings.input.reset();
    const ToolRun closed = Run({"--format", "json", "-", "good"});
    EXPECT_TRUE(Ended(closed, 3, "-: cannot be read: Bad file descriptor\n"));
    EXPECT_EQ(Files(closed.output), "-;good;");
    EXPECT_TRUE(StartsWith(closed.output,
                           R"({"event":"Error","error":"cannot be read: Bad file descriptor","file":"-"})"
                           "\n"));
}

TEST_F(ToolFiles, StandardInputIsNamedOnce) {
    Write("list", "-\ngood\n-\n");
    for (const Arguments& command :
         {Arguments{"tokens"}, {"events"}, {"check"}, {"detect"}, {"rewrite", "--dry-run"}}) {
        for (const Arguments& names : {Arguments{"-", "-"}, {"good", "-", "none", "-"}, {"--files-from", "list"}}) {
            Arguments arguments = command;
            arguments.insert(arguments.end(), names.begin(), names.end());
            const ToolRun run = ToolTest::Run(arguments);
            EXPECT_TRUE(
                Ended(run, 2, "kestra-html: standard input is named more than once, but can be read only once\n"))
                << command[0];
            EXPECT_EQ(run.output, "") << command[0];
        }
    }
}

TEST_F(ToolFiles, ALargeInputThroughAPipe) {
    const std::string text(5000000, 'x');
    const ToolRun run = RunToolOn(text, {"tokens", "--charset", "1252", "--format", "json"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(Contains(run.output, "{\"event\":\"Text\",\"text\":\"" + text + "\"}\n"));
}

TEST_F(ToolFiles, BytesArriveAsTheyAre) {
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes.push_back(static_cast<char>(i == '<' ? 'x' : i));
    Write("bytes", bytes);
    const ToolRun file = Run({"--format", "json", "--observer", "narrow", "bytes"});
    EXPECT_TRUE(Contains(file.output, R"("\u0000\u0001\u0002\u0003\u0004\u0005\u0006\u0007\b\t\n\u000b\f\r\u000e)"));
    EXPECT_TRUE(Contains(file.output, R"(\u0019\u001a\u001b)"));
    EXPECT_TRUE(Contains(file.output, R"(~\u007f\u0080)"));
    EXPECT_TRUE(Contains(file.output, R"(\u00fe\u00ff")"));
    settings.input = bytes;
    const ToolRun pipe = Run({"--format", "json", "--observer", "narrow", "-"});
    EXPECT_EQ(pipe.output.substr(0, pipe.output.find("\"file\"")), file.output.substr(0, file.output.find("\"file\"")));
}

TEST_F(ToolFiles, SeveralFilesHaveHeadersInTheTextFormat) {
    EXPECT_FALSE(Contains(Run({"good"}).output, "==>"));
    const ToolRun run = Run({"good", "none", "good"});
    const std::string lines =
        "     1:1     start-parsing\n     1:1     text(a)\n     1:2     end-parsing\nbytes    1\ntokens   1: text 1\n"
        "charset  1252 (windows-1252)\nresult   0, success\n";
    EXPECT_EQ(run.output, "==> good <==\n" + lines + "\n==> good <==\n" + lines);
    EXPECT_EQ(run.errors, "none: cannot be read: no such file\n");
}

TEST_F(ToolFiles, HelpAndVersionReadNothing) {
    const ToolRun version = ToolTest::Run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "kestra-html " KESTRA_VERSION "\n");
    const ToolRun help = ToolTest::Run({"tokens", "--help", "none"});
    EXPECT_TRUE(Ended(help, 0, ""));
    EXPECT_EQ(help.output.substr(0, 38), "Print the token stream of every input\n");
    EXPECT_EQ(ToolTest::Run({}), (ToolRun{2, "",
                                          "kestra-html: a subcommand is required: tokens, events, check, detect, "
                                          "rewrite or view (see kestra-html --help)\n"}));
}

}  // namespace
}  // namespace Kestra::Test
