#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

const std::string COLOURED = "\x1B[1mtext\x1B[0m(a)";

TEST(ToolOutput, OutputThatCannotBeWritten) {
    const std::string large(3000000, 'x');
    for (const std::string& input : {std::string("a"), large}) {
        for (const char* const format : {"text", "json"}) {
            ToolSettings settings;
            settings.input = input;
            settings.output = Sink::CLOSED_PIPE;
            const ToolRun pipe = RunTool({"tokens", "--format", format}, settings);
            EXPECT_EQ(pipe.status, 1);
            EXPECT_EQ(pipe.errors, "") << "a reader that has seen enough is no error to talk about";

            settings.output = Sink::FULL_DISK;
            const ToolRun disk = RunTool({"tokens", "--format", format}, settings);
            EXPECT_EQ(disk.status, 1);
            EXPECT_EQ(disk.errors, "standard output: cannot be written: No space left on device\n");

            settings.output = Sink::CLOSED;
            const ToolRun closed = RunTool({"tokens", "--format", format}, settings);
            EXPECT_EQ(closed.status, 1);
            EXPECT_EQ(closed.errors, "standard output: cannot be written: Bad file descriptor\n");
        }
    }
}

TEST(ToolOutput, AFullDiskEndsTheRunInTheMiddle) {
    // So many tokens that their lines do not fit into the tool's own memory for them.
    std::string page;
    for (int i = 0; i < 100000; ++i)
        page += "<p>x</p>\n";
    const TemporaryFolder folder;
    folder.Write("page", page);
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    settings.output = Sink::FULL_DISK;
    const ToolRun run = RunTool({"tokens", "page", "page", "none"}, settings);
    EXPECT_EQ(run.status, 1);  // "none" is never reached
    EXPECT_EQ(run.errors, "standard output: cannot be written: No space left on device\n");
    const ToolRun unreadable = RunTool({"tokens", "none", "page"}, settings);
    EXPECT_EQ(unreadable.status, 3);
    EXPECT_EQ(unreadable.errors, "none: cannot be read\nstandard output: cannot be written: No space left on device\n");
}

TEST(ToolOutput, HelpThatCannotBeWritten) {
    ToolSettings settings;
    settings.output = Sink::FULL_DISK;
    EXPECT_EQ(RunTool({"tokens", "--help"}, settings).status, 1);
    EXPECT_EQ(RunTool({"--version"}, settings).status, 1);
}

TEST(ToolOutput, DiagnosticsThatCannotBeWritten) {
    for (const Sink sink : {Sink::CLOSED, Sink::CLOSED_PIPE, Sink::FULL_DISK}) {
        ToolSettings settings;
        settings.errors = sink;
        settings.input = "a";
        const ToolRun run = RunTool({"tokens", "--format", "json", "none", "-"}, settings);
        EXPECT_EQ(run.status, 3);
        EXPECT_NE(run.output.find("\"file\":\"-\""), std::string::npos);
    }
}

TEST(ToolOutput, ColourOnATerminalOnly) {
    ToolSettings settings;
    settings.input = "a";
    EXPECT_EQ(RunTool({"tokens"}, settings).output.find('\x1B'), std::string::npos);
    settings.output = Sink::TERMINAL;
    EXPECT_NE(RunTool({"tokens"}, settings).output.find(COLOURED), std::string::npos);
    EXPECT_EQ(RunTool({"tokens", "--format", "json"}, settings).output.find('\x1B'), std::string::npos);
}

TEST(ToolOutput, ColourCanBeForbidden) {
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

TEST(ToolOutput, ProgressOfSeveralFiles) {
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

TEST(ToolOutput, ProgressOfALargeFile) {
    ToolSettings settings;
    settings.errors = Sink::TERMINAL;
    settings.input = std::string(std::size_t{16} * 1024 * 1024, 'x');
    EXPECT_EQ(RunTool({"tokens", "--charset", "1252"}, settings).errors, "");
    settings.input->push_back('x');
    const ToolRun run = RunTool({"tokens", "--charset", "1252"}, settings);
    EXPECT_EQ(run.errors.substr(0, 11), "\r[1/1] - 0%");
    EXPECT_EQ(run.errors.back(), '\r') << "the line is gone at the end";
}

TEST(ToolOutput, ALongNameIsShortenedInTheProgressLine) {
    const TemporaryFolder folder;
    const std::string name = std::string(30, 'a') + "\xC3\xA9" + std::string(46, 'b');  // the cut would part the letter
    folder.Write(name, "");
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    settings.errors = Sink::TERMINAL;
    const ToolRun run = RunTool({"tokens", name, name}, settings);
    EXPECT_EQ(run.errors.substr(0, run.errors.find('%') + 1), "\r[1/2] ..." + std::string(46, 'b') + " 100%");
}

}  // namespace
}  // namespace Kestra::Test
