// The system's data files with faults on demand, for as long as the object lives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/data_file.h"
#include "platform/last_error.h"

namespace wavo::testing {

class FaultyDataFiles final : public platform::DataFileOperations {
 public:
    FaultyDataFiles() : m_override(*this) {}

    /// Makes call number `number` (from 0) of those that change a file fail, and all behind it:
    /// CreateNew, Append, Sync, Close. A write that fails leaves half of its bytes.
    void FailFrom(int number, int error) {
        m_fail_from = number;
        m_error = error;
    }
    /// Makes only this one fail.
    void FailOnce(int number, int error) {
        m_fail_once = number;
        m_error = error;
    }
    /// What there is room for, whatever the disk has.
    void SetFreeSpace(std::uint64_t bytes) { m_free_space = bytes; }
    /// Called before each call that changes a file.
    void SetBeforeChange(std::function<void()> action) { m_before_change = std::move(action); }
    /// Makes the reads fail from number `number` (from 0) on.
    void FailReadsFrom(int number, int error) {
        m_fail_reads_from = number;
        m_error = error;
    }
    /// Calls that change a file so far, and reads.
    [[nodiscard]] int changes() const { return m_changes; }
    [[nodiscard]] int reads() const { return m_reads; }

    platform::FileHandle OpenForReading(const std::string& path) override {
        return m_system.OpenForReading(path);
    }
    platform::FileHandle CreateNew(const std::string& path, bool& exists) override {
        exists = false;
        return Fails() ? platform::kInvalidFile : m_system.CreateNew(path, exists);
    }
    bool Size(platform::FileHandle file, std::uint64_t& size) override {
        return m_system.Size(file, size);
    }
    bool ReadAt(platform::FileHandle file, std::uint64_t offset, void* data, std::size_t size,
                std::size_t& count) override {
        count = 0;
        if (m_reads++ >= m_fail_reads_from) {
            platform::SetLastError(m_error);
            return false;
        }
        return m_system.ReadAt(file, offset, data, size, count);
    }
    bool Append(platform::FileHandle file, const void* data, std::size_t size) override {
        if (Fails()) {
            m_system.Append(file, data, size / 2);
            platform::SetLastError(m_error);
            return false;
        }
        return m_system.Append(file, data, size);
    }
    bool Sync(platform::FileHandle file) override { return !Fails() && m_system.Sync(file); }
    bool Close(platform::FileHandle file) override {
        const bool is_closed = m_system.Close(file);
        return !Fails() && is_closed;
    }
    bool IsNamed(platform::FileHandle file, const std::string& path) override {
        return m_system.IsNamed(file, path);
    }
    bool RemoveUnused(const std::string& path) override { return m_system.RemoveUnused(path); }
    bool FreeSpace(const std::string& folder, std::uint64_t& bytes) override {
        bytes = m_free_space.value_or(0);
        return m_free_space || m_system.FreeSpace(folder, bytes);
    }
    bool List(const std::string& folder, std::vector<platform::FolderFile>& files) override {
        return m_system.List(folder, files);
    }

 private:
    static constexpr int kNever = 1'000'000'000;

    bool Fails() {
        if (m_before_change) {
            m_before_change();
        }
        const int number = m_changes++;
        if (number < m_fail_from && number != m_fail_once) {
            return false;
        }
        platform::SetLastError(m_error);
        return true;
    }

    platform::DataFileOperations& m_system = platform::SystemDataFiles();
    int m_fail_from = kNever;
    int m_fail_once = kNever;
    int m_fail_reads_from = kNever;
    std::optional<std::uint64_t> m_free_space;
    std::function<void()> m_before_change;
    int m_error = 0;
    int m_changes = 0;
    int m_reads = 0;
    const platform::DataFileOperationsOverride m_override;
};

}  // namespace wavo::testing
