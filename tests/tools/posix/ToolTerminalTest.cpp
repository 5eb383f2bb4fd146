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

TEST_F(ToolTerminal, ColourOfEvents) {
    settings.input = "a<b>";
    EXPECT_FALSE(Contains(RunTool({"events"}, settings).output, '\x1B'));
    settings.output = Sink::TERMINAL;
    EXPECT_TRUE(Contains(RunTool({"events"}, settings).output, "\x1B[1mtext\x1B[0m(a)"));
    EXPECT_FALSE(Contains(RunTool({"events", "--format", "json"}, settings).output, '\x1B'));
}

/// A run that takes a second, because its input comes in two parts.
ToolRun RunSlowly(ToolSettings settings, Arguments arguments) {
    settings.input = std::string(20000, 'x') + "<p>";
    settings.pause = std::chrono::milliseconds(1000);
    settings.inputAfterPause = std::string(20000, 'y');
    return RunTool(arguments, settings);
}

TEST_F(ToolTerminal, ProgressOfALongRun) {
    Write("first.html", "a");
    settings.errors = Sink::TERMINAL;
    for (const Arguments& command :
         {Arguments{"tokens", "--charset", "1252"}, {"events"}, {"check", "--charset", "1252"}, {"detect"}}) {
        Arguments arguments = command;
        arguments.insert(arguments.end(), {"first.html", "none", "-"});
        const ToolRun run = RunSlowly(settings, arguments);
        EXPECT_EQ(run.status, 3);
        EXPECT_TRUE(Contains(run.errors, "none: cannot be read: no such file\n"));
        EXPECT_TRUE(Contains(run.errors, "\r[3/3] - 0.0 MB, ")) << command[0];
        EXPECT_EQ(run.errors.back(), '\r') << "the line is gone at the end";
        settings.errors = Sink::CAPTURED;
        EXPECT_EQ(RunSlowly(settings, arguments).errors, "none: cannot be read: no such file\n");
        settings.errors = Sink::TERMINAL;
    }
}

TEST_F(ToolTerminal, NoProgressIsLeftWhenTheOutputFails) {
    Write("first.html", "a");
    settings.errors = Sink::TERMINAL;
    for (const char* const command : {"tokens", "events", "check"}) {
        for (const char* const jobs : {"1", "2"}) {
            const Arguments arguments = {command, "--charset", "1252", "--jobs", jobs, "first.html", "-"};
            settings.output = Sink::CLOSED_PIPE;
            const ToolRun gone = RunSlowly(settings, arguments);
            EXPECT_EQ(gone.status, 141) << command << jobs;
            EXPECT_TRUE(Contains(gone.errors, "\r[2/2] - ")) << command << jobs;
            EXPECT_TRUE(gone.errors.ends_with("\r")) << command << jobs << gone.errors;
            settings.output = Sink::UNWRITABLE;
            const ToolRun full = RunSlowly(settings, arguments);
            EXPECT_EQ(full.status, 1) << command << jobs;
            EXPECT_TRUE(
                full.errors.ends_with("\rstandard output: cannot be written: " + GetReason(settings.output) + "\n"))
                << command << jobs << full.errors;
        }
    }
}

TEST(ToolTerminalOfBothStreams, AFailureIsSaidOnce) {
    for (const char* const command : {"tokens", "events", "check"}) {
        ToolSettings settings;
        settings.input = "<p>a</p><b class=abcdef>";
        settings.output = Sink::TERMINAL;
        settings.errors = Sink::TERMINAL;
        const Arguments arguments = {command, "--charset", "utf-8", "--max-token", "8"};
        const ToolRun both = RunTool(arguments, settings);
        EXPECT_EQ(both.status, 1) << command;
        const std::string text = both.output;
        const std::size_t first = text.find("a token is longer");
        EXPECT_NE(first, std::string::npos) << command << text;
        EXPECT_EQ(text.find("a token is longer", first + 1), std::string::npos) << command << text;

        settings.output = Sink::CAPTURED;
        EXPECT_TRUE(Contains(RunTool(arguments, settings).errors, "a token is longer")) << command;
    }
}

}  // namespace
}  // namespace Kestra::Test
