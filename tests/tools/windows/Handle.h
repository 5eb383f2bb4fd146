#pragma once

#include <system_error>
#include <utility>

#include "platform/windows/WindowsApi.h"

namespace Kestra::Test {

/// @throws std::system_error  when a system call has failed
inline void Checked(bool good, const char* call) {
    if (!good)
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), call);
}

inline void Checked(BOOL good, const char* call) {
    Checked(good != 0, call);
}

/// An open handle of the system, or none.
class Handle {
public:
    Handle() = default;
    /// @throws std::system_error  for the handle that a failed call has returned
    explicit Handle(HANDLE openHandle) : handle(openHandle) {
        Checked(handle != INVALID_HANDLE_VALUE && handle != nullptr, "a call for a handle");
    }
    Handle(Handle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    ~Handle() {
        Close();
    }

    HANDLE Get() const {
        return handle;
    }

    void Close() {
        if (handle != nullptr)
            CloseHandle(handle);
        handle = nullptr;
    }

private:
    HANDLE handle = nullptr;
};

}  // namespace Kestra::Test
