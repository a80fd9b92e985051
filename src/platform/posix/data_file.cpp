#include "platform/data_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>

#include "platform/last_error.h"
#include "platform/posix/descriptor.h"

namespace wavo::platform {

namespace {

/// Systems take a little less than 2 GB in one call.
constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;

bool IsName(const std::string& path) {
    if (path.find('\0') == std::string::npos) {
        return true;
    }
    errno = EINVAL;
    return false;
}

int Number(FileHandle file) {
    return static_cast<int>(file);
}

const char* FolderName(const std::string& folder) {
    return folder.empty() ? "." : folder.c_str();
}

int OpenUninterrupted(const std::string& path, int flags, mode_t mode = 0) {
    if (!IsName(path)) {
        return -1;
    }
    int number = -1;
    do {
        number = ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (number < 0 && errno == EINTR);
    return number;
}

/// Makes the entry of a file in its folder last. Some file systems cannot do that for folders, and
/// the file has its name by then: no reason to fail.
void SyncFolderOf(const std::string& path) {
    const LastErrorKeeper keep;
    const std::size_t end = path.rfind('/');
    const std::string folder = end == std::string::npos ? "." : path.substr(0, end + 1);
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) {
        ::fsync(opened.number());
    }
}

class PosixDataFiles final : public DataFileOperations {
 public:
    FileHandle OpenForReading(const std::string& path) override {
        // Without waiting: opening a pipe that nobody writes to would never return.
        Descriptor file(OpenUninterrupted(path, O_RDONLY | O_NONBLOCK));
        if (!file) {
            return kInvalidFile;
        }
        struct stat info {};
        if (::fstat(file.number(), &info) != 0 || !S_ISREG(info.st_mode)) {
            if (info.st_mode != 0) {
                errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
            }
            const LastErrorKeeper keep;
            file.Close();
            return kInvalidFile;
        }
        return file.Release();
    }

    FileHandle CreateNew(const std::string& path, bool& exists) override {
        Descriptor file(OpenUninterrupted(path, O_RDWR | O_CREAT | O_EXCL | O_APPEND, 0666));
        exists = !file && errno == EEXIST;
        if (!file) {
            return kInvalidFile;
        }
        // Says that it is being written. Where a file system knows no locks nobody can be told.
        ::flock(file.number(), LOCK_EX | LOCK_NB);
        SyncFolderOf(path);
        return file.Release();
    }

    bool Size(FileHandle file, std::uint64_t& size) override {
        struct stat info {};
        if (::fstat(Number(file), &info) != 0) {
            return false;
        }
        size = info.st_size > 0 ? static_cast<std::uint64_t>(info.st_size) : 0;
        return true;
    }

    bool ReadAt(FileHandle file, std::uint64_t offset, void* data, std::size_t size,
                std::size_t& count) override {
        count = 0;
        while (count < size) {
            if (offset + count > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
                return true;  // behind the end of any file
            }
            const ssize_t got = ::pread(Number(file), static_cast<char*>(data) + count,
                                        std::min(size - count, kLargestTransfer),
                                        static_cast<off_t>(offset + count));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got <= 0) {
                return got == 0;
            }
            count += static_cast<std::size_t>(got);
        }
        return true;
    }

    void WillRead(FileHandle file, std::uint64_t offset, std::size_t size) override {
        constexpr auto kEnd = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
        if (offset < kEnd && size < kEnd - offset) {
            ::posix_fadvise(Number(file), static_cast<off_t>(offset), static_cast<off_t>(size),
                            POSIX_FADV_WILLNEED);
        }
    }

    bool Append(FileHandle file, const void* data, std::size_t size) override {
        const auto* from = static_cast<const char*>(data);
        while (size > 0) {
            const ssize_t taken = ::write(Number(file), from, std::min(size, kLargestTransfer));
            if (taken < 0 && errno == EINTR) {
                continue;
            }
            if (taken <= 0) {
                errno = taken == 0 ? ENOSPC : errno;
                return false;
            }
            from += taken;
            size -= static_cast<std::size_t>(taken);
        }
        return true;
    }

    bool Sync(FileHandle file) override {
        int status = -1;
        do {
            status = ::fdatasync(Number(file));
        } while (status != 0 && errno == EINTR);
        return status == 0;
    }

    bool Close(FileHandle file) override {
        // Linux frees the number even when close() is interrupted, so it is not repeated.
        return ::close(Number(file)) == 0 || errno == EINTR;
    }

    bool IsNamed(FileHandle file, const std::string& path) override {
        struct stat own {};
        struct stat named {};
        return IsName(path) && ::fstat(Number(file), &own) == 0 &&
               ::stat(path.c_str(), &named) == 0 && own.st_dev == named.st_dev &&
               own.st_ino == named.st_ino;
    }

    bool RemoveUnused(const std::string& path) override {
        const Descriptor file(OpenUninterrupted(path, O_RDONLY | O_NONBLOCK));
        if (!file) {
            return false;
        }
        if (::flock(file.number(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            errno = EBUSY;
            return false;
        }
        return ::unlink(path.c_str()) == 0;
    }

    bool FreeSpace(const std::string& folder, std::uint64_t& bytes) override {
        struct statvfs info {};
        if (!IsName(folder) || ::statvfs(FolderName(folder), &info) != 0) {
            return false;
        }
        bytes = static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
        return true;
    }

    bool List(const std::string& folder, std::vector<FolderFile>& files) override {
        files.clear();
        if (!IsName(folder)) {
            return false;
        }
        struct CloseFolder {
            void operator()(DIR* opened) const { ::closedir(opened); }
        };
        const std::unique_ptr<DIR, CloseFolder> opened(::opendir(FolderName(folder)));
        if (opened == nullptr) {
            return false;
        }
        errno = 0;
        for (const dirent* entry = nullptr; (entry = ::readdir(opened.get())) != nullptr;
             errno = 0) {
            struct stat info {};
            if (::fstatat(::dirfd(opened.get()), entry->d_name, &info, 0) == 0 &&
                S_ISREG(info.st_mode)) {
                files.push_back({entry->d_name, static_cast<std::uint64_t>(info.st_size)});
            }
        }
        return errno == 0;
    }
};

}  // namespace

DataFileOperations& SystemDataFiles() {
    // Never destroyed: destructors of other statics may still write files.
    static PosixDataFiles& files = *new PosixDataFiles;
    return files;
}

}  // namespace wavo::platform
