// Files as the file functions of the support library need them: open, read, write, flush, close,
// temporary names, rename with replace.
//
// All calls go through one replaceable set of operations, so that tests can make a write, a flush
// or a rename fail:
//
//   class FullDisk : public FileOperations { ... };
//   FullDisk full_disk;
//   const FileOperationsOverride override(full_disk);   // until the end of the scope
//
// Invariants:
// 1. Paths are UTF-8. A path with a NUL inside names no file.
// 2. A call that fails leaves its reason in LastError().
// 3. Only regular files open for reading: a folder, a pipe or a device fails at once instead of
//    blocking or never ending.
// 4. One thread replaces the operations, and no file is open meanwhile.
//
// Windows keeps others from opening a file in ways that its holder did not share. POSIX systems
// know no such rule: there anybody may open, rename or remove a file that is in use, and a reader
// keeps what it has opened. Nothing here stands in for it; a file that must never be seen half
// written is written under a temporary name and renamed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace wavo::platform {

/// Number of an open file in this process: a descriptor on POSIX systems, a HANDLE on Windows.
using FileHandle = std::intptr_t;
inline constexpr FileHandle kInvalidFile = -1;

/// What opening for writing does with a file that exists, or does not.
enum class Creation {
    kCreateNew,     ///< makes a new file; fails when there is one
    kOpenAlways,    ///< opens or makes it; every write goes to the end
    kCreateAlways,  ///< makes it, or opens it and empties it
};

class FileOperations {
 public:
    FileOperations() = default;
    virtual ~FileOperations() = default;
    FileOperations(const FileOperations&) = delete;
    FileOperations& operator=(const FileOperations&) = delete;

    /// Opens an existing file. Others may read and write it meanwhile; programs that this process
    /// starts inherit the handle. Returns kInvalidFile on failure; the caller closes the handle.
    virtual FileHandle OpenForReading(const std::string& path) = 0;

    /// Opens a file for writing; others may read it meanwhile. With `write_through` a write
    /// returns when its data has reached the device. Returns kInvalidFile on failure; the caller
    /// closes the handle.
    virtual FileHandle OpenForWriting(const std::string& path, Creation creation,
                                      bool write_through) = 0;

    /// Size in bytes of an open file, for reserving memory; 0 when it cannot be told.
    virtual std::uint64_t Size(FileHandle file) = 0;

    /// Reads up to `size` bytes; `count` is how many came, 0 at the end of the file.
    virtual bool Read(FileHandle file, void* data, std::size_t size, std::size_t& count) = 0;

    /// Writes `size` bytes; `count` is how many were taken, which may be less.
    virtual bool Write(FileHandle file, const void* data, std::size_t size, std::size_t& count) = 0;

    /// Returns when all that was written has reached the device.
    virtual bool Flush(FileHandle file) = 0;

    /// Closes the handle, which is gone also when this fails.
    virtual bool Close(FileHandle file) = 0;

    /// Makes an empty file with a name that no other file has: `folder` (which ends with the path
    /// separator; empty for the current folder), `prefix`, four hexadecimal digits and ".tmp".
    /// POSIX: it gets the permissions of the file `like`, those of any new file when there is none,
    /// and its owner and group where that is allowed. Windows: those of any new file in the folder.
    /// REQUIRES: `name`, which receives the path with a NUL at the end, has room for the lengths
    /// of `folder` and `prefix` and 9 bytes.
    virtual bool CreateTemporaryFile(const std::string& folder, const std::string& prefix,
                                     const std::string& like, char* name) = 0;

    /// Gives the file `from` the name `to` in one step; a file of that name is replaced, so that
    /// every other process sees the old file or the new one, whole. Fails when `to` is a folder
    /// or a file that this process may not write.
    virtual bool Rename(const std::string& from, const std::string& to) = 0;

    /// Removes a file.
    virtual bool Remove(const std::string& path) = 0;

    /// Whether there is a file or folder of this name. True also when that cannot be told, because
    /// of a fault of the disk or a folder that may not be searched: whoever takes a name for free
    /// may not be wrong.
    virtual bool Exists(const std::string& path) = 0;

    /// Where a symbolic link leads, followed to the end, whether a file is there or not; the path
    /// itself when it is no link. Empty when the links go round in a circle.
    virtual std::string FollowLinks(const std::string& path) = 0;
};

/// The operations of the operating system.
FileOperations& SystemFiles();

/// The operations in use: the system's, unless replaced.
FileOperations& Files();

/// Puts other operations in the place of the current ones for a scope.
class FileOperationsOverride {
 public:
    explicit FileOperationsOverride(FileOperations& operations) noexcept;
    ~FileOperationsOverride();
    FileOperationsOverride(const FileOperationsOverride&) = delete;
    FileOperationsOverride& operator=(const FileOperationsOverride&) = delete;

 private:
    FileOperations* const m_previous;
};

}  // namespace wavo::platform
