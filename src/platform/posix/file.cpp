#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <random>
#include <string_view>

#include "platform/last_error.h"
#include "platform/posix/descriptor.h"

namespace wavo::platform {

namespace {

/// Permissions of a new file, before the user's mask.
constexpr mode_t kNewFile = 0666;
/// What chmod sets on a file.
constexpr mode_t kPermissions = 07777;
/// Systems take a little less than 2 GB in one call.
constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;
/// As many links as systems follow.
constexpr int kMostLinks = 40;

bool HasNul(const std::string& path) {
    if (path.find('\0') == std::string::npos) {
        return false;
    }
    errno = EINVAL;
    return true;
}

/// The path up to its last separator, with it.
std::string FolderOf(const std::string& path) {
    const std::size_t end = path.rfind('/');
    return end == std::string::npos ? std::string() : path.substr(0, end + 1);
}

int OpenFile(const std::string& path, int flags, mode_t mode = 0) {
    if (HasNul(path)) {
        return -1;
    }
    int number = -1;
    do {
        number = ::open(path.c_str(), flags, mode);
    } while (number < 0 && errno == EINTR);
    return number;
}

/// What was opened without waiting waits from now on.
bool LetWait(const Descriptor& file) {
    const int flags = ::fcntl(file.number(), F_GETFL);
    return flags >= 0 && ::fcntl(file.number(), F_SETFL, flags & ~O_NONBLOCK) == 0;
}

/// Makes the entry of a file in its folder last. Some file systems cannot do that for folders,
/// and the file has its name by then: no reason to fail.
void FlushFolderOf(const std::string& path) {
    const std::string folder = FolderOf(path);
    const LastErrorKeeper keep;
    const Descriptor opened(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) {
        ::fsync(opened.number());
    }
}

/// Gives `file` the owner, group and permissions of `model`, as far as that is allowed.
bool TakeOver(const Descriptor& file, const struct stat& model) {
    struct stat own {};
    if (::fstat(file.number(), &own) != 0) {
        return false;
    }
    mode_t mode = model.st_mode & kPermissions;
    if (own.st_uid != model.st_uid || own.st_gid != model.st_gid) {
        // Only the superuser gives files away; a group one is a member of may be set.
        if (::fchown(file.number(), model.st_uid, model.st_gid) != 0 &&
            ::fchown(file.number(), static_cast<uid_t>(-1), model.st_gid) != 0) {
            // What the old group was allowed is not for the new one.
            mode &= ~static_cast<mode_t>(S_IRWXG | S_ISUID | S_ISGID);
        }
    }
    return ::fchmod(file.number(), mode) == 0;
}

class PosixFiles final : public FileOperations {
 public:
    FileHandle OpenForReading(const std::string& path) override {
        // Without waiting: opening a pipe that nobody writes to would never return.
        Descriptor file(OpenFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY));
        if (!file) {
            return kInvalidFile;
        }
        struct stat info {};
        if (::fstat(file.number(), &info) != 0) {
            return Fail(file, errno);
        }
        if (!S_ISREG(info.st_mode)) {
            return Fail(file, S_ISDIR(info.st_mode) ? EISDIR : EINVAL);
        }
        return LetWait(file) ? file.Release() : Fail(file, errno);
    }

    FileHandle OpenForWriting(const std::string& path, Creation creation,
                              bool write_through) override {
        int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
        switch (creation) {
            case Creation::kCreateNew:
                flags |= O_EXCL;
                break;
            case Creation::kOpenAlways:
                flags |= O_APPEND;
                break;
            case Creation::kCreateAlways:
                flags |= O_TRUNC;
                break;
        }
        if (write_through) {
            flags |= O_DSYNC;
        }
        Descriptor file(OpenFile(path, flags, kNewFile));
        if (!file) {
            return kInvalidFile;
        }
        return LetWait(file) ? file.Release() : Fail(file, errno);
    }

    std::uint64_t Size(FileHandle file) override {
        const LastErrorKeeper keep;
        struct stat info {};
        return ::fstat(Number(file), &info) == 0 && info.st_size > 0
                   ? static_cast<std::uint64_t>(info.st_size)
                   : 0;
    }

