#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

const std::string COLOURED = "\x1B[1mtext\x1B[0m(a)";

TEST(ToolTerminal, ColourOnATerminalOnly) {
    ToolSettings settings;
    settings.input = "a";
    EXPECT_EQ(RunTool({"tokens"}, settings).output.find('\x1B'), std::string::npos);
    settings.output = Sink::TERMINAL;
    EXPECT_NE(RunTool({"tokens"}, settings).output.find(COLOURED), std::string::npos);
    EXPECT_EQ(RunTool({"tokens", "--format", "json"}, settings).output.find('\x1B'), std::string::npos);
}

TEST(ToolTerminal, ColourCanBeForbidden) {
    const struct {
        const char* name;
        const char* value;
        bool coloured;
    } CASES[] = {
        {"NO_COLOR", "1", false}, {"NO_COLOR", "0", false}, {"NO_COLOR", "", true},
        {"TERM", "dumb", false},  {"TERM", "", false},      {"TERM", "xterm-256color", true},
    };
    for (const auto& row : CASES) {
        ToolSettings settings;
        settings.input = "a";
        settings.output = Sink::TERMINAL;
        settings.environment[row.name] = row.value;
        const ToolRun run = RunTool({"tokens"}, settings);
        EXPECT_EQ(run.output.find(COLOURED) != std::string::npos, row.coloured) << row.name << "=" << row.value;
        EXPECT_EQ(run.output.find('\x1B') != std::string::npos, row.coloured) << row.name << "=" << row.value;
    }
}

TEST(ToolTerminal, ProgressOfSeveralFiles) {
    const TemporaryFolder folder;
    folder.Write("first.html", "a");
    folder.Write("second.html", "<a / >");
    folder.Write("empty.html", "");
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    const std::vector<std::string> several = {"tokens",     "--feed",      "buffer", "--charset", "1252",
                                              "first.html", "second.html", "none",   "empty.html"};
    const ToolRun quiet = RunTool(several, settings);
    EXPECT_EQ(quiet.errors.find('\r'), std::string::npos) << quiet.errors;

    settings.errors = Sink::TERMINAL;
    const ToolRun shown = RunTool(several, settings);
    EXPECT_EQ(shown.status, 3);
    EXPECT_EQ(shown.output, quiet.output);
    EXPECT_EQ(shown.errors,
              "\r[1/4] first.html 0%"
              "\r[2/4] second.html 0%"
              "\r                    \r"
              "second.html: parsing returned 11: malformed markup, a required part is missing or cannot be recognized; "
              "EndParse returned 16: the input ended inside a construct (line 1, column 6)\n"
              "none: cannot be read\n"
              "\r[4/4] empty.html 100%"
              "\r                     \r");

    const ToolRun single = RunTool({"tokens", "first.html"}, settings);
    EXPECT_EQ(single.errors, "");
}

TEST(ToolTerminal, ProgressOfALargeFile) {
    ToolSettings settings;
    settings.errors = Sink::TERMINAL;
    settings.input = std::string(std::size_t{16} * 1024 * 1024, 'x');
    EXPECT_EQ(RunTool({"tokens", "--charset", "1252"}, settings).errors, "");
    settings.input->push_back('x');
    const ToolRun run = RunTool({"tokens", "--charset", "1252"}, settings);
    EXPECT_EQ(run.errors.substr(0, 11), "\r[1/1] - 0%");
    EXPECT_EQ(run.errors.back(), '\r') << "the line is gone at the end";
}

TEST(ToolTerminal, ALongNameIsShortenedInTheProgressLine) {
    const TemporaryFolder folder;
    const std::string name = std::string(30, 'a') + "\xC3\xA9" + std::string(46, 'b');  // the cut would part the letter
    folder.Write(name, "");
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    settings.errors = Sink::TERMINAL;
    const ToolRun run = RunTool({"tokens", name, name}, settings);
    EXPECT_EQ(run.errors.substr(0, run.errors.find('%') + 1), "\r[1/2] ..." + std::string(46, 'b') + " 100%");
}

TEST(ToolTerminal, ColourOfEvents) {
    ToolSettings settings;
    settings.input = "a<b>";
    EXPECT_EQ(RunTool({"events"}, settings).output.find('\x1B'), std::string::npos);
    settings.output = Sink::TERMINAL;
    EXPECT_NE(RunTool({"events"}, settings).output.find("\x1B[1mtext\x1B[0m(a)"), std::string::npos);
    EXPECT_EQ(RunTool({"events", "--format", "json"}, settings).output.find('\x1B'), std::string::npos);
}

TEST(ToolTerminal, ProgressOfEvents) {
    const TemporaryFolder folder;
    folder.Write("first.html", "a");
    folder.Write("second.html", "b");
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    settings.errors = Sink::TERMINAL;
    EXPECT_EQ(RunTool({"events", "first.html"}, settings).errors, "");
    const ToolRun shown = RunTool({"events", "first.html", "second.html"}, settings);
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.errors.substr(0, 21), "\r[1/2] first.html 0%\r") << shown.errors;
}

TEST(ToolTerminal, ProgressOfChecks) {
    const TemporaryFolder folder;
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    const auto run = [&settings](std::vector<std::string> files) {
        files.insert(files.begin(), {"check", "--format", "json"});
        return RunTool(files, settings);
    };
    const std::string page = [] {
        std::string text;
        while (text.size() < 3000000)
            text += "<p class=x>text</p>\n";
        return text;
    }();
    folder.Write("first.html", page);
    folder.Write("second.html", "b");
    const ToolRun quiet = run({"first.html", "none", "second.html"});
    EXPECT_EQ(quiet.errors, "none: cannot be read\n");

    settings.errors = Sink::TERMINAL;
    const ToolRun shown = run({"first.html", "none", "second.html"});
    EXPECT_EQ(shown.status, 3);
    EXPECT_EQ(shown.output, quiet.output);
    EXPECT_EQ(shown.errors.substr(0, 21), "\r[1/3] first.html 0%\r") << shown.errors;
    EXPECT_NE(shown.errors.find("\rnone: cannot be read\n"), std::string::npos) << "the line is hidden first";
    EXPECT_TRUE(shown.errors.back() == '\r' || shown.errors.back() == '\n') << "and at the end";
    EXPECT_EQ(run({"second.html"}).errors, "") << "not for one small file";
}

}  // namespace
}  // namespace Kestra::Test
