#include "platform/folders.h"

#include <windows.h>

// Behind windows.h:
#include <sddl.h>
#include <shlobj.h>

#include <algorithm>
#include <array>
#include <exception>

#include "platform/last_error.h"
#include "platform/win32/common_folder.h"
#include "platform/win32/handle.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

constexpr wchar_t kMakerFolder[] = L"\\Velk";
constexpr wchar_t kLogFolder[] = L"\\logs";
constexpr wchar_t kCacheFolder[] = L"\\cache";

/// Makes the folder when it is missing, with the system's rules for new folders when `security` is
/// null. Those above it are the system's, or were made before.
bool ProvideFolder(const std::wstring& path, SECURITY_ATTRIBUTES* security = nullptr) {
    if (::CreateDirectoryW(WidePath(path).c_str(), security) != 0) {
        return true;
    }
    if (::GetLastError() != ERROR_ALREADY_EXISTS) {
        return false;
    }
    const DWORD attributes = ::GetFileAttributesW(WidePath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        ::SetLastError(ERROR_DIRECTORY);
        return false;
    }
    return true;
}

/// The folder that WAVO_DATA_HOME names, without a separator at the end; empty when it is not set.
std::wstring ChosenFolder() {
    std::array<wchar_t, 1024> value{};
    const DWORD length = ::GetEnvironmentVariableW(L"WAVO_DATA_HOME", value.data(),
                                                   static_cast<DWORD>(value.size()));
    if (length == 0 || length >= value.size()) {
        return {};
    }
    std::wstring path = value.data();
    std::replace(path.begin(), path.end(), L'/', L'\\');
    // A path that depends on where the program was started, or on its current drive, counts as not
    // set.
    const bool names_drive = path.size() > 2 && path[1] == L':' && path[2] == L'\\';
    const bool names_server = path.size() > 2 && path.starts_with(L"\\\\") && path[2] != L'\\';
    if (!names_drive && !names_server) {
        return {};
    }
    path.erase(path.find_last_not_of(L'\\') + 1);
    return path;
}

/// A folder of the system by its number; empty on failure.
std::wstring SystemFolder(int number) {
    std::array<wchar_t, MAX_PATH> path{};
    const HRESULT result = ::SHGetFolderPathW(nullptr, number | CSIDL_FLAG_CREATE, nullptr,
                                              SHGFP_TYPE_CURRENT, path.data());
    if (result != S_OK) {
        ::SetLastError(HRESULT_FACILITY(result) == FACILITY_WIN32
                           ? static_cast<DWORD>(HRESULT_CODE(result))
                           : ERROR_PATH_NOT_FOUND);
        return {};
    }
    return path.data();
}

/// The maker's folder; empty on failure.
std::wstring MakerFolder() {
    if (std::wstring path = ChosenFolder(); !path.empty()) {
        return ProvideFolder(path += kMakerFolder) ? path : std::wstring();
    }
    std::wstring path = SystemFolder(CSIDL_COMMON_APPDATA);
    return !path.empty() && ProvideFolderForAllUsers(path += kMakerFolder) ? path : std::wstring();
}

bool HasStandardHandle(DWORD which) noexcept {
    const LastErrorKeeper keep;
    const HANDLE handle = ::GetStdHandle(which);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    // What a starter has handed on may mean nothing here.
    ::SetLastError(NO_ERROR);
    return ::GetFileType(handle) != FILE_TYPE_UNKNOWN || ::GetLastError() == NO_ERROR;
}

}  // namespace

bool ProvideFolderForAllUsers(const std::wstring& path) {
    // Full access for the system and administrators; everything but changing the rights for users.
    // Inherited by all files and folders in it.
    constexpr wchar_t kRights[] = L"D:(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1301bf;;;BU)";
    SECURITY_ATTRIBUTES security{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(
            kRights, SDDL_REVISION_1, &security.lpSecurityDescriptor, nullptr) == 0) {
        return false;
    }
    const bool provided = ProvideFolder(path, &security);
    const LastErrorKeeper keep;
    ::LocalFree(security.lpSecurityDescriptor);
    return provided;
}

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

std::string CacheFolder() {
    if (!ChosenFolder().empty()) {
        std::wstring path = MakerFolder();
        return !path.empty() && ProvideFolder(path += kCacheFolder) ? Utf8(path) : std::string();
    }
    std::wstring path = SystemFolder(CSIDL_LOCAL_APPDATA);
    return !path.empty() && ProvideFolder(path += kMakerFolder) ? Utf8(path) : std::string();
}

bool HasStandardOutput() noexcept {
    return HasStandardHandle(STD_OUTPUT_HANDLE);
}

bool HasStandardError() noexcept {
    return HasStandardHandle(STD_ERROR_HANDLE);
}

bool WriteToConsoleOfStarter(const std::string& text) noexcept try {
    const bool is_attached = ::AttachConsole(ATTACH_PARENT_PROCESS) != 0;
    if (!is_attached && ::GetLastError() != ERROR_ACCESS_DENIED) {  // else it has one already
        return false;
    }
    bool is_written = false;
    {
        const Handle console(::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, 0, nullptr));
        std::wstring wide(1, L'\n');
        wide += Wide(text);
        DWORD count = 0;
        is_written =
            console && ::WriteConsoleW(console.get(), wide.data(), static_cast<DWORD>(wide.size()),
                                       &count, nullptr) != 0;
    }
    if (is_attached) {
        ::FreeConsole();  // its Ctrl-C and its end are not meant for this program
    }
    return is_written;
} catch (const std::exception&) {  // no memory for the text
    return false;
}

void PrepareTerminal() noexcept {
    const LastErrorKeeper keep;
    for (const DWORD which : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        const HANDLE console = ::GetStdHandle(which);
        DWORD mode = 0;
        if (::GetConsoleMode(console, &mode) != 0) {
            ::SetConsoleMode(console,
                             mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
            ::SetConsoleOutputCP(CP_UTF8);
        }
    }
}

bool StandardErrorIsTerminal() noexcept {
    const LastErrorKeeper keep;
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace wavo::platform
