#include "tests/platform/windows/SystemCalls.h"

#include <cstdint>

// After the header above, which it needs.
#include <winternl.h>

/// What GetProcAddress itself calls, so that it can be called after the hook of that.
extern "C" NTSYSAPI NTSTATUS NTAPI LdrGetProcedureAddress(HMODULE library, const ANSI_STRING* name, ULONG ordinal,
                                                          void** address);

namespace Kestra::Test {

namespace {

SystemHooks* current = nullptr;

/// The hook of this kind, or null.
template <typename Hook>
const Hook* Get(Hook SystemHooks::*hook) {
    return current != nullptr && current->*hook ? &(current->*hook) : nullptr;
}

template <typename Call>
Call* Find(const char* library, const char* name) {
    return reinterpret_cast<Call*>(reinterpret_cast<void*>(RealSystem::FindCall(LoadLibraryA(library), name)));
}

template <typename Call>
Call* FindInKernel(const char* name) {
    return Find<Call>("kernel32.dll", name);
}

HANDLE WINAPI CreateFileHooked(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                               DWORD disposition, DWORD attributes, HANDLE pattern) {
    static const auto real = FindInKernel<decltype(CreateFileHooked)>("CreateFileW");
    const auto* hook = Get(&SystemHooks::createFile);
    if (hook != nullptr && !(*hook)(path, attributes))
        return INVALID_HANDLE_VALUE;
    return real(path, access, share, security, disposition, attributes, pattern);
}

DWORD WINAPI GetFullPathNameHooked(const wchar_t* path, DWORD size, wchar_t* absolute, wchar_t** name) {
    static const auto real = FindInKernel<decltype(GetFullPathNameHooked)>("GetFullPathNameW");
    const auto* hook = Get(&SystemHooks::getFullPathName);
    return hook != nullptr ? (*hook)(path, size, absolute) : real(path, size, absolute, name);
}

BOOL WINAPI ReadFileHooked(HANDLE handle, void* buffer, DWORD size, DWORD* count, OVERLAPPED* place) {
    const auto* hook = Get(&SystemHooks::readFile);
    return hook != nullptr ? (*hook)(handle, buffer, size, count, place)
                           : RealSystem::Read(handle, buffer, size, count, place);
}

BOOL WINAPI WriteFileHooked(HANDLE handle, const void* data, DWORD size, DWORD* count, OVERLAPPED* place) {
    const auto* hook = Get(&SystemHooks::writeFile);
    return hook != nullptr ? (*hook)(handle, data, size, count, place)
                           : RealSystem::Write(handle, data, size, count, place);
}

DWORD WINAPI GetTempPathHooked(DWORD size, wchar_t* path) {
    static const auto real = FindInKernel<decltype(GetTempPathHooked)>("GetTempPathW");
    const auto* hook = Get(&SystemHooks::getTempPath);
    return hook != nullptr ? (*hook)(size, path) : real(size, path);
}

UINT WINAPI GetAnsiCodePageHooked() {
    static const auto real = FindInKernel<decltype(GetAnsiCodePageHooked)>("GetACP");
    const auto* hook = Get(&SystemHooks::getAnsiCodePage);
    return hook != nullptr ? (*hook)() : real();
}

int WINAPI MultiByteToWideCharHooked(UINT code, DWORD flags, const char* data, int size, wchar_t* output, int room) {
    const auto* hook = Get(&SystemHooks::multiByteToWideChar);
    return hook != nullptr ? (*hook)(code, flags, data, size, output, room)
                           : RealSystem::ToWide(code, flags, data, size, output, room);
}

using FromWideCall = int WINAPI(UINT code, DWORD flags, const wchar_t* data, int size, char* output, int room,
                                const char* replacement, BOOL* hasReplaced);

int WINAPI WideCharToMultiByteHooked(UINT code, DWORD flags, const wchar_t* data, int size, char* output, int room,
                                     const char* replacement, BOOL* hasReplaced) {
    static const auto real = FindInKernel<FromWideCall>("WideCharToMultiByte");
    const auto* hook = Get(&SystemHooks::wideCharToMultiByte);
    return hook != nullptr ? (*hook)(code, flags, data, size, output, room)
                           : real(code, flags, data, size, output, room, replacement, hasReplaced);
}

HMODULE WINAPI LoadLibraryHooked(const wchar_t* name, HANDLE, DWORD flags) {
    const auto* hook = Get(&SystemHooks::loadLibrary);
    return hook != nullptr ? (*hook)(name, flags) : RealSystem::Load(name, flags);
}

FARPROC WINAPI GetProcAddressHooked(HMODULE library, const char* name) {
    const auto* hook = Get(&SystemHooks::getProcAddress);
    return hook != nullptr ? (*hook)(library, name) : RealSystem::FindCall(library, name);
}

HRESULT WINAPI CoInitializeHooked(void*) {
    const auto* hook = Get(&SystemHooks::coInitialize);
    return hook != nullptr ? (*hook)() : RealSystem::Initialize();
}

void WINAPI CoUninitializeHooked() {
    if (const auto* hook = Get(&SystemHooks::coUninitialize))
        (*hook)();
    else
        RealSystem::Uninitialize();
}

HRESULT WINAPI CoCreateInstanceHooked(const CLSID& classId, IUnknown* outer, DWORD context, const IID& interfaceId,
                                      void** object) {
    const auto* hook = Get(&SystemHooks::coCreateInstance);
    return hook != nullptr ? (*hook)(classId, outer, context, interfaceId, object)
                           : RealSystem::CreateInstance(classId, outer, context, interfaceId, object);
}

}  // namespace

DWORD RealSystem::GetFullPath(const wchar_t* path, DWORD size, wchar_t* absolute) {
    static const auto real = FindInKernel<decltype(GetFullPathNameHooked)>("GetFullPathNameW");
    return real(path, size, absolute, nullptr);
}

BOOL RealSystem::Read(HANDLE handle, void* buffer, DWORD size, DWORD* count, OVERLAPPED* place) {
    static const auto real = FindInKernel<decltype(ReadFileHooked)>("ReadFile");
    return real(handle, buffer, size, count, place);
}

BOOL RealSystem::Write(HANDLE handle, const void* data, DWORD size, DWORD* count, OVERLAPPED* place) {
    static const auto real = FindInKernel<decltype(WriteFileHooked)>("WriteFile");
    return real(handle, data, size, count, place);
}

int RealSystem::ToWide(UINT code, DWORD flags, const char* data, int size, wchar_t* output, int room) {
    static const auto real = FindInKernel<decltype(MultiByteToWideCharHooked)>("MultiByteToWideChar");
    return real(code, flags, data, size, output, room);
}

int RealSystem::FromWide(UINT code, DWORD flags, const wchar_t* data, int size, char* output, int room) {
    static const auto real = FindInKernel<FromWideCall>("WideCharToMultiByte");
    return real(code, flags, data, size, output, room, nullptr, nullptr);
}

HMODULE RealSystem::Load(const wchar_t* name, DWORD flags) {
    static const auto real = FindInKernel<decltype(LoadLibraryHooked)>("LoadLibraryExW");
    return real(name, nullptr, flags);
}

FARPROC RealSystem::FindCall(HMODULE library, const char* name) {
    void* address = nullptr;
    const bool isNumber = reinterpret_cast<std::uintptr_t>(name) <= 0xFFFF;
    if (isNumber)
        return LdrGetProcedureAddress(library, nullptr, static_cast<ULONG>(reinterpret_cast<std::uintptr_t>(name)),
                                      &address) == 0
                   ? reinterpret_cast<FARPROC>(address)
                   : nullptr;
    ANSI_STRING text;
    RtlInitAnsiString(&text, name);
    return LdrGetProcedureAddress(library, &text, 0, &address) == 0 ? reinterpret_cast<FARPROC>(address) : nullptr;
}

HRESULT RealSystem::Initialize() {
    static const auto real = Find<decltype(CoInitializeHooked)>("ole32.dll", "CoInitialize");
    return real(nullptr);
}

void RealSystem::Uninitialize() {
    static const auto real = Find<decltype(CoUninitializeHooked)>("ole32.dll", "CoUninitialize");
    real();
}

HRESULT RealSystem::CreateInstance(const CLSID& classId, IUnknown* outer, DWORD context, const IID& interfaceId,
                                   void** object) {
    static const auto real = Find<decltype(CoCreateInstanceHooked)>("ole32.dll", "CoCreateInstance");
    return real(classId, outer, context, interfaceId, object);
}

HookedSystem::HookedSystem() {
    current = &hooks;
}

HookedSystem::~HookedSystem() {
    current = nullptr;
}

SystemHooks* HookedSystem::operator->() {
    return &hooks;
}

bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace Kestra::Test

// A call that is imported goes through a pointer of this name. Those of the program itself stand in
// for those that the linker would make.
extern "C" {
auto* __imp_CreateFileW = &Kestra::Test::CreateFileHooked;
auto* __imp_GetFullPathNameW = &Kestra::Test::GetFullPathNameHooked;
auto* __imp_ReadFile = &Kestra::Test::ReadFileHooked;
auto* __imp_WriteFile = &Kestra::Test::WriteFileHooked;
auto* __imp_GetTempPathW = &Kestra::Test::GetTempPathHooked;
auto* __imp_GetACP = &Kestra::Test::GetAnsiCodePageHooked;
auto* __imp_MultiByteToWideChar = &Kestra::Test::MultiByteToWideCharHooked;
auto* __imp_WideCharToMultiByte = &Kestra::Test::WideCharToMultiByteHooked;
auto* __imp_LoadLibraryExW = &Kestra::Test::LoadLibraryHooked;
auto* __imp_GetProcAddress = &Kestra::Test::GetProcAddressHooked;
auto* __imp_CoInitialize = &Kestra::Test::CoInitializeHooked;
auto* __imp_CoUninitialize = &Kestra::Test::CoUninitializeHooked;
auto* __imp_CoCreateInstance = &Kestra::Test::CoCreateInstanceHooked;
}
