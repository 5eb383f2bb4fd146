#include "tests/tools/ToolRun.h"
#include "tests/tools/windows/Screen.h"
#include "tests/tools/windows/ToolProcess.h"
#include "tools/kestra-html/output/Progress.h"
#include "tools/kestra-html/system/Terminal.h"
#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Test {
namespace {

/// Letters of several scripts, and one of two units of UTF-16.
const std::string TEXT = "Caf\xC3\xA9 \xD0\x96 \xE2\x82\xAC \xF0\x9F\x98\x80.";

const std::string REPLACEMENT = "\xEF\xBF\xBD";

/// Sets the code page of the console for a while.
class CodePage {
public:
    explicit CodePage(UINT code) : former(GetConsoleOutputCP()) {
        Checked(SetConsoleOutputCP(code), "SetConsoleOutputCP");
    }
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;
    ~CodePage() {
        SetConsoleOutputCP(former);
    }

private:
    UINT former;
};

/// Makes a screen the standard output of this process for a while.
class OutputTo {
public:
    explicit OutputTo(HANDLE handle) : former(GetStdHandle(STD_OUTPUT_HANDLE)) {
        SetStdHandle(STD_OUTPUT_HANDLE, handle);
    }
    OutputTo(const OutputTo&) = delete;
    OutputTo& operator=(const OutputTo&) = delete;
    ~OutputTo() {
        SetStdHandle(STD_OUTPUT_HANDLE, former);
    }

private:
    HANDLE former;
};

/// Units that one call to the console shows at most; 0 for none, which is no failure.
DWORD mostShown = MAXDWORD;

BOOL WINAPI WriteConsoleShort(HANDLE console, const void* units, DWORD count, DWORD* written, void* reserved) {
    using Call = BOOL(WINAPI*)(HANDLE, const void*, DWORD, DWORD*, void*);
    static const Call real = reinterpret_cast<Call>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "WriteConsoleW")));
    *written = 0;
    return mostShown == 0 ? TRUE : real(console, units, std::min(count, mostShown), written, reserved);
}

std::string Words(DWORD error) {
    wchar_t text[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, error, 0, text,
                                        static_cast<DWORD>(std::size(text)), nullptr);
    const std::wstring_view line(text, length);
    return Tool::FromWide(line.substr(0, line.find_last_not_of(L" .\r\n") + 1));
}

ToolRun ShowTokens(const std::string& input, std::vector<std::string> more = {}) {
    ToolSettings settings;
    settings.input = input;
    settings.output = Sink::TERMINAL;
    settings.environment["NO_COLOR"] = "1";
    more.insert(more.begin(), "tokens");
    return RunTool(more, settings);
}

TEST(Console, TextIsRightInEveryCodePage) {
    for (const UINT code : {437U, 850U, 932U, 1251U, 1252U, 65001U}) {
        const CodePage codePage(code);
        ASSERT_EQ(GetConsoleOutputCP(), code);
        const ToolRun run = ShowTokens(TEXT, {"--charset", "65001"});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.output,
                  "     1:1     start-parsing\n     1:1     text(" + TEXT +
                      ")\n     1:19    end-parsing\nbytes    18\ntokens   1: text 1\ncharset  65001 (UTF-8)\n"
                      "result   0, success\n")
            << code;
    }
}

TEST(Console, DiagnosticsAreText) {
    const CodePage codePage(437);
    ToolSettings settings;
    settings.errors = Sink::TERMINAL;
    EXPECT_TRUE(Ended(RunTool({"tokens", TEXT}, settings), 3, TEXT + ": cannot be read: no such file\n"));
}

TEST(Console, WhatIsNoTextIsReplaced) {
    const Screen screen;
    const OutputTo output(screen.Get());
    EXPECT_FALSE(Tool::WriteOutput("a\xE9 b\n\xD0"));
    EXPECT_EQ(screen.Read(), "a" + REPLACEMENT + " b\n" + REPLACEMENT);
}

TEST(Console, LongOutputIsShownInPiecesThatPartNoCharacter) {
    // Every line has another length, so that the pieces end everywhere in a character.
    const Screen screen;
    const OutputTo output(screen.Get());
    std::string text;
    for (std::size_t i = 0; i < 800; ++i)
        text += std::string(i % 61, 'x') + TEXT + TEXT + TEXT + "\n";
    ASSERT_GT(text.size(), 60000U);
    EXPECT_FALSE(Tool::WriteOutput(text));
    EXPECT_EQ(screen.Read(), text);
}