    bool Read(FileHandle file, void* data, std::size_t size, std::size_t& count) override {
        count = 0;
        while (count < size) {
            const ssize_t got = ::read(Number(file), static_cast<char*>(data) + count,
                                       std::min(size - count, kLargestTransfer));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                // What came before is handed out; the next call meets the error again.
                return count > 0;
            }
            count += static_cast<std::size_t>(got);
            if (got == 0 || static_cast<std::size_t>(got) < kLargestTransfer) {
                break;
            }
        }
        return true;
    }

    bool Write(FileHandle file, const void* data, std::size_t size, std::size_t& count) override {
        count = 0;
        while (count < size) {
            const ssize_t taken = ::write(Number(file), static_cast<const char*>(data) + count,
                                          std::min(size - count, kLargestTransfer));
            if (taken < 0 && errno == EINTR) {
                continue;
            }
            if (taken < 0) {
                return false;
            }
            if (taken == 0) {
                break;
            }
            count += static_cast<std::size_t>(taken);
        }
        return true;
    }

    bool Flush(FileHandle file) override {
        int status = -1;
        do {
            status = ::fsync(Number(file));
        } while (status != 0 && errno == EINTR);
        // Devices and pipes have nothing to flush to.
        return status == 0 || errno == EINVAL || errno == EROFS;
    }

    bool Close(FileHandle file) override {
        // Linux frees the number even when close() is interrupted, so it is not repeated.
        return ::close(Number(file)) == 0 || errno == EINTR;
    }

    bool CreateTemporaryFile(const std::string& folder, const std::string& prefix,
                             const std::string& like, char* name) override {
        constexpr unsigned kNumbers = 0x10000;
        if (HasNul(folder) || HasNul(prefix) || HasNul(like)) {
            return false;
        }
        const std::string start = folder + prefix;
        struct stat model {};
        const bool has_model = ::stat(like.c_str(), &model) == 0 && S_ISREG(model.st_mode);
        unsigned number = std::random_device()();
        for (unsigned tries = 0; tries < kNumbers; ++tries, ++number) {
            std::array<char, 9> digits{};
            std::snprintf(digits.data(), digits.size(), "%04X.tmp", number % kNumbers);
            const std::string path = start + digits.data();
            // Until it has its permissions, a file that replaces a closed one is closed to all.
            const Descriptor file(OpenFile(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                           has_model ? S_IRUSR | S_IWUSR : kNewFile));
            if (!file && errno == EEXIST) {
                continue;
            }
            if (!file) {
                return false;
            }
            if (has_model && !TakeOver(file, model)) {
                const LastErrorKeeper keep;
                ::unlink(path.c_str());
                return false;
            }
            std::memcpy(name, path.c_str(), path.size() + 1);
            return true;
        }
        return false;
    }

    bool Rename(const std::string& from, const std::string& to) override {
        if (HasNul(from) || HasNul(to)) {
            return false;
        }
        // A rename asks for nothing but the folder, but a file that was made read-only is not
        // meant to be replaced.
        if (::faccessat(AT_FDCWD, to.c_str(), W_OK, AT_EACCESS) != 0 && errno != ENOENT) {
            return false;
        }
        if (::rename(from.c_str(), to.c_str()) != 0) {
            return false;
        }
        FlushFolderOf(to);
        return true;
    }

    bool Remove(const std::string& path) override {
        return !HasNul(path) && ::unlink(path.c_str()) == 0;
    }

    bool Exists(const std::string& path) override {
        return !HasNul(path) &&
               (::access(path.c_str(), F_OK) == 0 || (errno != ENOENT && errno != ENOTDIR));
    }

    std::string FollowLinks(const std::string& path) override {
        if (HasNul(path)) {
            return {};
        }
        std::string current = path;
        std::array<char, PATH_MAX> target{};
        for (int i = 0; i <= kMostLinks; ++i) {
            const ssize_t length = ::readlink(current.c_str(), target.data(), target.size());
            if (length < 0) {
                return current;
            }
            const std::string_view next(target.data(), static_cast<std::size_t>(length));
            current =
                next.starts_with('/') ? std::string(next) : FolderOf(current) + std::string(next);
        }
        errno = ELOOP;
        return {};
    }

 private:
    static int Number(FileHandle file) { return static_cast<int>(file); }

    static FileHandle Fail(Descriptor& file, int error) {
        file.Close();
        errno = error;
        return kInvalidFile;
    }
};

}  // namespace

FileOperations& SystemFiles() {
    // Never destroyed: destructors of other statics may still write files.
    static PosixFiles& files = *new PosixFiles;
    return files;
}

}  // namespace wavo::platform
