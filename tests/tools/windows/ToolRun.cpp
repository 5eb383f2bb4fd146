#include "tests/tools/ToolRun.h"

#include <memory>
#include <thread>

#include "platform/windows/WindowsApi.h"
#include "tests/tools/windows/Handle.h"
#include "tests/tools/windows/Screen.h"
#include "tests/tools/windows/ToolProcess.h"
#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Test {

namespace {

Handle OpenFile(const fs::path& path, DWORD access, DWORD disposition) {
    return Handle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// An open handle for a stream of the tool, or none for a stream that is to be closed.
Handle OpenSink(Sink sink, const fs::path& capture, const Screen* screen) {
    switch (sink) {
        case Sink::CAPTURED:
            return OpenFile(capture, GENERIC_WRITE, CREATE_ALWAYS);
        case Sink::TERMINAL:
            return screen->Duplicate();
        case Sink::CLOSED:
            break;
        case Sink::CLOSED_PIPE:
            return std::move(Pipe().writer);  // the reader is closed at the end of the statement
        case Sink::UNWRITABLE:
            OpenFile(capture, GENERIC_WRITE, CREATE_ALWAYS);
            return OpenFile(capture, GENERIC_READ, OPEN_EXISTING);
    }
    return Handle();
}

/// Until the tool closes its end.
void WriteAll(HANDLE handle, std::string_view bytes) {
    DWORD written = 0;
    while (!bytes.empty() && WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0)
        bytes.remove_prefix(written);
}

}  // namespace

ToolRun RunTool(const std::vector<std::string>& arguments, const ToolSettings& settings) {
    const TemporaryFolder folder;
    const fs::path outputFile = folder.GetPath() / "output";
    const fs::path errorsFile = folder.GetPath() / "errors";
    const bool isShown = settings.output == Sink::TERMINAL || settings.errors == Sink::TERMINAL;
    const std::unique_ptr<Screen> screen = isShown ? std::make_unique<Screen>() : nullptr;

    Pipe input;
    Handle output = OpenSink(settings.output, outputFile, screen.get());
    Handle errors = OpenSink(settings.errors, errorsFile, screen.get());
    const Handle process =
        StartTool(arguments, settings, {settings.input ? input.reader.Get() : nullptr, output.Get(), errors.Get()});
    output.Close();
    errors.Close();
    input.reader.Close();

    std::thread writer([&] {
        WriteAll(input.writer.Get(), settings.input.value_or(""));
        input.writer.Close();
    });
    ToolRun run;
    run.status = WaitForTool(process);
    writer.join();
    run.output = settings.output == Sink::TERMINAL ? screen->Read() : ReadFile(outputFile);
    run.errors = settings.errors == Sink::TERMINAL ? screen->Read() : ReadFile(errorsFile);
    return run;
}

std::string GetReason(Sink sink) {
    const DWORD error = sink == Sink::UNWRITABLE ? ERROR_ACCESS_DENIED : ERROR_INVALID_HANDLE;
    wchar_t text[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, error, 0, text,
                                        static_cast<DWORD>(std::size(text)), nullptr);
    const std::wstring_view line(text, length);
    return Tool::FromWide(line.substr(0, line.find_last_not_of(L" .\r\n") + 1));
}

ToolRun RunToolOn(std::string_view input, const std::vector<std::string>& arguments) {
    ToolSettings settings;
    settings.input = std::string(input);
    return RunTool(arguments, settings);
}

}  // namespace Kestra::Test
