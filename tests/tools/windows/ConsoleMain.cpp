// The program of the tests about consoles. It gives itself one, which needs neither a window nor a
// desktop: started without, it starts itself again inside a pseudo console, and hands everything
// on.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/windows/Handle.h"

namespace Kestra::Test {
namespace {

constexpr const wchar_t* INSIDE = L"KESTRA_TEST_INSIDE_CONSOLE";
constexpr DWORD_PTR ATTRIBUTE_PSEUDO_CONSOLE = 0x00020016;  // PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE, since Windows 10

using CreateCall = HRESULT(WINAPI*)(COORD size, HANDLE input, HANDLE output, DWORD flags, void** console);
using CloseCall = void(WINAPI*)(void* console);

template <typename Call>
Call Find(const char* name) {
    void* const call = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
    Checked(call != nullptr, name);
    return reinterpret_cast<Call>(call);
}

/// A console that is shown nowhere.
class PseudoConsole {
public:
    PseudoConsole() {
        HANDLE inputReader = nullptr;
        HANDLE inputWriter = nullptr;
        HANDLE outputReader = nullptr;
        HANDLE outputWriter = nullptr;
        Checked(CreatePipe(&inputReader, &inputWriter, nullptr, 0), "CreatePipe");
        Checked(CreatePipe(&outputReader, &outputWriter, nullptr, 0), "CreatePipe");
        input = Handle(inputWriter);
        output = Handle(outputReader);
        const Handle itsInput(inputReader);
        const Handle itsOutput(outputWriter);
        Checked(
            SUCCEEDED(Find<CreateCall>("CreatePseudoConsole")({80, 25}, itsInput.Get(), itsOutput.Get(), 0, &console)),
            "CreatePseudoConsole");
        reader = std::thread([this] {
            char block[4096];
            DWORD count = 0;
            while (ReadFile(output.Get(), block, sizeof(block), &count, nullptr) != 0 && count > 0) {
            }
        });
    }
    PseudoConsole(const PseudoConsole&) = delete;
    PseudoConsole& operator=(const PseudoConsole&) = delete;
    ~PseudoConsole() {
        Find<CloseCall>("ClosePseudoConsole")(console);
        reader.join();
    }

    void* Get() const {
        return console;
    }

private:
    Handle input;
    Handle output;
    void* console = nullptr;
    std::thread reader;
};

/// Runs this program again, with the same arguments and streams.
/// @return its exit status
int RunInside(const PseudoConsole& console) {
    Checked(SetEnvironmentVariableW(INSIDE, L"1"), "SetEnvironmentVariable");
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    std::vector<char> memory(size);
    const auto attributes = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory.data());
    Checked(InitializeProcThreadAttributeList(attributes, 1, 0, &size), "InitializeProcThreadAttributeList");
    Checked(UpdateProcThreadAttribute(attributes, 0, ATTRIBUTE_PSEUDO_CONSOLE, console.Get(), sizeof(void*), nullptr,
                                      nullptr),
            "UpdateProcThreadAttribute");

    STARTUPINFOEXW start = {};
    start.StartupInfo.cb = sizeof(start);
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.StartupInfo.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    start.StartupInfo.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    start.lpAttributeList = attributes;
    wchar_t program[32768];
    GetModuleFileNameW(nullptr, program, static_cast<DWORD>(std::size(program)));
    std::wstring commandLine = GetCommandLineW();
    PROCESS_INFORMATION process = {};
    Checked(CreateProcessW(program, commandLine.data(), nullptr, nullptr, TRUE, EXTENDED_STARTUPINFO_PRESENT, nullptr,
                           nullptr, &start.StartupInfo, &process),
            "CreateProcess");
    const Handle thread(process.hThread);
    const Handle child(process.hProcess);
    DWORD status = 0;
    Checked(WaitForSingleObject(child.Get(), INFINITE) == WAIT_OBJECT_0, "WaitForSingleObject");
    Checked(GetExitCodeProcess(child.Get(), &status), "GetExitCodeProcess");
    DeleteProcThreadAttributeList(attributes);
    return static_cast<int>(status);
}

bool IsInside() {
    return GetEnvironmentVariableW(INSIDE, nullptr, 0) > 0;
}

}  // namespace
}  // namespace Kestra::Test

int main(int argc, char** argv) {
    try {
        if (!Kestra::Test::IsInside())
            return Kestra::Test::RunInside(Kestra::Test::PseudoConsole());
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "no console for the tests: %s\n", failure.what());
        return EXIT_FAILURE;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
