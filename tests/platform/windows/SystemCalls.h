#pragma once

#include <functional>

#include "platform/windows/WindowsApi.h"

// After the header above, which it needs.
#include <objbase.h>

namespace Kestra::Test {

/// What a test puts before calls to the system. An empty one leaves the call alone.
struct SystemHooks {
    /// Returns false for a failure, with the last error that it has set.
    std::function<bool(const wchar_t* path, DWORD attributes)> createFile;
    std::function<DWORD(const wchar_t* path, DWORD size, wchar_t* absolute)> getFullPathName;
    std::function<BOOL(HANDLE handle, void* buffer, DWORD size, DWORD* count, OVERLAPPED* place)> readFile;
    std::function<BOOL(HANDLE handle, const void* data, DWORD size, DWORD* count, OVERLAPPED* place)> writeFile;
    std::function<DWORD(DWORD size, wchar_t* path)> getTempPath;
    std::function<UINT()> getAnsiCodePage;
    std::function<int(UINT code, DWORD flags, const char* data, int size, wchar_t* output, int room)>
        multiByteToWideChar;
    std::function<int(UINT code, DWORD flags, const wchar_t* data, int size, char* output, int room)>
        wideCharToMultiByte;
    std::function<HMODULE(const wchar_t* name, DWORD flags)> loadLibrary;
    std::function<FARPROC(HMODULE library, const char* name)> getProcAddress;
    std::function<HRESULT()> coInitialize;
    std::function<void()> coUninitialize;
    std::function<HRESULT(const CLSID& classId, IUnknown* outer, DWORD context, const IID& interfaceId, void** object)>
        coCreateInstance;
};

/// The calls that a hook may pass on, as the system answers them.
struct RealSystem {
    static DWORD GetFullPath(const wchar_t* path, DWORD size, wchar_t* absolute);
    static BOOL Read(HANDLE handle, void* buffer, DWORD size, DWORD* count, OVERLAPPED* place);
    static BOOL Write(HANDLE handle, const void* data, DWORD size, DWORD* count, OVERLAPPED* place);
    static int ToWide(UINT code, DWORD flags, const char* data, int size, wchar_t* output, int room);
    static int FromWide(UINT code, DWORD flags, const wchar_t* data, int size, char* output, int room);
    static HMODULE Load(const wchar_t* name, DWORD flags);
    static FARPROC FindCall(HMODULE library, const char* name);
    static HRESULT Initialize();
    static void Uninitialize();
    static HRESULT CreateInstance(const CLSID& classId, IUnknown* outer, DWORD context, const IID& interfaceId,
                                  void** object);
};

/// Hooks before all such calls of this program, the library's among them, for as long as it lives.
/// One at a time.
class HookedSystem {
public:
    HookedSystem();
    HookedSystem(const HookedSystem&) = delete;
    HookedSystem& operator=(const HookedSystem&) = delete;
    ~HookedSystem();

    SystemHooks* operator->();

private:
    SystemHooks hooks;
};

/// True under Wine, whose parts are not those of Windows.
bool IsWine();

}  // namespace Kestra::Test