TEST(Console, WhatACallLeavesOutIsShownByTheNext) {
    for (const DWORD most : {1U, 7U}) {
        const Screen screen;
        const OutputTo output(screen.Get());
        mostShown = most;
        EXPECT_FALSE(Tool::WriteOutput("one line\nand a second one"));
        mostShown = MAXDWORD;
        EXPECT_EQ(screen.Read(), "one line\nand a second one");
    }
}

TEST(Console, AConsoleThatShowsNothingIsAFailure) {
    const Screen screen;
    const OutputTo output(screen.Get());
    mostShown = 0;
    const std::optional<Tool::WriteFailure> failure = Tool::WriteOutput("text");
    mostShown = MAXDWORD;
    ASSERT_TRUE(failure);
    EXPECT_FALSE(failure->isReaderGone);
    EXPECT_EQ(failure->reason, Words(ERROR_WRITE_FAULT));
}

TEST(Console, AFullPipeThatDoesNotWaitIsAFailure) {
    const std::wstring path = L"\\\\.\\pipe\\kestra-test-full-" + std::to_wstring(GetCurrentProcessId());
    const Handle writer(
        CreateNamedPipeW(path.c_str(), PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE | PIPE_NOWAIT, 1, 4096, 4096, 0, nullptr));
    const Handle reader(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    const OutputTo output(writer.Get());
    std::optional<Tool::WriteFailure> failure;
    for (int i = 0; i < 1000 && !failure; ++i)
        failure = Tool::WriteOutput(std::string(10000, 'x'));
    ASSERT_TRUE(failure) << "nobody reads";
    EXPECT_FALSE(failure->isReaderGone);
}

TEST(Console, AFileGetsBytesAsTheyAre) {
    const TemporaryFolder folder;
    const std::string bytes = "a\xE9\r\n\n\x1A" + TEXT;
    const std::filesystem::path path = folder.Write("output", "");
    {
        const Handle file(
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        const OutputTo output(file.Get());
        EXPECT_FALSE(Tool::WriteOutput(bytes));
    }
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), bytes);
}

/// Runs the tool on a screen of its own that has this mode, and looks whether the word of its token
/// is shown in another way.
bool IsColoured(const std::map<std::string, std::string>& environment, DWORD modeBefore,
                const std::vector<std::string>& arguments) {
    Screen screen;
    screen.SetMode(modeBefore);
    ToolSettings settings;
    settings.environment = environment;
    Pipe input;
    const Handle output = screen.Duplicate();
    const Handle process = StartTool(arguments, settings, {input.reader.Get(), output.Get(), nullptr});
    DWORD written = 0;
    Checked(WriteFile(input.writer.Get(), "a<b>", 4, &written, nullptr), "WriteFile");
    input.writer.Close();
    EXPECT_EQ(WaitForTool(process), 0);
    EXPECT_EQ(screen.GetMode(), modeBefore) << "the mode is what it was";
    const std::string text = screen.Read();
    if (text.find("\x1B[1mtext\x1B[0m(a)") != std::string::npos)
        return true;  // Wine shows the sequences, which other consoles obey
    EXPECT_FALSE(Contains(text, '\x1B'));
    static constexpr std::size_t WORD = 13;  // where "text(a)" begins in the second line
    const std::wstring attributes = screen.ReadAttributes(1);
    return attributes[WORD] != attributes[WORD + 4];
}

constexpr DWORD PLAIN = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT;

TEST(Console, ShowsColours) {
    EXPECT_TRUE(IsColoured({}, PLAIN, {"tokens"}));
    EXPECT_TRUE(IsColoured({}, PLAIN | ENABLE_VIRTUAL_TERMINAL_PROCESSING, {"tokens"}));
    EXPECT_TRUE(IsColoured({}, PLAIN, {"events"}));
    EXPECT_FALSE(IsColoured({}, PLAIN, {"tokens", "--format", "json"}));
}

