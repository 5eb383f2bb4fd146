#include "tools/kestra-html/system/Terminal.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <io.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "platform/windows/WindowsApi.h"
#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t MOST_TEXT = 8192;                    ///< bytes; older consoles take 64 KB of UTF-16 in one call
constexpr std::size_t MOST_BYTES = std::size_t{64} << 20;  ///< one call counts with 32 bits

/// The console that was switched to colours, and its mode before.
std::atomic<HANDLE> switchedConsole = nullptr;
std::atomic<DWORD> formerMode = 0;

void RestoreConsole() {
    const HANDLE console = switchedConsole.exchange(nullptr);
    if (console != nullptr)
        SetConsoleMode(console, formerMode);
}

/// Ctrl+C and its kin end the program without its destructors.
BOOL WINAPI RestoreAtInterrupt(DWORD) {
    RestoreConsole();
    return FALSE;
}

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

bool SwitchToColours(HANDLE console) {
    DWORD mode = 0;
    if (GetConsoleMode(console, &mode) == 0)
        return false;
    if ((mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0)
        return true;
    if (SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0)
        return false;
    formerMode = mode;
    switchedConsole = console;
    SetConsoleCtrlHandler(RestoreAtInterrupt, TRUE);
    return true;
}

std::string_view Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

/// The system's words for an error, without the full stop at their end.
std::string Describe(DWORD error) {
    wchar_t text[512];
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                       nullptr, error, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    const std::wstring_view words(text, length);
    const std::size_t last = words.find_last_not_of(L" .\r\n");
    return last == std::wstring_view::npos ? fmt::format("error {}", error) : FromWide(words.substr(0, last + 1));
}

/// A call that succeeds and writes nothing would do so for ever: a full pipe that does not wait,
/// for example.
/// @return false, with an error
bool IsProgress(DWORD written) {
    if (written == 0)
        SetLastError(ERROR_WRITE_FAULT);
    return written != 0;
}

/// Takes bytes off the front of the text, and shows them all.
/// @return false when a call failed
bool ShowFront(HANDLE console, std::string_view* text) {
    const std::size_t count = FindCut(*text, MOST_TEXT);
    const std::wstring units = ToWide(text->substr(0, count));
    text->remove_prefix(count);
    for (std::wstring_view rest = units; !rest.empty();) {
        DWORD written = 0;
        if (WriteConsoleW(console, rest.data(), static_cast<DWORD>(rest.size()), &written, nullptr) == 0 ||
            !IsProgress(written))
            return false;
        rest.remove_prefix(written);
    }
    return true;
}

/// Takes as many bytes off the front as one call writes.
/// @return false when the call failed
bool WriteFront(HANDLE file, std::string_view* bytes) {
    DWORD written = 0;
    if (WriteFile(file, bytes->data(), static_cast<DWORD>(std::min(bytes->size(), MOST_BYTES)), &written, nullptr) ==
            0 ||
        !IsProgress(written))
        return false;
    bytes->remove_prefix(written);
    return true;
}

std::optional<WriteFailure> Write(DWORD stream, std::string_view bytes) {
    const HANDLE handle = GetStdHandle(stream);
    const bool isConsole = IsConsole(handle);
    while (!bytes.empty()) {
        if (isConsole ? ShowFront(handle, &bytes) : WriteFront(handle, &bytes))
            continue;
        const DWORD error = GetLastError();
        return WriteFailure{error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE, Describe(error)};
    }
    return std::nullopt;
}

}  // namespace

StandardStreams::StandardStreams() {
    _setmode(_fileno(stdin), _O_BINARY);  // output does not pass through the C runtime
    // A drive without a disk is an error like others, and not a question in a window.
    SetErrorMode(SetErrorMode(0) | SEM_FAILCRITICALERRORS);
}

StandardStreams::~StandardStreams() {
    RestoreConsole();
}

bool IsOutputTerminal() {
    return IsConsole(GetStdHandle(STD_OUTPUT_HANDLE));
}

bool IsErrorTerminal() {
    return IsConsole(GetStdHandle(STD_ERROR_HANDLE));
}

std::size_t GetErrorTerminalWidth() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) == 0)
        return 0;
    const int columns = info.srWindow.Right - info.srWindow.Left + 1;
    return columns > 0 ? static_cast<std::size_t>(columns) : 0;
}

bool WantsColour() {
    return Variable("NO_COLOR").empty() && Variable("TERM") != "dumb" &&
           SwitchToColours(GetStdHandle(STD_OUTPUT_HANDLE));
}

std::optional<WriteFailure> WriteOutput(std::string_view bytes) {
    return Write(STD_OUTPUT_HANDLE, bytes);
}

void WriteErrors(std::string_view bytes) {
    Write(STD_ERROR_HANDLE, bytes);
}

}  // namespace Kestra::Tool
