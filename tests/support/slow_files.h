// The system's files on a disk that takes its time, for the time that the object lives: a clock
// moves with each write, and a test can do something meanwhile.
#pragma once

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/file.h"
#include "platform/last_error.h"

namespace wavo::testing {

class SlowFiles final : public platform::FileOperations {
 public:
    SlowFiles() : m_override(*this) {}

    /// What the clock of a test shows.
    std::chrono::milliseconds now{0};
    std::chrono::milliseconds per_write{0};
    /// Called with the number of each write, from 1 on, before it is done.
    std::function<void(int)> at_write;
    int writes = 0;
    /// The number of a write that fails for want of room; 0 for none.
    int full_at = 0;

    platform::FileHandle OpenForReading(const std::string& path) override {
        return m_system.OpenForReading(path);
    }
    platform::FileHandle OpenForWriting(const std::string& path, platform::Creation creation,
                                        bool write_through) override {
        return m_system.OpenForWriting(path, creation, write_through);
    }
    std::uint64_t Size(platform::FileHandle file) override { return m_system.Size(file); }
    bool Read(platform::FileHandle file, void* data, std::size_t size,
              std::size_t& count) override {
        return m_system.Read(file, data, size, count);
    }
    bool Write(platform::FileHandle file, const void* data, std::size_t size,
               std::size_t& count) override {
        ++writes;
        if (at_write) {
            at_write(writes);
        }
        now += per_write;
        if (writes == full_at) {
            platform::SetLastError(ENOSPC);
            return false;
        }
        return m_system.Write(file, data, size, count);
    }
    bool Flush(platform::FileHandle file) override { return m_system.Flush(file); }
    bool Close(platform::FileHandle file) override { return m_system.Close(file); }
    bool CreateTemporaryFile(const std::string& folder, const std::string& prefix,
                             const std::string& like, char* name) override {
        return m_system.CreateTemporaryFile(folder, prefix, like, name);
    }
    bool Rename(const std::string& from, const std::string& to) override {
        return m_system.Rename(from, to);
    }
    bool Remove(const std::string& path) override { return m_system.Remove(path); }
    bool Exists(const std::string& path) override { return m_system.Exists(path); }
    std::string FollowLinks(const std::string& path) override { return m_system.FollowLinks(path); }

 private:
    platform::FileOperations& m_system = platform::SystemFiles();
    const platform::FileOperationsOverride m_override;
};

}  // namespace wavo::testing
