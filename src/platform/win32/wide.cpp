#include "platform/win32/wide.h"

#include <windows.h>

#include <utility>

namespace wavo::platform {

std::wstring Wide(std::string_view text) {
    if (text.empty()) {
        return {};  // the call takes that for a fault, and would set the last error
    }
    const int size = static_cast<int>(text.size());
    const int length = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), length);
    return wide;
}

std::wstring WidePath(std::string_view path) {
    return WidePath(Wide(path));
}

std::wstring WidePath(std::wstring path) {
    constexpr std::wstring_view kServer = L"\\\\";
    // Folders are to leave room for a short name in them.
    constexpr std::size_t kLongest = MAX_PATH - 13;
    const DWORD room = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (room <= kLongest + 1 || path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\")) {
        return path;
    }
    std::wstring full(room, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), room, full.data(), nullptr);
    if (length == 0 || length >= room) {
        return path;
    }
    full.resize(length);
    if (full.starts_with(kServer)) {
        return L"\\\\?\\UNC\\" + full.substr(kServer.size());
    }
    return L"\\\\?\\" + full;
}

std::string Utf8(std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    const int size = static_cast<int>(text.size());
    const int length =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

bool HasNul(std::string_view text) noexcept {
    if (text.find('\0') == std::string_view::npos) {
        return false;
    }
    ::SetLastError(ERROR_INVALID_NAME);
    return true;
}

}  // namespace wavo::platform
