#include "platform/win32/crash_record.h"

namespace wavo::platform {

namespace {

void WriteAll(HANDLE file, std::string_view text) noexcept {
    DWORD written = 0;
    ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

}  // namespace

CrashTime UtcNow() noexcept {
    SYSTEMTIME now{};
    ::GetSystemTime(&now);
    return {now.wYear,   now.wMonth,  now.wDay,         now.wHour,
            now.wMinute, now.wSecond, now.wMilliseconds};
}

void CrashRecord::Write(std::string_view line) noexcept {
    if (m_file != nullptr) {
        WriteAll(m_file, line);
    }
    const HANDLE standard_error = ::GetStdHandle(STD_ERROR_HANDLE);
    if (standard_error != nullptr && standard_error != INVALID_HANDLE_VALUE) {
        WriteAll(standard_error, line);
    }
}

}  // namespace wavo::platform
