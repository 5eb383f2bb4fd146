#include <gtest/gtest.h>

#include <string>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

TEST(ToolOutput, OutputThatCannotBeWritten) {
    const std::string large(3000000, 'x');
    for (const std::string& input : {std::string("a"), large}) {
        for (const char* const format : {"text", "json"}) {
            ToolSettings settings;
            settings.input = input;
            settings.output = Sink::CLOSED_PIPE;
            const ToolRun pipe = RunTool({"tokens", "--charset", "1252", "--format", format}, settings);
            EXPECT_EQ(pipe.status, 1);
            EXPECT_EQ(pipe.errors, "") << "a reader that has seen enough is no error to talk about";

            settings.output = Sink::UNWRITABLE;
            const ToolRun disk = RunTool({"tokens", "--charset", "1252", "--format", format}, settings);
            EXPECT_EQ(disk.status, 1);
            EXPECT_EQ(disk.errors, "standard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n");

            settings.output = Sink::CLOSED;
            const ToolRun closed = RunTool({"tokens", "--charset", "1252", "--format", format}, settings);
            EXPECT_EQ(closed.status, 1);
            EXPECT_EQ(closed.errors, "standard output: cannot be written: " + GetReason(Sink::CLOSED) + "\n");
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
    settings.output = Sink::UNWRITABLE;
    const ToolRun run = RunTool({"tokens", "page", "page", "none"}, settings);
    EXPECT_EQ(run.status, 1);  // "none" is never reached
    EXPECT_EQ(run.errors, "standard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n");
    const ToolRun unreadable = RunTool({"tokens", "none", "page"}, settings);
    EXPECT_EQ(unreadable.status, 3);
    EXPECT_EQ(unreadable.errors,
              "none: cannot be read\nstandard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n");
}

TEST(ToolOutput, HelpThatCannotBeWritten) {
    ToolSettings settings;
    settings.output = Sink::UNWRITABLE;
    EXPECT_EQ(RunTool({"tokens", "--help"}, settings).status, 1);
    EXPECT_EQ(RunTool({"--version"}, settings).status, 1);
}

TEST(ToolOutput, DiagnosticsThatCannotBeWritten) {
    for (const Sink sink : {Sink::CLOSED, Sink::CLOSED_PIPE, Sink::UNWRITABLE}) {
        ToolSettings settings;
        settings.errors = sink;
        settings.input = "a";
        const ToolRun run = RunTool({"tokens", "--format", "json", "none", "-"}, settings);
        EXPECT_EQ(run.status, 3);
        EXPECT_NE(run.output.find("\"file\":\"-\""), std::string::npos);
    }
}

}  // namespace
}  // namespace Kestra::Test
