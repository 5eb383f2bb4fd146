#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

constexpr const char* DIFFERENT = "ab<?xml a/ >c";
constexpr const char* DIAGNOSIS_704 = "EndParse returned 704: the tokens written back differ from the input";

/// Rates, the only numbers that differ from run to run, as "R".
std::string WithoutRates(std::string_view output) {
    static constexpr std::string_view UNIT = " MB/s";
    std::string text;
    std::size_t copied = 0;
    for (std::size_t end = output.find(UNIT); end != std::string_view::npos;
         end = output.find(UNIT, end + UNIT.size())) {
        const std::size_t begin = output.rfind(' ', end - 1) + 1;
        EXPECT_EQ(output.find_first_not_of("0123456789.", begin), end) << output;
        text.append(output.substr(copied, begin - copied)).push_back('R');
        copied = end;
    }
    return text.append(output.substr(copied));
}

class ToolCheck : public ToolTest {
protected:
    ToolRun Run(Arguments arguments) {
        arguments.insert(arguments.begin(), "check");
        return ToolTest::Run(arguments);
    }

    ToolRun RunOn(const std::string& input, Arguments arguments) {
        settings.input = input;
        return Run(std::move(arguments));
    }
};

TEST_F(ToolCheck, JsonOfAReproducedInput) {
    EXPECT_EQ(
        RunOn("<p>a</p><script>// b\n</script>", {"--format", "json"}),
        (ToolRun{0,
                 R"({"file":"-","bytes":30,"tokens":7,"endParse":0,"identical":true,"firstDifference":null,"parse":0})"
                 "\n",
                 ""}));
}

TEST_F(ToolCheck, JsonOfADifference) {
    EXPECT_EQ(
        RunOn(DIFFERENT, {"--format", "json", "--charset", "1252"}),
        (ToolRun{1,
                 R"({"file":"-","bytes":13,"tokens":3,"endParse":704,"identical":false,"firstDifference":9,"parse":0})"
                 "\n",
                 "-: "s + DIAGNOSIS_704 + " (line 1, column 14)\n"}));
}

TEST_F(ToolCheck, TextOfAReproducedInput) {
    const ToolRun run = RunOn("<p>a</p>", {});
    EXPECT_TRUE(Ended(run, 0, ""));
    EXPECT_EQ(WithoutRates(run.output),
              "-: ok, 8 bytes, 3 tokens, R MB/s\n1 file, 8 bytes, 3 tokens, R MB/s, 1 reproduced\n");
}

TEST_F(ToolCheck, TextOfADifferenceNamesTheByteAndItsToken) {
    const ToolRun run = RunOn(DIFFERENT, {"--charset", "1252"});
    EXPECT_TRUE(Ended(run, 1, "-: "s + DIAGNOSIS_704 + " (line 1, column 14)\n"));
    EXPECT_EQ(WithoutRates(run.output),
              "-: 704, the tokens written back differ from the input, 13 bytes, 3 tokens, R MB/s; "
              "first difference at byte 9, in the token from byte 2 on: extern(|xml|{ |a}| , slash)\n"
              "1 file, 13 bytes, 3 tokens, R MB/s, 0 reproduced\n");
}

TEST_F(ToolCheck, Utf16BodiesAreNotReproduced) {
    const ToolRun run = RunOn("\xFF\xFE<\0!\0-\0-\0a\0-\0-\0>\0x\0"s, {});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Contains(run.output, "first difference at byte 11, in the token from byte 2 on: comment(a)\n"));
    EXPECT_EQ(RunOn("\xFF\xFE<\0!\0-\0-\0-\0-\0>\0x\0"s, {}).status, 0) << "an empty body is whole";
}

