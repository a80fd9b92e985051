#include "platform/last_error.h"

#include <windows.h>

#include <array>

#include "platform/win32/unfit_name.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

int LastError() noexcept {
    return static_cast<int>(::GetLastError());
}

void SetLastError(int error) noexcept {
    ::SetLastError(static_cast<DWORD>(error));
}

std::string ErrorText(int error) {
    if (const char* const words = UnfitNameWords(static_cast<DWORD>(error)); words != nullptr) {
        return words;
    }
    const LastErrorKeeper keep;
    std::array<wchar_t, 512> buffer{};
    DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        nullptr, static_cast<DWORD>(error), 0, buffer.data(), static_cast<DWORD>(buffer.size()),
        nullptr);
    while (length > 0 && buffer[length - 1] <= L' ') {
        --length;
    }
    if (length == 0) {
        return "error " + std::to_string(error);
    }
    return Utf8({buffer.data(), length});
}

}  // namespace wavo::platform
