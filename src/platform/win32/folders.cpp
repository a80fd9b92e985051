#include "platform/folders.h"

#include <shlobj.h>
#include <windows.h>

#include <algorithm>
#include <array>

#include "platform/last_error.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

constexpr wchar_t kMakerFolder[] = L"\\Velk";
constexpr wchar_t kLogFolder[] = L"\\logs";

/// Makes the folder when it is missing. Those above it are the system's, or were made before.
bool ProvideFolder(const std::wstring& path) {
    if (::CreateDirectoryW(path.c_str(), nullptr) != 0) {
        return true;
    }
    if (::GetLastError() != ERROR_ALREADY_EXISTS) {
        return false;
    }
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        ::SetLastError(ERROR_DIRECTORY);
        return false;
    }
    return true;
}

/// The folder that the maker's folder lies in; empty on failure.
std::wstring BaseFolder() {
    // A relative path would depend on where the program was started: it counts as not set.
    std::array<wchar_t, 1024> chosen{};
    const DWORD length = ::GetEnvironmentVariableW(L"WAVO_DATA_HOME", chosen.data(),
                                                   static_cast<DWORD>(chosen.size()));
    if (length > 2 && length < chosen.size() && (chosen[1] == L':' || chosen[0] == L'\\')) {
        std::replace(chosen.begin(), chosen.end(), L'/', L'\\');
        return chosen.data();
    }
    std::array<wchar_t, MAX_PATH> common{};
    const HRESULT result = ::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA | CSIDL_FLAG_CREATE,
                                              nullptr, SHGFP_TYPE_CURRENT, common.data());
    if (result != S_OK) {
        ::SetLastError(HRESULT_FACILITY(result) == FACILITY_WIN32
                           ? static_cast<DWORD>(HRESULT_CODE(result))
                           : ERROR_PATH_NOT_FOUND);
        return {};
    }
    return common.data();
}

/// The maker's folder; empty on failure.
std::wstring MakerFolder() {
    std::wstring path = BaseFolder();
    return !path.empty() && ProvideFolder(path += kMakerFolder) ? path : std::wstring();
}

}  // namespace

std::string PathSeparator() {
    return "\\";
}

std::string NativePath(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

std::string DataFolder() {
    return Utf8(MakerFolder());
}

std::string StateFolder() {
    std::wstring path = MakerFolder();
    if (path.empty() || !ProvideFolder(path += kLogFolder)) {
        return {};
    }
    return Utf8(path);
}

bool StandardErrorIsTerminal() noexcept {
    const LastErrorKeeper keep;
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace wavo::platform
