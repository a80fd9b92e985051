// The system's last error number: what the most recent failed system call of this thread left.
//
// Reports read it after their location call and before their text call, so the diagnostics leave
// it unchanged. POSIX: errno. Windows: GetLastError().
#pragma once

#include <string>

namespace wavo::platform {

/// Number of this thread's last system error; 0 when there was none.
int LastError() noexcept;

/// Sets this thread's last system error number.
void SetLastError(int error) noexcept;

/// The system's own words for an error number, without a line end; never empty.
std::string ErrorText(int error);

/// Keeps the last error number over a scope.
class LastErrorKeeper {
 public:
    LastErrorKeeper() noexcept : m_error(LastError()) {}
    ~LastErrorKeeper() { SetLastError(m_error); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

 private:
    const int m_error;
};

}  // namespace wavo::platform
