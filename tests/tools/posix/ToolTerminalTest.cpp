#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolTerminal = ToolTest;

const std::string COLOURED = "\x1B[1mtext\x1B[0m(a)";

TEST_F(ToolTerminal, ColourOnATerminalOnly) {
    settings.input = "a";
    EXPECT_FALSE(Contains(RunTool({"tokens"}, settings).output, '\x1B'));
    settings.output = Sink::TERMINAL;
    EXPECT_TRUE(Contains(RunTool({"tokens"}, settings).output, COLOURED));
    EXPECT_FALSE(Contains(RunTool({"tokens", "--format", "json"}, settings).output, '\x1B'));
}

TEST_F(ToolTerminal, ColourCanBeForbidden) {
    const struct {
        const char* name;
        const char* value;
        bool coloured;
    } CASES[] = {
        {"NO_COLOR", "1", false}, {"NO_COLOR", "0", false}, {"NO_COLOR", "", true},
        {"TERM", "dumb", false},  {"TERM", "", false},      {"TERM", "xterm-256color", true},
    };
    for (const auto& row : CASES) {
        settings.input = "a";
        settings.output = Sink::TERMINAL;
        settings.environment = {{row.name, row.value}};
        const ToolRun run = RunTool({"tokens"}, settings);
        EXPECT_EQ(run.output.find(COLOURED) != std::string::npos, row.coloured) << row.name << "=" << row.value;
        EXPECT_EQ(run.output.find('\x1B') != std::string::npos, row.coloured) << row.name << "=" << row.value;
    }
}

TEST_F(ToolTerminal, ProgressOfSeveralFiles) {
    Write("first.html", "a");
    Write("second.html", "<a / >");
    Write("empty.html", "");
    const Arguments several = {"tokens",     "--feed",      "buffer", "--charset", "1252",
                               "first.html", "second.html", "none",   "empty.html"};
    const ToolRun quiet = RunTool(several, settings);
    EXPECT_FALSE(Contains(quiet.errors, '\r'));

    settings.errors = Sink::TERMINAL;
    EXPECT_EQ(
        RunTool(several, settings),
        (ToolRun{
            3, quiet.output,
            "\r[1/4] first.html 0%"
            "\r[2/4] second.html 0%"
            "\r                    \r"
            "second.html: parsing returned 11: malformed markup, a required part is missing or cannot be recognized; "
            "EndParse returned 16: the input ended inside a construct (line 1, column 6)\n"
            "none: cannot be read\n"
            "\r[4/4] empty.html 100%"
            "\r                     \r"}));

    const ToolRun single = RunTool({"tokens", "first.html"}, settings);
    EXPECT_EQ(single.errors, "");
}

TEST_F(ToolTerminal, ProgressOfALargeFile) {
    settings.errors = Sink::TERMINAL;
    settings.input = std::string(std::size_t{16} * 1024 * 1024, 'x');
    EXPECT_EQ(RunTool({"tokens", "--charset", "1252"}, settings).errors, "");
    settings.input->push_back('x');
    const ToolRun run = RunTool({"tokens", "--charset", "1252"}, settings);
    EXPECT_EQ(run.errors.substr(0, 11), "\r[1/1] - 0%");
    EXPECT_EQ(run.errors.back(), '\r') << "the line is gone at the end";
}

TEST_F(ToolTerminal, ALongNameIsShortenedInTheProgressLine) {
    const std::string name = std::string(30, 'a') + "\xC3\xA9" + std::string(46, 'b');  // the cut would part the letter
    Write(name, "");
    settings.errors = Sink::TERMINAL;
    const ToolRun run = RunTool({"tokens", name, name}, settings);
    EXPECT_EQ(run.errors.substr(0, run.errors.find('%') + 1), "\r[1/2] ..." + std::string(46, 'b') + " 100%");
}

TEST_F(ToolTerminal, ColourOfEvents) {
    settings.input = "a<b>";
    EXPECT_FALSE(Contains(RunTool({"events"}, settings).output, '\x1B'));
    settings.output = Sink::TERMINAL;
    EXPECT_TRUE(Contains(RunTool({"events"}, settings).output, "\x1B[1mtext\x1B[0m(a)"));
    EXPECT_FALSE(Contains(RunTool({"events", "--format", "json"}, settings).output, '\x1B'));
}

TEST_F(ToolTerminal, ProgressOfEvents) {
    Write("first.html", "a");
    Write("second.html", "b");
    settings.errors = Sink::TERMINAL;
    EXPECT_EQ(RunTool({"events", "first.html"}, settings).errors, "");
    const ToolRun shown = RunTool({"events", "first.html", "second.html"}, settings);
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.errors.substr(0, 21), "\r[1/2] first.html 0%\r") << shown.errors;
}

TEST_F(ToolTerminal, ProgressOfChecks) {
    const auto run = [this](Arguments files) {
        files.insert(files.begin(), {"check", "--format", "json"});
        return RunTool(files, settings);
    };
    const std::string page = [] {
        std::string text;
        while (text.size() < 3000000)
            text += "<p class=x>text</p>\n";
        return text;
    }();
    Write("first.html", page);
    Write("second.html", "b");
    const ToolRun quiet = run({"first.html", "none", "second.html"});
    EXPECT_EQ(quiet.errors, "none: cannot be read\n");

    settings.errors = Sink::TERMINAL;
    const ToolRun shown = run({"first.html", "none", "second.html"});
    EXPECT_EQ(shown.status, 3);
    EXPECT_EQ(shown.output, quiet.output);
    EXPECT_EQ(shown.errors.substr(0, 21), "\r[1/3] first.html 0%\r") << shown.errors;
    EXPECT_TRUE(Contains(shown.errors, "\rnone: cannot be read\n")) << "the line is hidden first";
    EXPECT_TRUE(shown.errors.back() == '\r' || shown.errors.back() == '\n') << "and at the end";
    EXPECT_EQ(run({"second.html"}).errors, "") << "not for one small file";
}

}  // namespace
}  // namespace Kestra::Test