TEST_F(ToolCheck, AnUnfinishedMarkBelongsToNoToken) {
    const struct {
        std::string input;
        const char* pieceSize;
        const char* sizes;
    } CASES[] = {
        {"\xEF", "0", "1 byte, 0 tokens"},          {"\xEF\xBB", "0", "2 bytes, 0 tokens"},
        {"\xEF\xBB", "1", "2 bytes, 0 tokens"},     {"\xFF", "0", "1 byte, 0 tokens"},
        {"\xEFxy", "1", "3 bytes, 1 token"},        {"\xEF\xBBx", "1", "3 bytes, 1 token"},
        {"\xEF\xBBx<b>", "2", "6 bytes, 2 tokens"},
    };
    for (const auto& row : CASES) {
        for (const char* const feed : {"stream", "buffer"}) {
            const ToolRun run = RunOn(row.input, {"--feed", feed, "--piece-size", row.pieceSize, "--charset", "1252"});
            EXPECT_TRUE(Ended(
                run, 1, "-: is not reproduced, the unfinished byte-order mark at its start belongs to no token\n"));
            EXPECT_TRUE(StartsWith(
                WithoutRates(run.output),
                "-: 0, but not reproduced, the unfinished byte-order mark at its start belongs to no token, " +
                    std::string(row.sizes) + ", R MB/s\n1 file, "));
        }
    }
    EXPECT_EQ(RunOn("\xEF\xBB", {"--format", "json"}).output,
              "{\"file\":\"-\",\"bytes\":2,\"tokens\":0,\"endParse\":0,\"identical\":false,\"firstDifference\":0,"
              "\"parse\":0}\n");
    EXPECT_EQ(RunOn("\xEF\xBBx", {}).status, 0) << "in one piece it is text";
    EXPECT_EQ(RunOn("\xEF\xBB", {"--input", "8bit"}).status, 0);
    const ToolRun both = RunOn("\xEF<?xml a/ >", {"--piece-size", "1", "--charset", "1252"});
    EXPECT_TRUE(Contains(both.output, "; first difference at byte 0, in no token\n"));
}

