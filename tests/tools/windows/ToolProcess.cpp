#include "tests/tools/windows/ToolProcess.h"

#include <algorithm>
#include <cstddef>
#include <cwctype>
#include <filesystem>
#include <map>
#include <memory>
#include <utility>

#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Test {

namespace {

/// One argument in the form from which the program gets it back: within quotes, where backslashes
/// before a quote count twice.
std::wstring Quote(const std::string& argument) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : Tool::NameToWide(argument)) {
        if (unit == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        quoted.push_back(unit);
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

std::wstring MakeCommandLine(const std::wstring& program, const std::vector<std::string>& arguments) {
    std::wstring line = L'"' + program + L'"';
    for (const std::string& argument : arguments)
        line += L' ' + Quote(argument);
    return line;
}

/// Names of variables have no case.
std::wstring UpperCase(std::wstring name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](wchar_t letter) { return static_cast<wchar_t>(std::towupper(letter)); });
    return name;
}

/// That of the test, without what forbids colours, and with these variables: strings that end with
/// a NUL, and one more.
std::wstring MakeEnvironment(const std::map<std::string, std::string>& changes) {
    // By name; the names that begin with "=" hold the folders of drives.
    std::map<std::wstring, std::wstring> variables;
    const std::unique_ptr<wchar_t, decltype(&FreeEnvironmentStringsW)> block(GetEnvironmentStringsW(),
                                                                             &FreeEnvironmentStringsW);
    for (const wchar_t* next = block.get(); *next != L'\0';) {
        const std::wstring variable = next;
        next += variable.size() + 1;
        const std::size_t end = variable.find(L'=', 1);
        variables[UpperCase(variable.substr(0, end))] = variable.substr(end + 1);
    }
    variables.erase(L"NO_COLOR");
    variables.erase(L"TERM");
    for (const auto& [name, value] : changes)
        variables[UpperCase(Tool::ToWide(name))] = Tool::ToWide(value);
    std::wstring strings;
    for (const auto& [name, value] : variables)
        strings.append(name).append(L"=").append(value).push_back(L'\0');
    return strings;
}

/// The attributes of a new process that inherits these handles, and no other one.
class Inheritance {
public:
    explicit Inheritance(std::vector<HANDLE> inheritedHandles) : handles(std::move(inheritedHandles)) {
        for (const HANDLE handle : handles)
            Checked(SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT), "SetHandleInformation");
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        memory.resize(size);
        Checked(InitializeProcThreadAttributeList(Get(), 1, 0, &size), "InitializeProcThreadAttributeList");
        if (!handles.empty())
            Checked(UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles.data(),
                                              handles.size() * sizeof(HANDLE), nullptr, nullptr),
                    "UpdateProcThreadAttribute");
    }
    Inheritance(const Inheritance&) = delete;
    Inheritance& operator=(const Inheritance&) = delete;
    ~Inheritance() {
        DeleteProcThreadAttributeList(Get());
    }

    LPPROC_THREAD_ATTRIBUTE_LIST Get() {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory.data());
    }

private:
    std::vector<HANDLE> handles;
    std::vector<char> memory;
};

}  // namespace

Pipe::Pipe() {
    HANDLE readerHandle = nullptr;
    HANDLE writerHandle = nullptr;
    Checked(CreatePipe(&readerHandle, &writerHandle, nullptr, 0), "CreatePipe");
    reader = Handle(readerHandle);
    writer = Handle(writerHandle);
}

Handle StartTool(const std::vector<std::string>& arguments, const ToolSettings& settings,
                 const StandardHandles& streams) {
    const std::wstring program = std::filesystem::absolute(KESTRA_TOOL).make_preferred().wstring();
    std::wstring commandLine = MakeCommandLine(program, arguments);
    std::wstring environment = MakeEnvironment(settings.environment);
    const std::wstring folder = Tool::ToWide(settings.folder);
    std::vector<HANDLE> handles;
    for (const HANDLE handle : {streams.input, streams.output, streams.errors}) {
        if (handle != nullptr)
            handles.push_back(handle);
    }
    Inheritance inheritance(std::move(handles));

    STARTUPINFOEXW start = {};
    start.StartupInfo.cb = sizeof(start);
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = streams.input;
    start.StartupInfo.hStdOutput = streams.output;
    start.StartupInfo.hStdError = streams.errors;
    start.lpAttributeList = inheritance.Get();
    PROCESS_INFORMATION process = {};
    Checked(CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                           EXTENDED_STARTUPINFO_PRESENT | CREATE_UNICODE_ENVIRONMENT, environment.data(),
                           folder.empty() ? nullptr : folder.c_str(), &start.StartupInfo, &process),
            "CreateProcess");
    CloseHandle(process.hThread);
    return Handle(process.hProcess);
}

int WaitForTool(const Handle& process) {
    DWORD status = 0;
    Checked(WaitForSingleObject(process.Get(), INFINITE) == WAIT_OBJECT_0, "WaitForSingleObject");
    Checked(GetExitCodeProcess(process.Get(), &status), "GetExitCodeProcess");
    return static_cast<int>(status);
}

}  // namespace Kestra::Test
