#include "platform/file.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <random>

#include "platform/last_error.h"
#include "platform/win32/handle.h"
#include "platform/win32/unfit_name.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

/// Largest number of bytes that one call takes.
constexpr std::size_t kLargestTransfer = 0xFFFFFFFF;

HANDLE HandleOf(FileHandle file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}

FileHandle NumberOf(HANDLE handle) noexcept {
    return handle == nullptr ? kInvalidFile : reinterpret_cast<FileHandle>(handle);
}

DWORD AttributesOf(const std::string& path) {
    return ::GetFileAttributesW(WidePath(path).c_str());
}

/// Opens a file for writing; others may read it meanwhile.
Handle CreateForWriting(const std::string& path, DWORD access, DWORD creation, DWORD flags) {
    return Handle(::CreateFileW(WidePath(path).c_str(), access, FILE_SHARE_READ, nullptr, creation,
                                FILE_ATTRIBUTE_NORMAL | flags, nullptr));
}

/// The form of a path that people write, from the one that the system tells.
std::wstring WithoutPrefix(const std::wstring& path) {
    constexpr std::wstring_view kServer = L"\\\\?\\UNC\\";
    constexpr std::wstring_view kLocal = L"\\\\?\\";
    if (path.starts_with(kServer)) {
        return L"\\\\" + path.substr(kServer.size());
    }
    return path.starts_with(kLocal) ? path.substr(kLocal.size()) : path;
}

class WindowsFiles final : public FileOperations {
 public:
    FileHandle OpenForReading(const std::string& path) override {
        if (HasNul(path)) {
            return kInvalidFile;
        }
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        Handle file(::CreateFileW(WidePath(path).c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file && ::GetFileType(file.get()) != FILE_TYPE_DISK) {
            file.Close();
            ::SetLastError(ERROR_BAD_FILE_TYPE);
        }
        return NumberOf(file.Release());
    }

    FileHandle OpenForWriting(const std::string& path, Creation creation,
                              bool write_through) override {
        if (HasNul(path) || IsUnfit(path)) {
            return kInvalidFile;
        }
        const DWORD flags = write_through ? FILE_FLAG_WRITE_THROUGH : 0;
        switch (creation) {
            case Creation::kCreateNew:
                return NumberOf(
                    CreateForWriting(path, FILE_WRITE_DATA, CREATE_NEW, flags).Release());
            case Creation::kOpenAlways:
                return NumberOf(
                    CreateForWriting(path, FILE_APPEND_DATA, OPEN_ALWAYS, flags).Release());
            case Creation::kCreateAlways:
                return NumberOf(
                    CreateForWriting(path, FILE_WRITE_DATA, CREATE_ALWAYS, flags).Release());
        }
        return kInvalidFile;
    }

    std::uint64_t Size(FileHandle file) override {
        const LastErrorKeeper keep;
        LARGE_INTEGER size{};
        return ::GetFileSizeEx(HandleOf(file), &size) != 0
                   ? static_cast<std::uint64_t>(size.QuadPart)
                   : 0;
    }

    bool Read(FileHandle file, void* data, std::size_t size, std::size_t& count) override {
        count = 0;
        while (count < size) {
            const auto piece = static_cast<DWORD>(std::min(size - count, kLargestTransfer));
            DWORD got = 0;
            if (::ReadFile(HandleOf(file), static_cast<char*>(data) + count, piece, &got,
                           nullptr) == 0) {
                // What came before is handed out; the next call meets the error again.
                return count > 0;
            }
            count += got;
            if (got < piece) {
                break;
            }
        }
        return true;
    }

    bool Write(FileHandle file, const void* data, std::size_t size, std::size_t& count) override {
        count = 0;
        while (count < size) {
            const auto piece = static_cast<DWORD>(std::min(size - count, kLargestTransfer));
            DWORD taken = 0;
            if (::WriteFile(HandleOf(file), static_cast<const char*>(data) + count, piece, &taken,
                            nullptr) == 0) {
                return false;
            }
            if (taken == 0) {
                break;
            }
            count += taken;
        }
        return true;
    }

    bool Flush(FileHandle file) override { return ::FlushFileBuffers(HandleOf(file)) != 0; }

    bool Close(FileHandle file) override { return ::CloseHandle(HandleOf(file)) != 0; }

    bool CreateTemporaryFile(const std::string& folder, const std::string& prefix,
                             const std::string& like, char* name) override {
        constexpr unsigned kNumbers = 0x10000;
        if (HasNul(folder) || HasNul(prefix) || HasNul(like) || IsUnfit(like)) {
            return false;
        }
        unsigned number = std::random_device()();
        for (unsigned tries = 0; tries < kNumbers; ++tries, ++number) {
            std::array<char, 9> digits{};
            std::snprintf(digits.data(), digits.size(), "%04X.tmp", number % kNumbers);
            const std::string path = folder + prefix + digits.data();
            // The folder says who may use it, as it does for any new file.
            if (CreateForWriting(path, FILE_WRITE_DATA, CREATE_NEW, 0)) {
                std::memcpy(name, path.c_str(), path.size() + 1);
                return true;
            }
            if (::GetLastError() != ERROR_FILE_EXISTS) {
                return false;
            }
        }
        return false;
    }

    bool Rename(const std::string& from, const std::string& to) override {
        if (HasNul(from) || HasNul(to) || IsUnfit(to)) {
            return false;
        }
        const DWORD attributes = AttributesOf(to);
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
            ::SetLastError(ERROR_ACCESS_DENIED);
            return false;
        }
        return ::MoveFileExW(WidePath(from).c_str(), WidePath(to).c_str(),
                             MOVEFILE_REPLACE_EXISTING) != 0;
    }

    bool Remove(const std::string& path) override {
        return !HasNul(path) && ::DeleteFileW(WidePath(path).c_str()) != 0;
    }

    bool Exists(const std::string& path) override {
        if (HasNul(path)) {
            return false;
        }
        if (AttributesOf(path) != INVALID_FILE_ATTRIBUTES) {
            return true;
        }
        const DWORD error = ::GetLastError();
        return error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND &&
               error != ERROR_INVALID_NAME;
    }

    std::string FollowLinks(const std::string& path) override {
        if (HasNul(path)) {
            return {};
        }
        const DWORD attributes = AttributesOf(path);
        if (attributes == INVALID_FILE_ATTRIBUTES ||
            (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
            return path;
        }
        const Handle target(::CreateFileW(
            WidePath(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        if (!target) {
            return ::GetLastError() == ERROR_CANT_RESOLVE_FILENAME ? std::string() : path;
        }
        std::wstring end(::GetFinalPathNameByHandleW(target.get(), nullptr, 0, 0), L'\0');
        const DWORD length = ::GetFinalPathNameByHandleW(target.get(), end.data(),
                                                         static_cast<DWORD>(end.size()), 0);
        if (length == 0 || length >= end.size()) {
            return path;
        }
        end.resize(length);
        return Utf8(WithoutPrefix(end));
    }
};

}  // namespace

FileOperations& SystemFiles() {
    // Never destroyed: destructors of other statics may still write files.
    static WindowsFiles& files = *new WindowsFiles;
    return files;
}

}  // namespace wavo::platform
