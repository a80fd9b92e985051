// A kernel object of Windows that is closed with its owner.
#pragma once

#include <windows.h>

#include <utility>

#include "platform/last_error.h"

namespace wavo::platform {

/// Move-only. Both values that the system uses for "none" (null and INVALID_HANDLE_VALUE) are
/// none here.
class Handle {
 public:
    Handle() = default;
    explicit Handle(HANDLE handle) noexcept
        : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~Handle() { Close(); }
    Handle(Handle&& other) noexcept : m_handle(other.Release()) {}
    Handle& operator=(Handle&& other) noexcept {
        if (this != &other) {
            Close();
            m_handle = other.Release();
        }
        return *this;
    }

    explicit operator bool() const noexcept { return m_handle != nullptr; }
    [[nodiscard]] HANDLE get() const noexcept { return m_handle; }
    /// Gives the handle away; the caller closes it.
    HANDLE Release() noexcept { return std::exchange(m_handle, nullptr); }
    /// Leaves the last error as it is.
    void Close() noexcept {
        if (m_handle != nullptr) {
            const LastErrorKeeper keep;
            ::CloseHandle(std::exchange(m_handle, nullptr));
        }
    }

 private:
    HANDLE m_handle = nullptr;
};

}  // namespace wavo::platform
