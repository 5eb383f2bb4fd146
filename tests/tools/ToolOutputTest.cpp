#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolOutput = ToolTest;

TEST_F(ToolOutput, OutputThatCannotBeWritten) {
    const std::string large(3000000, 'x');
    for (const std::string& input : {std::string("a"), large}) {
        for (const char* const format : {"text", "json"}) {
            settings.input = input;
            settings.output = Sink::CLOSED_PIPE;
            EXPECT_TRUE(Ended(RunTool({"tokens", "--charset", "1252", "--format", format}, settings), 141, ""))
                << "a reader that has seen enough is no error to talk about";

            settings.output = Sink::UNWRITABLE;
            EXPECT_TRUE(Ended(RunTool({"tokens", "--charset", "1252", "--format", format}, settings), 1,
                              "standard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n"));

            settings.output = Sink::CLOSED;
            EXPECT_TRUE(Ended(RunTool({"tokens", "--charset", "1252", "--format", format}, settings), 1,
                              "standard output: cannot be written: " + GetReason(Sink::CLOSED) + "\n"));
        }
    }
}

TEST_F(ToolOutput, AFullDiskEndsTheRunInTheMiddle) {
    // So many tokens that their lines do not fit into the tool's own memory for them.
    std::string page;
    for (int i = 0; i < 100000; ++i)
        page += "<p>x</p>\n";
    Write("page", page);
    settings.output = Sink::UNWRITABLE;
    const ToolRun run = RunTool({"tokens", "page", "page", "none"}, settings);
    EXPECT_EQ(run.status, 1);  // "none" is never reached
    EXPECT_EQ(run.errors, "standard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n");
    EXPECT_TRUE(Ended(RunTool({"tokens", "none", "page"}, settings), 3,
                      "none: cannot be read: no such file\nstandard output: cannot be written: " +
                          GetReason(Sink::UNWRITABLE) + "\n"));
}

TEST_F(ToolOutput, HelpThatCannotBeWritten) {
    settings.output = Sink::UNWRITABLE;
    EXPECT_EQ(RunTool({"tokens", "--help"}, settings).status, 1);
    EXPECT_EQ(RunTool({"--version"}, settings).status, 1);
}

TEST_F(ToolOutput, DiagnosticsThatCannotBeWritten) {
    for (const Sink sink : {Sink::CLOSED, Sink::CLOSED_PIPE, Sink::UNWRITABLE}) {
        settings.errors = sink;
        settings.input = "a";
        const ToolRun run = RunTool({"tokens", "--format", "json", "none", "-"}, settings);
        EXPECT_EQ(run.status, 3);
        EXPECT_TRUE(Contains(run.output, "\"file\":\"-\""));
    }
}

}  // namespace
}  // namespace Kestra::Test
