// Large files of data: made once, written at their end and made to last piece by piece, read at any
// place, also while somebody writes them.
//
// All calls go through one replaceable set of operations, as those of platform/file.h do, so that
// tests can fill the disk at any write:
//
//   class FullDisk : public DataFileOperations { ... };
//   FullDisk full_disk;
//   const DataFileOperationsOverride override(full_disk);   // until the end of the scope
//
// Invariants:
// 1. Paths are UTF-8. A path with a NUL inside names no file.
// 2. A call that fails leaves its reason in LastError() of its thread.
// 3. Nothing is mapped: a file that somebody cuts off ends early, and nothing worse happens.
// 4. Reading keeps nobody from writing, renaming or removing the file. Whoever writes a file keeps
//    RemoveUnused from removing it.
// 5. One thread replaces the operations, and no file is open meanwhile. The system's may be used by
//    several threads, each file by one at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/file.h"

namespace wavo::platform {

/// A regular file in a folder.
struct FolderFile {
    std::string name;  ///< without the folder
    std::uint64_t size = 0;

    friend bool operator==(const FolderFile&, const FolderFile&) = default;
};

class DataFileOperations {
 public:
    DataFileOperations() = default;
    virtual ~DataFileOperations() = default;
    DataFileOperations(const DataFileOperations&) = delete;
    DataFileOperations& operator=(const DataFileOperations&) = delete;

    /// Opens an existing regular file for ReadAt. kInvalidFile on failure; the caller closes it.
    virtual FileHandle OpenForReading(const std::string& path) = 0;

    /// Makes a new file for Append and ReadAt; its name lasts when this returns. kInvalidFile on
    /// failure; `exists` is then whether that is because there is something of this name.
    virtual FileHandle CreateNew(const std::string& path, bool& exists) = 0;

    /// The size in bytes at present.
    virtual bool Size(FileHandle file, std::uint64_t& size) = 0;

    /// Reads `size` bytes from `offset` on; `count` is how many there were before the end.
    virtual bool ReadAt(FileHandle file, std::uint64_t offset, void* data, std::size_t size,
                        std::size_t& count) = 0;

    /// Says that these bytes will be read soon, so that the device can begin. Returns at once, and
    /// tells of no failure; a system may do nothing.
    virtual void WillRead(FileHandle /*file*/, std::uint64_t /*offset*/, std::size_t /*size*/) {}

    /// Writes `size` bytes at the end. On failure some of them may stand there.
    virtual bool Append(FileHandle file, const void* data, std::size_t size) = 0;

    /// Returns when all that was appended has reached the device.
    virtual bool Sync(FileHandle file) = 0;

    /// Closes the handle, which is gone also when this fails.
    virtual bool Close(FileHandle file) = 0;

    /// Whether `path` still names this file: false when it was removed, renamed or replaced.
    virtual bool IsNamed(FileHandle file, const std::string& path) = 0;

    /// Removes a file that nobody holds from CreateNew on.
    virtual bool RemoveUnused(const std::string& path) = 0;

    /// Bytes that this process may still write in the file system of `folder` (empty: the current
    /// one).
    virtual bool FreeSpace(const std::string& folder, std::uint64_t& bytes) = 0;

    /// The regular files of a folder (empty: the current one), in no order.
    virtual bool List(const std::string& folder, std::vector<FolderFile>& files) = 0;
};

/// The operations of the operating system.
DataFileOperations& SystemDataFiles();

/// The operations in use: the system's, unless replaced.
DataFileOperations& DataFiles();

/// Puts other operations in the place of the current ones for a scope.
class DataFileOperationsOverride {
 public:
    explicit DataFileOperationsOverride(DataFileOperations& operations) noexcept;
    ~DataFileOperationsOverride();
    DataFileOperationsOverride(const DataFileOperationsOverride&) = delete;
    DataFileOperationsOverride& operator=(const DataFileOperationsOverride&) = delete;

 private:
    DataFileOperations* const m_previous;
};

}  // namespace wavo::platform