TEST_F(ToolCheck, AnotherResultCode) {
    const ToolRun run = RunOn("a<b / >", {"--feed", "buffer", "--charset", "1252"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Contains(
        run.output, "-: 11, malformed markup, a required part is missing or cannot be recognized, 7 bytes, 1 token, "));
    EXPECT_TRUE(Contains(run.output, "; first difference at byte 1, in the token from byte 0 on: text(a)\n"));
    EXPECT_TRUE(Contains(run.errors, "-: parsing returned 11: "));
    EXPECT_EQ(RunOn("a<b / >", {"--charset", "1252"}).status, 0) << "a stream is read again";
}

TEST_F(ToolCheck, AnEmptyInput) {
    const ToolRun run = RunOn("", {"--format", "json"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output,
              "{\"file\":\"-\",\"bytes\":0,\"tokens\":0,\"endParse\":0,\"identical\":true,\"firstDifference\":null,"
              "\"parse\":0}\n");
    EXPECT_EQ(RunOn("", {}).output,
              "-: ok, 0 bytes, 0 tokens, 0.0 MB/s\n1 file, 0 bytes, 0 tokens, 0.0 MB/s, 1 reproduced\n");
}

TEST_F(ToolCheck, TheOptionsOfThePassAreUsed) {
    // As UTF-16, as 8-bit text after what is no mark then, and in pieces that cut the condition in
    // two.
    EXPECT_TRUE(Contains(RunOn("a\0b\0"s, {"--input", "utf16", "--format", "json"}).output, "\"tokens\":1,"));
    EXPECT_EQ(RunOn("abc", {"--input", "utf16"}).status, 1);
    EXPECT_EQ(RunOn("\xEF", {"--input", "8bit"}).status, 0);
    EXPECT_EQ(RunOn("<![if x] tail>y", {}).status, 0);
    EXPECT_EQ(RunOn("<![if x] tail>y", {"--piece-size", "10"}).status, 1);
    EXPECT_EQ(RunOn("<![if x] tail>y", {"--piece-size", "10", "--feed", "buffer"}).status, 1);
    const std::string escaped = "\x1B$B<b>a\x1B(B";
    EXPECT_TRUE(Contains(RunOn(escaped, {"--charset", "50221", "--format", "json"}).output, "\"tokens\":1,"));
    EXPECT_TRUE(Contains(RunOn(escaped, {"--charset", "1252", "--format", "json"}).output, "\"tokens\":3,"));
}

TEST_F(ToolCheck, ALateCharsetIsFollowed) {
    const std::string declared = "<p>\xC1</p><meta charset=iso-2022-jp>\x1B$B<b>a\x1B(B";
    const ToolRun run = RunOn(declared, {"--format", "json"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(Contains(run.output, "\"tokens\":5,\"endParse\":0,\"identical\":true"));
    const ToolRun stopped = RunOn(declared, {"--format", "json", "--no-reparse"});
    EXPECT_EQ(stopped.status, 1);
    EXPECT_TRUE(Contains(stopped.output, "\"identical\":false"));
    EXPECT_TRUE(Contains(stopped.errors, "-: parsing returned 705: another charset was found"));
}

TEST_F(ToolCheck, AMissingFileDoesNotStopTheOthers) {
    Write("good", "<p>");
    Write("bad", DIFFERENT);
    const struct {
        Arguments files;
        int status;
        std::string errors;
        std::string output;
    } CASES[] = {
        {{"good", "none", "good"},
         3,
         "none: cannot be read: no such file\n",
         "good: ok, 3 bytes, 1 token, R MB/s\ngood: ok, 3 bytes, 1 token, R MB/s\n"
         "2 files, 6 bytes, 2 tokens, R MB/s, 2 reproduced, 1 not checked\n"},
        {{"none", "bad"},
         3,
         "none: cannot be read: no such file\nbad: "s + DIAGNOSIS_704 + " (line 1, column 14)\n",
         "bad: 704, the tokens written back differ from the input, 13 bytes, 3 tokens, R MB/s; "
         "first difference at byte 9, in the token from byte 2 on: extern(|xml|{ |a}| , slash)\n"
         "1 file, 13 bytes, 3 tokens, R MB/s, 0 reproduced, 1 not checked\n"},
        {{"none"},
         3,
         "none: cannot be read: no such file\n",
         "0 files, 0 bytes, 0 tokens, R MB/s, 0 reproduced, 1 not checked\n"},
        {{".", "good"},
         3,
         ".: cannot be read: it is a folder, use --recursive\n",
         "good: ok, 3 bytes, 1 token, R MB/s\n1 file, 3 bytes, 1 token, R MB/s, 1 reproduced, 1 not checked\n"},
        {{"good", "no\nne"},
         3,
         "no\\x0Ane: cannot be read: no such file\n",
         "good: ok, 3 bytes, 1 token, R MB/s\n1 file, 3 bytes, 1 token, R MB/s, 1 reproduced, 1 not checked\n"},
    };
    for (const auto& row : CASES) {
        for (const char* const jobs : {"1", "3"}) {
            Arguments arguments = row.files;
            arguments.insert(arguments.begin(), {"--charset", "1252", "--jobs", jobs});
            const ToolRun run = Run(arguments);
            EXPECT_TRUE(Ended(run, row.status, row.errors)) << testing::PrintToString(row.files);
            EXPECT_EQ(WithoutRates(run.output), row.output);
        }
    }
    const ToolRun json = Run({"--format", "json", "none", "good"});
    EXPECT_EQ(json.status, 3);
    EXPECT_EQ(json.output,
              "{\"error\":\"cannot be read: no such file\",\"file\":\"none\"}\n"
              "{\"file\":\"good\",\"bytes\":3,\"tokens\":1,\"endParse\":0,\"identical\":true,\"firstDifference\":null,"
              "\"parse\":0}\n")
        << "no summary, and only why of what was not checked";
}

TEST_F(ToolCheck, FoldersAreWalked) {
    Write("site/b.html", "b");
    Write("site/a/x.XHTML", "xx");
    Write("site/a/skipped.txt", DIFFERENT);
    Write("site/z.htm", "zzz");
    Write("notes.txt", "note");
    const ToolRun run = Run({"--recursive", "--format", "json", "notes.txt", "site"});
    EXPECT_EQ(run.status, 0) << run.errors;
    std::string files;
    for (std::size_t at = run.output.find("\"file\":\""); at != std::string::npos;
         at = run.output.find("\"file\":\"", at + 1))
        files += run.output.substr(at + 8, run.output.find('"', at + 8) - at - 8) + ";";
    for (std::size_t at = files.find("\\\\"); at != std::string::npos; at = files.find("\\\\"))
        files.replace(at, 2, "/");  // the separator of Windows
    EXPECT_EQ(files, "notes.txt;site/a/x.XHTML;site/b.html;site/z.htm;");

    const ToolRun missing = Run({"--recursive", "none", "site"});
    EXPECT_TRUE(Ended(missing, 3, "none: cannot be read: no such file\n"));
    EXPECT_TRUE(Contains(missing.output, "\n3 files, 6 bytes, 3 tokens, "));
    EXPECT_TRUE(Ended(Run({"site"}), 3, "site: cannot be read: it is a folder, use --recursive\n"));

    fs::create_directory(folder.GetPath() / "empty");
    const ToolRun nothing = Run({"--recursive", "empty"});
    EXPECT_EQ(nothing.status, 0);
    EXPECT_EQ(nothing.output, "0 files, 0 bytes, 0 tokens, 0.0 MB/s, 0 reproduced\n");
}

TEST_F(ToolCheck, TheOutputStaysInOrderWhateverTheThreads) {
    // Long and short ones in turn, so that later ones are ready first.
    Arguments arguments = {"--format", "json", "--charset", "1252"};
    std::string expected;
    std::string expectedErrors;
    for (std::size_t i = 0; i < 120; ++i) {
        const std::string name = "page" + std::to_string(i);
        const std::size_t size = i % 10 == 0 ? 300000 : i;
        arguments.push_back(name);
        if (i % 7 == 3) {
            expectedErrors += name + ": cannot be read: no such file\n";
            expected += "{\"error\":\"cannot be read: no such file\",\"file\":\"" + name + "\"}\n";
            continue;
        }
        Write(name, std::string(size, 'x'));
        expected += "{\"file\":\"" + name + "\",\"bytes\":" + std::to_string(size) +
                    ",\"tokens\":" + (size > 0 ? "1" : "0") +
                    ",\"endParse\":0,\"identical\":true,\"firstDifference\":null,\"parse\":0}\n";
    }
    for (const char* const jobs : {"1", "2", "16", "1024"}) {
        Arguments withJobs = arguments;
        withJobs.insert(withJobs.begin(), {"--jobs", jobs});
        EXPECT_EQ(Run(withJobs), (ToolRun{3, expected, expectedErrors})) << jobs;
    }
}

TEST_F(ToolCheck, StandardInputAmongFiles) {
    Write("file", "f");
    settings.input = "<p>s";
    const ToolRun run = Run({"--format", "json", "--jobs", "4", "file", "-", "file"});
    EXPECT_EQ(run.status, 0) << run.errors;
    const auto line = [](const std::string& name, const std::string& sizes) {
        return "{\"file\":\"" + name + "\"," + sizes +
               ",\"endParse\":0,\"identical\":true,\"firstDifference\":null,\"parse\":0}\n";
    };
    const std::string file = line("file", "\"bytes\":1,\"tokens\":1");
    EXPECT_EQ(run.output, file + line("-", "\"bytes\":4,\"tokens\":2") + file);

    settings.input.reset();
    EXPECT_EQ(Run({"--format", "json", "-", "file"}),
              (ToolRun{3, "{\"error\":\"cannot be read: Bad file descriptor\",\"file\":\"-\"}\n" + file,
                       "-: cannot be read: Bad file descriptor\n"}));
}

TEST_F(ToolCheck, OutputThatCannotBeWritten) {
    Arguments arguments = {"--jobs", "2"};
    for (int i = 0; i < 2000; ++i)
        arguments.emplace_back("page");
    Write("page", "a");
    settings.output = Sink::UNWRITABLE;
    EXPECT_TRUE(Ended(Run(arguments), 1, "standard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n"));
    EXPECT_TRUE(Ended(Run({"none", "page"}), 3,
                      "none: cannot be read: no such file\nstandard output: cannot be written: " +
                          GetReason(Sink::UNWRITABLE) + "\n"));
    settings.output = Sink::CLOSED_PIPE;
    EXPECT_TRUE(Ended(Run(arguments), 141, ""));
}

TEST_F(ToolCheck, TheExamplePage) {
    const ToolRun run = Run({"--recursive", KESTRA_EXAMPLE_PAGES});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(Contains(run.output, "saltmarsh-point.html: ok, "));
}

}  // namespace
}  // namespace Kestra::Test