TEST(Console, ColoursCanBeForbidden) {
    const struct {
        const char* name;
        const char* value;
        bool coloured;
    } CASES[] = {
        {"NO_COLOR", "1", false},
        {"NO_COLOR", "0", false},
        {"TERM", "dumb", false},
        {"TERM", "xterm-256color", true},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(IsColoured({{row.name, row.value}}, PLAIN, {"tokens"}), row.coloured) << row.name << "=" << row.value;
}

/// Starts the tool with these files and "-" after them.
TEST(Console, ShowsHowFarALongRunIs) {
    const TemporaryFolder folder;
    folder.Write("first.html", "a");
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    for (const char* const command : {"tokens", "events"}) {
        const Screen screen;
        Pipe input;
        const Handle nowhere(CreateFileW(L"NUL", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        const Handle errors = screen.Duplicate();
        const Handle process = StartTool({command, "--charset", "1252", "first.html", "-"}, settings,
                                         {input.reader.Get(), nowhere.Get(), errors.Get()});
        const std::string portion(70000, 'x');
        std::string shown;
        for (int i = 0; i < 200 && !shown.starts_with("[2/2] - "); ++i) {
            DWORD written = 0;
            WriteFile(input.writer.Get(), portion.data(), static_cast<DWORD>(portion.size()), &written, nullptr);
            Sleep(50);
            shown = screen.Read();
        }
        EXPECT_TRUE(StartsWith(shown, "[2/2] - ")) << command;
        input.writer.Close();
        EXPECT_EQ(WaitForTool(process), 0);
        EXPECT_EQ(screen.Read(), "") << "the line is gone at the end";
    }
}

/// Makes a screen the standard error of this process for a while.
class ErrorsTo {
public:
    explicit ErrorsTo(HANDLE handle) : former(GetStdHandle(STD_ERROR_HANDLE)) {
        SetStdHandle(STD_ERROR_HANDLE, handle);
    }
    ErrorsTo(const ErrorsTo&) = delete;
    ErrorsTo& operator=(const ErrorsTo&) = delete;
    ~ErrorsTo() {
        SetStdHandle(STD_ERROR_HANDLE, former);
    }

private:
    HANDLE former;
};

TEST(Console, AProgressLineHasTheWidthOfTheScreen) {
    const Screen screen;
    const ErrorsTo errors(screen.Get());
    const std::size_t width = Tool::GetErrorTerminalWidth();
    ASSERT_GT(width, 60U);
    Tool::ProgressTerminal terminal = Tool::ProgressTerminal::OfErrors();
    Tool::ProgressTerminal::Time now;
    terminal.getTime = [&now] { return now; };
    Tool::Progress progress(Tool::IsErrorTerminal(), terminal);
    progress.SetInputCount(1);
    progress.StartInput(1, std::string(500, 'a') + ".html", 20);
    now += std::chrono::seconds(1);
    progress.Advance(10);
    const std::string numbers = " 50%, 0.0 MB of 0.0 MB, 0.0 MB/s, 0:01 left";
    const std::string shown = screen.Read();
    EXPECT_EQ(shown.size(), width - 1);
    EXPECT_TRUE(shown.starts_with("[1/1] ...aaa") && shown.ends_with(".html" + numbers)) << shown;
    progress.Hide();
    EXPECT_EQ(screen.Read(), "");
}

TEST(Console, NoDialogAsksForADisk) {
    const UINT former = SetErrorMode(SEM_NOGPFAULTERRORBOX);
    {
        const Tool::StandardStreams streams;
        EXPECT_EQ(GetErrorMode(), static_cast<UINT>(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX))
            << "and what was asked for stays";
    }
    SetErrorMode(former);
}

TEST(Console, OfAnotherStreamShowsNoProgress) {
    const TemporaryFolder folder;
    folder.Write("first.html", "a");
    ToolSettings settings;
    settings.folder = folder.GetPath().string();
    settings.output = Sink::TERMINAL;
    const ToolRun run = RunTool({"tokens", "--format", "json", "first.html", "first.html"}, settings);
    EXPECT_TRUE(Ended(run, 0, ""));
    EXPECT_FALSE(Contains(run.output, '%'));
}

}  // namespace

/// In the place of what the linker would make for the tool's parts in this program.
extern "C" {
auto* __imp_WriteConsoleW = &WriteConsoleShort;
}

}  // namespace Kestra::Test
