#include "platform/shared_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/last_error.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/mapping_guard.h"

namespace wavo::platform {

namespace {

constexpr int kCreationAttempts = 10;
constexpr std::size_t kLongestName = 254;
/// Where the system shows the names of all segments.
constexpr char kSegmentFolder[] = "/dev/shm";

/// A segment's name as the system wants it.
class SystemName {
 public:
    explicit SystemName(std::string_view name) noexcept {
        if (name.empty() || name == "." || name == ".." ||
            name.find('/') != std::string_view::npos || name.find('\0') != std::string_view::npos) {
            errno = EINVAL;
            return;
        }
        if (name.size() > kLongestName) {
            errno = ENAMETOOLONG;
            return;
        }
        m_text[0] = '/';
        std::memcpy(m_text.data() + 1, name.data(), name.size());
    }

    /// Null when the name is not possible; errno tells why.
    [[nodiscard]] const char* text() const noexcept {
        return m_text[0] == '/' ? m_text.data() : nullptr;
    }

 private:
    std::array<char, kLongestName + 2> m_text{};
};

Descriptor OpenExisting(const char* name, int access) noexcept {
    for (;;) {
        Descriptor segment(::shm_open(name, access, 0));
        if (segment || errno != EINTR) {
            return segment;
        }
    }
}

// A handle is the descriptor plus one: 0 stays free for "none".
int DescriptorOf(MappingHandle handle) noexcept {
    if (handle == 0 || handle > static_cast<MappingHandle>(std::numeric_limits<int>::max())) {
        return -1;
    }
    return static_cast<int>(handle - 1);
}

MappingHandle HandleOf(int descriptor) noexcept {
    return static_cast<MappingHandle>(descriptor) + 1;
}

/// Makes a new segment of this name in the place of any old one.
Descriptor CreateAnew(const char* name) noexcept {
    for (int attempt = 0; attempt < kCreationAttempts; ++attempt) {
        if (::shm_unlink(name) != 0 && errno != ENOENT) {
            return {};
        }
        Descriptor segment(::shm_open(name, O_RDWR | O_CREAT | O_EXCL, 0600));
        if (segment || (errno != EEXIST && errno != EINTR)) {
            return segment;
        }
    }
    return {};
}

/// Gives the segment its size, with the memory behind it: a full memory shows here and not as a
/// fault of whoever writes into it first.
bool Reserve(int segment, std::size_t size) noexcept {
    if (size == 0 || size > static_cast<std::size_t>(std::numeric_limits<off_t>::max())) {
        errno = EINVAL;
        return false;
    }
    int error = EINTR;
    while (error == EINTR) {
        error = ::posix_fallocate(segment, 0, static_cast<off_t>(size));
    }
    if (error != 0) {
        errno = error;
        return false;
    }
    return true;
}

/// Whether `name` still stands for the open segment.
bool StillNames(const char* name, int segment) noexcept {
    const Descriptor named = OpenExisting(name, O_RDONLY);
    struct stat ours {};
    struct stat theirs {};
    return named && ::fstat(segment, &ours) == 0 && ::fstat(named.number(), &theirs) == 0 &&
           ours.st_dev == theirs.st_dev && ours.st_ino == theirs.st_ino;
}

}  // namespace

MappingHandle OpenSharedMemory(const std::string& name) noexcept {
    const SystemName system_name(name);
    if (system_name.text() == nullptr) {
        return 0;
    }
    Descriptor segment = OpenExisting(system_name.text(), O_RDWR);
    if (!segment) {
        return 0;
    }
    // Anybody may create names in the system's folder: only this user's and root's are meant.
    struct stat info {};
    const bool known = ::fstat(segment.number(), &info) == 0;
    if (!known || (info.st_uid != ::geteuid() && info.st_uid != 0)) {
        const int error = known ? EACCES : errno;
        segment.Close();
        errno = error;
        return 0;
    }
    return HandleOf(segment.Release());
}

void* MapSharedMemory(MappingHandle handle) noexcept {
    const int segment = DescriptorOf(handle);
    struct stat info {};
    if (::fstat(segment, &info) != 0) {
        return nullptr;
    }
    if (info.st_size <= 0) {
        errno = EINVAL;
        return nullptr;
    }
    void* address = ::mmap(nullptr, static_cast<std::size_t>(info.st_size), PROT_READ | PROT_WRITE,
                           MAP_SHARED, segment, 0);
    if (address == MAP_FAILED) {
        return nullptr;
    }
    if (!GuardMapping(address, static_cast<std::size_t>(info.st_size))) {
        const LastErrorKeeper keep;
        ::munmap(address, static_cast<std::size_t>(info.st_size));
        return nullptr;
    }
    return address;
}

std::uint64_t SharedMemorySize(const void* address, MappingHandle /*handle*/) noexcept {
    return GuardedSize(address);
}

SegmentState SharedMemoryState(const void* address, MappingHandle handle) noexcept {
    const LastErrorKeeper keep;
    struct stat info {};
    if (IsMappingLost(address) || ::fstat(DescriptorOf(handle), &info) != 0 || info.st_size < 0 ||
        static_cast<std::size_t>(info.st_size) != GuardedSize(address)) {
        return SegmentState::kResized;
    }
    return info.st_nlink == 0 ? SegmentState::kRemoved : SegmentState::kWhole;
}

bool UnmapSharedMemory(void* address, std::uint64_t size) noexcept {
    if (address == nullptr) {
        errno = EINVAL;
        return false;
    }
    UnguardMapping(address);
    return ::munmap(address, size) == 0;
}

bool CloseSharedMemory(MappingHandle handle) noexcept {
    return ::close(DescriptorOf(handle)) == 0 || errno == EINTR;
}

SharedSegment SharedSegment::Create(const std::string& name, std::size_t size) noexcept {
    SharedSegment made;
    const SystemName system_name(name);
    if (system_name.text() == nullptr) {
        return made;
    }
    Descriptor segment = CreateAnew(system_name.text());
    if (!segment) {
        return made;
    }
    made.m_name = name;
    if (Reserve(segment.number(), size)) {
        made.m_handle = HandleOf(segment.Release());
        made.m_data = MapSharedMemory(made.m_handle);
        made.m_size = made.m_data != nullptr ? size : 0;
    }
    if (made.m_data == nullptr) {
        const LastErrorKeeper keep;
        ::shm_unlink(system_name.text());
        if (made.m_handle != 0) {
            CloseSharedMemory(std::exchange(made.m_handle, 0));
        }
        made.m_name.clear();
    }
    return made;
}

void SharedSegment::Release() noexcept {
    if (m_data == nullptr) {
        return;
    }
    const LastErrorKeeper keep;
    // Another publisher may have taken the name since; then it is no longer ours to remove.
    const SystemName system_name(m_name);
    if (StillNames(system_name.text(), DescriptorOf(m_handle))) {
        ::shm_unlink(system_name.text());
    }
    UnmapSharedMemory(std::exchange(m_data, nullptr), std::exchange(m_size, 0));
    CloseSharedMemory(std::exchange(m_handle, 0));
    m_name.clear();
}

std::size_t RemoveLeftoverSegments(const std::string& prefix) {
    std::vector<std::string> leftovers;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(kSegmentFolder, error)) {
        const std::string name = entry.path().filename().string();
        struct stat info {};
        if (name.starts_with(prefix) && ::lstat(entry.path().c_str(), &info) == 0 &&
            S_ISREG(info.st_mode) && info.st_uid == ::geteuid()) {
            leftovers.push_back(name);
        }
    }
    std::size_t removed = 0;
    for (const std::string& name : leftovers) {
        const SystemName system_name(name);
        removed += system_name.text() != nullptr && ::shm_unlink(system_name.text()) == 0 ? 1 : 0;
    }
    return removed;
}

}  // namespace wavo::platform
