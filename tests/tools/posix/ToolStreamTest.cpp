#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include "tests/tools/ToolRun.h"

/// @file
/// Inputs that have no end, or that come in parts.

namespace Kestra::Test {
namespace {

/// Runs a command of the shell in which "$TOOL" is the tool.
std::string RunShell(const std::string& command) {
    const std::string line = "TOOL='" KESTRA_TOOL "'; " + command;
    FILE* const pipe = popen(line.c_str(), "r");  // NOLINT(cert-env33-c)
    std::string output;
    char block[4096];
    for (std::size_t count = 0; (count = fread(block, 1, sizeof(block), pipe)) > 0;)
        output.append(block, count);
    pclose(pipe);
    return output;
}

TEST(ToolStream, TheTokensOfAPipeAppearAsTheyCome) {
    const struct {
        const char* note;
        const char* begin;
        const char* arguments;
        const char* first;
    } CASES[] = {
        {"the charset is given", "", "tokens --charset utf-8", "     1:1     start-parsing\n"},
        {"a mark gives it", "printf '\\357\\273\\277';", "tokens", "     1:1     start-parsing\n"},
        {"the markup gives it", "printf '<meta charset=utf-8>';", "tokens", "     1:1     start-parsing\n"},
        {"nothing is parsed again", "", "tokens --no-reparse --format json", "{\"event\":\"StartParsing\"}\n"},
        {"nothing can be found too late", "", "tokens --observer narrow", "     1:1     start-parsing\n"},
        {"events have one pass", "", "events", "     1:1     start-parsing\n"},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(RunShell(std::string("{ ") + row.begin + " yes '<p>x'; } 2>/dev/null | \"$TOOL\" " + row.arguments +
                           " | head -n 1"),
                  row.first)
            << row.note;
}

TEST(ToolStream, AReaderThatHasSeenEnoughEndsItWithTheUsualStatus) {
    for (const char* const command : {"tokens --charset utf-8", "events", "rewrite"})
        EXPECT_EQ(RunShell(std::string("{ { yes '<p>x' 2>/dev/null | \"$TOOL\" ") + command +
                           "; echo $? >&2; } | head -n 1 >/dev/null; } 2>&1"),
                  "141\n")
            << command;
}

TEST(ToolStream, WhatIsThereIsParsedWhenLinesAreWantedAtOnce) {
    const TemporaryFolder folder;
    const std::string file = (folder.GetPath() / "output").string();
    for (const char* const command : {"tokens --charset 1252", "events"}) {
        // The second part comes when the first one has been seen.
        RunShell(
            "{ printf '<p>one</p> two'; i=0; while [ $i -lt 600 ]; do "
            "if grep -q 'end(' '" +
            file +
            "'; then printf '<seen>'; break; fi; sleep 0.1; i=$((i + 1)); done; } | "
            "\"$TOOL\" " +
            command + " --line-buffered >'" + file + "'");
        EXPECT_TRUE(Contains(ReadFile(file), "(|seen|") || Contains(ReadFile(file), "start(seen|")) << command;
    }
}

TEST(ToolStream, PiecesAreTheSameHoweverAPipeIsWritten) {
    ToolSettings settings;
    const std::string page = "<p>\xC3\xA9</p><!-- a comment --><![if x] tail>" + Repeat("<b / >text", 5000);
    for (const char* const command : {"tokens", "events"}) {
        const Arguments arguments = {command, "--format", "json", "--charset", "utf-8"};
        settings.input = page;
        const ToolRun whole = RunTool(arguments, settings);
        settings.input = page.substr(0, 22);
        settings.pause = std::chrono::milliseconds(200);
        settings.inputAfterPause = page.substr(22);
        EXPECT_EQ(RunTool(arguments, settings), whole) << command;
        settings.inputAfterPause.clear();
        settings.pause = {};
    }
}

TEST(ToolStream, APipeIsParsedAsAFileIs) {
    const TemporaryFolder folder;
    std::string page = "<p class=x>text</p><!-- a comment --><script>'a' /* b */ // c\n</script><![if x] tail>";
    page += Repeat("<b / ><a b='c'/ ><?x y/ ><p>", 3000) + "<open";
    const std::string file = folder.Write("page", page).string();
    ToolSettings settings;
    settings.input = page;
    for (const char* const options : {"--charset=1252", "--no-reparse", "--self-check=copy"}) {
        for (const char* const pieceSize : {"0", "100", "20000"}) {
            ToolRun fromFile =
                RunTool({"tokens", "--format", "json", "--places", options, "--piece-size", pieceSize, file});
            const ToolRun fromPipe =
                RunTool({"tokens", "--format", "json", "--places", options, "--piece-size", pieceSize}, settings);
            for (std::string* const text : {&fromFile.output, &fromFile.errors}) {
                for (std::size_t at = text->find(file); at != std::string::npos; at = text->find(file))
                    text->replace(at, file.size(), "-");
            }
            EXPECT_TRUE(fromPipe == fromFile) << options << " " << pieceSize;
        }
    }
}

TEST(ToolStream, OnATerminalATemporaryFileIsRemarkedOn) {
    ToolSettings settings;
    settings.input = std::string(1500000, 'x');
    EXPECT_EQ(RunTool({"tokens"}, settings).errors, "");
    settings.errors = Sink::TERMINAL;
    EXPECT_TRUE(Contains(RunTool({"tokens"}, settings).errors, "-: kept in a temporary file, because "));
    EXPECT_FALSE(Contains(RunTool({"tokens", "--charset", "1252"}, settings).errors, "temporary"));
}

TEST(ToolStream, TmpdirIsWhereTemporaryFilesAre) {
    const TemporaryFolder folder;
    const std::string missing = (folder.GetPath() / "missing").string();
    const std::string page = "<p>" + std::string(5000000, 'x') + "</p>";
    for (const char* const format : {"text", "json"}) {
        ToolSettings settings;
        settings.input = page;
        settings.environment["TMPDIR"] = missing;
        const std::string why =
            "cannot be kept in a temporary file: the folder " + missing + " is full, read-only or missing";
        const ToolRun tokens = RunTool({"tokens", "--format", format}, settings);
        EXPECT_TRUE(Ended(tokens, 1, "-: " + why + "\n"));
        EXPECT_EQ(tokens.output, format == std::string("text")
                                     ? ""
                                     : "{\"event\":\"Error\",\"error\":\"" + why + "\",\"file\":\"-\"}\n");
        EXPECT_EQ(RunTool({"tokens", "--format", format, "--charset", "1252"}, settings).status, 0)
            << "nothing is kept";
        const ToolRun check = RunTool({"check", "--format", format}, settings);
        EXPECT_TRUE(Ended(check, 1, "-: " + why + "\n"));
        const std::string file = folder.Write("page", page).string();
        const ToolRun copy = RunTool({"check", "--format", format, file}, settings);
        EXPECT_EQ(copy.status, 1);
        EXPECT_TRUE(Contains(copy.errors, "EndParse returned 704: the temporary file for the copy of the tokens "));
        settings.environment["TMPDIR"] = folder.GetPath().string();
        EXPECT_EQ(RunTool({"check", "--format", format, file}, settings).status, 0);
        settings.environment["TMPDIR"] = "";
        EXPECT_EQ(RunTool({"check", "--format", format, file}, settings).status, 0) << "the folder of the system";
    }
}

TEST(ToolStream, TmpdirMayHaveAnyBytesAndAnyLength) {
    const TemporaryFolder folder;
    ToolSettings settings;
    settings.input = "<p>" + std::string(3000000, 'x') + "</p>";
    const fs::path unusual = folder.GetPath() / "not\xFFUTF-8";
    settings.environment["TMPDIR"] = unusual.string();
    const std::string why = "-: cannot be kept in a temporary file: the folder ";
    EXPECT_TRUE(Ended(RunTool({"tokens"}, settings), 1,
                      why + (folder.GetPath() / "not\\xFFUTF-8").string() + " is full, read-only or missing\n"));
    fs::create_directory(unusual);
    fs::last_write_time(unusual, fs::file_time_type::clock::now() - std::chrono::hours(1));
    const fs::file_time_type before = fs::last_write_time(unusual);
    EXPECT_TRUE(Ended(RunTool({"tokens"}, settings), 0, ""));
    EXPECT_GT(fs::last_write_time(unusual), before) << "no file was made in it";
    EXPECT_TRUE(fs::is_empty(unusual));
    const std::string tooLong = folder.GetPath().string() + Repeat("/folder", 1000);
    settings.environment["TMPDIR"] = tooLong;
    EXPECT_TRUE(Ended(RunTool({"tokens"}, settings), 1, why + tooLong + " is full, read-only or missing\n"));
}

/// The tool between two pipes whose ends do not wait: it reads before there is anything, and writes
/// more than there is room for.
TEST(ToolStream, PipesThatDoNotWaitAreWaitedFor) {
    std::signal(SIGPIPE, SIG_IGN);  // the tool may end early
    for (const Arguments& arguments :
         {Arguments{"tokens", "--charset", "1252"}, {"tokens"}, {"events"}, {"rewrite"}, {"view"}}) {
        int input[2];
        int output[2];
        ASSERT_EQ(pipe2(input, O_CLOEXEC | O_NONBLOCK), 0);
        ASSERT_EQ(pipe2(output, O_CLOEXEC | O_NONBLOCK), 0);
        fcntl(input[1], F_SETFL, 0);
        fcntl(output[0], F_SETFL, 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(input[0], STDIN_FILENO);
            dup2(output[1], STDOUT_FILENO);
            std::vector<const char*> words = {KESTRA_TOOL};
            for (const std::string& word : arguments)
                words.push_back(word.c_str());
            words.push_back(nullptr);
            execv(KESTRA_TOOL, const_cast<char**>(words.data()));  // NOLINT(cppcoreguidelines-pro-type-const-cast)
            _exit(127);
        }
        close(input[0]);
        close(output[1]);
        const std::string page = Repeat("<p class=x>text</p>\n", 20000);
        std::string read;
        std::thread writer([&] {
            const std::size_t half = page.size() / 2;
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            EXPECT_EQ(write(input[1], page.data(), half), static_cast<ssize_t>(half));
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            EXPECT_EQ(write(input[1], page.data() + half, half), static_cast<ssize_t>(half));
            close(input[1]);
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(600));
        char block[4096];
        for (ssize_t count = 0; (count = ::read(output[0], block, sizeof(block))) > 0;)
            read.append(block, static_cast<std::size_t>(count));
        writer.join();
        close(output[0]);
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << arguments.front();
        EXPECT_TRUE(read == RunToolOn(page, arguments).output) << arguments.front();
    }
}

TEST(ToolStream, WhatCannotBeReadSaysWhy) {
    const TemporaryFolder folder;
    const std::string forbidden = folder.Write("forbidden", "x").string();
    chmod(forbidden.c_str(), 0);
    if (geteuid() == 0) {  // for whom nothing is forbidden
        EXPECT_EQ(RunTool({"tokens", forbidden}).status, 0);
    } else {
        EXPECT_TRUE(Ended(RunTool({"tokens", forbidden}), 3, forbidden + ": cannot be read: permission denied\n"));
    }
    const std::string broken = "/proc/self/mem";  // opens, and cannot be read at its start
    EXPECT_TRUE(Ended(RunTool({"tokens", broken}), 3, broken + ": cannot be read\n"));
    EXPECT_TRUE(Contains(RunTool({"check", "--format", "json", broken}).output, "{\"error\":\"cannot be read\","));
}

}  // namespace
}  // namespace Kestra::Test
