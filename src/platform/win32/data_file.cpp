#include "platform/data_file.h"

#include <windows.h>

#include <algorithm>
#include <limits>

#include "platform/last_error.h"
#include "platform/win32/handle.h"
#include "platform/win32/unfit_name.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

/// Largest number of bytes that one call takes, in whole blocks of any device.
constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE ToHandle(FileHandle file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}

FileHandle ToFile(HANDLE handle) noexcept {
    return handle == nullptr ? kInvalidFile : reinterpret_cast<FileHandle>(handle);
}

Handle OpenToRead(const std::string& path) {
    return Handle(::CreateFileW(WidePath(path).c_str(), GENERIC_READ, kShareAll, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// The folder's name with a separator at its end, as calls that take folders want it.
std::wstring WithSeparator(const std::string& folder) {
    std::wstring name = WidePath(folder.empty() ? "." : folder);
    if (name.back() != L'\\' && name.back() != L'/') {
        name += L'\\';
    }
    return name;
}

class WindowsDataFiles final : public DataFileOperations {
 public:
    FileHandle OpenForReading(const std::string& path) override {
        if (HasNul(path)) {
            return kInvalidFile;
        }
        Handle file = OpenToRead(path);
        if (file && ::GetFileType(file.get()) != FILE_TYPE_DISK) {
            file.Close();
            ::SetLastError(ERROR_BAD_FILE_TYPE);
        }
        return ToFile(file.Release());
    }

    FileHandle CreateNew(const std::string& path, bool& exists) override {
        exists = false;
        if (HasNul(path) || IsUnfit(path)) {
            return kInvalidFile;
        }
        // Not shared for deleting: nobody removes what is being written.
        Handle file(::CreateFileW(WidePath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                  FILE_SHARE_READ, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                                  nullptr));
        if (!file) {
            const DWORD error = ::GetLastError();
            exists = error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
        }
        return ToFile(file.Release());
    }

    bool Size(FileHandle file, std::uint64_t& size) override {
        LARGE_INTEGER found{};
        if (::GetFileSizeEx(ToHandle(file), &found) == 0) {
            return false;
        }
        size = static_cast<std::uint64_t>(found.QuadPart);
        return true;
    }

    bool ReadAt(FileHandle file, std::uint64_t offset, void* data, std::size_t size,
                std::size_t& count) override {
        count = 0;
        while (count < size) {
            if (offset + count > static_cast<std::uint64_t>(std::numeric_limits<LONGLONG>::max())) {
                return true;  // behind the end of any file
            }
            OVERLAPPED place = PlaceOf(offset + count);
            DWORD got = 0;
            const auto piece = static_cast<DWORD>(std::min(size - count, kLargestTransfer));
            if (::ReadFile(ToHandle(file), static_cast<char*>(data) + count, piece, &got, &place) ==
                0) {
                return ::GetLastError() == ERROR_HANDLE_EOF;
            }
            if (got == 0) {
                return true;
            }
            count += got;
        }
        return true;
    }

    bool Append(FileHandle file, const void* data, std::size_t size) override {
        const auto* from = static_cast<const char*>(data);
        while (size > 0) {
            OVERLAPPED end{};
            end.Offset = 0xFFFFFFFF;
            end.OffsetHigh = 0xFFFFFFFF;
            DWORD taken = 0;
            const auto piece = static_cast<DWORD>(std::min(size, kLargestTransfer));
            if (::WriteFile(ToHandle(file), from, piece, &taken, &end) == 0) {
                return false;
            }
            if (taken == 0) {
                ::SetLastError(ERROR_DISK_FULL);
                return false;
            }
            from += taken;
            size -= taken;
        }
        return true;
    }

    bool Sync(FileHandle file) override { return ::FlushFileBuffers(ToHandle(file)) != 0; }

    bool Close(FileHandle file) override { return ::CloseHandle(ToHandle(file)) != 0; }

    bool IsNamed(FileHandle file, const std::string& path) override {
        if (HasNul(path)) {
            return false;
        }
        const Handle named = OpenToRead(path);
        BY_HANDLE_FILE_INFORMATION own{};
        BY_HANDLE_FILE_INFORMATION other{};
        FILE_STANDARD_INFO standard{};
        // A file that was removed may keep its name until it is closed everywhere.
        return named &&
               ::GetFileInformationByHandleEx(ToHandle(file), FileStandardInfo, &standard,
                                              sizeof standard) != 0 &&
               standard.DeletePending == 0 &&
               ::GetFileInformationByHandle(ToHandle(file), &own) != 0 &&
               ::GetFileInformationByHandle(named.get(), &other) != 0 &&
               own.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
               own.nFileIndexHigh == other.nFileIndexHigh &&
               own.nFileIndexLow == other.nFileIndexLow;
    }

    bool RemoveUnused(const std::string& path) override {
        return !HasNul(path) && ::DeleteFileW(WidePath(path).c_str()) != 0;
    }

    bool FreeSpace(const std::string& folder, std::uint64_t& bytes) override {
        ULARGE_INTEGER available{};
        if (HasNul(folder) || ::GetDiskFreeSpaceExW(WithSeparator(folder).c_str(), &available,
                                                    nullptr, nullptr) == 0) {
            return false;
        }
        bytes = available.QuadPart;
        return true;
    }

    bool List(const std::string& folder, std::vector<FolderFile>& files) override {
        files.clear();
        if (HasNul(folder)) {
            return false;
        }
        WIN32_FIND_DATAW found{};
        HANDLE const search = ::FindFirstFileW((WithSeparator(folder) + L'*').c_str(), &found);
        if (search == INVALID_HANDLE_VALUE) {
            return ::GetLastError() == ERROR_FILE_NOT_FOUND;
        }
        do {
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                files.push_back({Utf8(found.cFileName),
                                 (std::uint64_t{found.nFileSizeHigh} << 32U) | found.nFileSizeLow});
            }
        } while (::FindNextFileW(search, &found) != 0);
        const DWORD error = ::GetLastError();
        ::FindClose(search);
        ::SetLastError(error);
        return error == ERROR_NO_MORE_FILES;
    }

 private:
    static OVERLAPPED PlaceOf(std::uint64_t offset) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
        return place;
    }
};

}  // namespace

DataFileOperations& SystemDataFiles() {
    // Never destroyed: destructors of other statics may still write files.
    static WindowsDataFiles& files = *new WindowsDataFiles;
    return files;
}

}  // namespace wavo::platform
