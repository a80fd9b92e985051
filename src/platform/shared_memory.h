// Named shared memory.
//
// Two sides. A reader opens a segment that exists and maps it whole, with the five plain calls
// below; it never creates one. A publisher owns a SharedSegment, which creates the name anew and
// removes it again.
//
// POSIX: shm_open("/" + name), mode 0600, size by fstat. Windows: file mappings by name; there a
// name lives as long as any process holds it, and removing is a matter of closing.
//
// Invariants:
// 1. A segment never changes its size: it is removed and created anew, never truncated.
// 2. A mapping stays valid until UnmapSharedMemory, also after its name was removed.
// 3. Where another process breaks rule 1 nevertheless, rule 2 holds all the same: the first access
//    to what was cut off turns the whole mapping into zeros of this process' own. Who reads a
//    segment that others write asks SharedMemoryState before it relies on what it read.
//
// The calls leave their reason in LastError() when they fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace wavo::platform {

/// Number of an open segment in this process; 0 is never a valid one.
using MappingHandle = std::uint64_t;

/// Opens the existing segment `name` for reading and writing.
/// Returns 0 when there is none or it may not be opened. The caller closes the handle.
MappingHandle OpenSharedMemory(const std::string& name) noexcept;

/// Maps the whole segment, readable and writable. Returns null on failure, also for an empty
/// segment. The caller unmaps. The address is aligned to a page.
void* MapSharedMemory(MappingHandle handle) noexcept;

/// Size in bytes of the mapped region that begins at `address`; 0 when it cannot be told. It is
/// that of the moment of mapping, whatever becomes of the segment.
/// REQUIRES: `address` came from MapSharedMemory(handle).
std::uint64_t SharedMemorySize(const void* address, MappingHandle handle) noexcept;

/// What has become of a segment since it was mapped.
enum class SegmentState {
    kWhole,
    kResized,  ///< its size has changed: the mapping may hold zeros in the place of its content
    kRemoved,  ///< its name is gone or stands for another segment; nobody else will find it
};

/// Windows: always kWhole, as a name lives and a size stands while anybody holds the mapping.
/// REQUIRES: `address` came from MapSharedMemory(handle).
SegmentState SharedMemoryState(const void* address, MappingHandle handle) noexcept;

/// Removes a mapping. Returns false on failure.
/// REQUIRES: `address` came from MapSharedMemory and `size` is what SharedMemorySize gave.
bool UnmapSharedMemory(void* address, std::uint64_t size) noexcept;

/// Closes a handle of OpenSharedMemory. Mappings of it stay. Returns false on failure.
bool CloseSharedMemory(MappingHandle handle) noexcept;

/// A segment that this process publishes: created on construction, its name removed on
/// destruction. Move-only.
class SharedSegment {
 public:
    SharedSegment() = default;
    ~SharedSegment();
    SharedSegment(SharedSegment&& other) noexcept;
    SharedSegment& operator=(SharedSegment&& other) noexcept;

    /// Creates the segment `name` of `size` bytes, all zero, and maps it. A segment of that name
    /// that is left over is removed first (those who hold it mapped keep the old one).
    /// Returns an empty object (`data() == nullptr`) on failure; LastError() tells why.
    static SharedSegment Create(const std::string& name, std::size_t size) noexcept;

    [[nodiscard]] void* data() const noexcept { return m_data; }
    [[nodiscard]] std::size_t size() const noexcept { return m_size; }
    [[nodiscard]] const std::string& name() const noexcept { return m_name; }
    explicit operator bool() const noexcept { return m_data != nullptr; }

    /// What others have made of it. kRemoved for an empty object.
    [[nodiscard]] SegmentState State() const noexcept {
        return m_data == nullptr ? SegmentState::kRemoved : SharedMemoryState(m_data, m_handle);
    }

 private:
    void Release() noexcept;

    std::string m_name;
    void* m_data = nullptr;
    std::size_t m_size = 0;
    MappingHandle m_handle = 0;
};

/// Removes the names of all segments of this user that begin with `prefix`, for a publisher that
/// knows that the one before it has died. Those who hold one mapped keep it. Returns how many were
/// removed; where names die with their holders there are none.
/// REQUIRES: `prefix` is not empty.
std::size_t RemoveLeftoverSegments(const std::string& prefix);

}  // namespace wavo::platform
