// The system's files with faults on demand, for the time that the object lives.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/file.h"
#include "platform/last_error.h"

namespace wavo::testing {

enum class Call {
    kOpenForReading,
    kOpenForWriting,
    kRead,
    kWrite,
    kFlush,
    kClose,
    kName,
    kRename,
    kRemove,
    kExists,
    kFollowLinks
};

class FaultyFiles final : public platform::FileOperations {
 public:
    FaultyFiles() : m_override(*this) {}

    /// Makes a call of this kind fail with the system error `error`, after `passed` that work.
    /// Every later one works again.
    void Fail(Call call, int error, int passed = 0) { m_faults[call] = {error, passed}; }
    /// Does something before call number `number` (from 0) of all calls but Size: what
    /// another program may do meanwhile.
    void BeforeCall(int number, std::function<void()> action) {
        m_action = std::move(action);
        m_action_at = number;
    }
    /// Calls so far, but for Size.
    [[nodiscard]] int count() const { return m_count; }
    /// Makes call number `number` fail with the system error `error`, whatever it is. Exists cannot
    /// tell then, and says yes.
    void FailCall(int number, int error) {
        m_fail_at = number;
        m_fail_error = error;
    }
    /// Takes no more than this many bytes in each write.
    void LimitWrites(std::size_t bytes) { m_largest_write = bytes; }
    /// Has room for this many bytes; what comes beyond fails with "no space left".
    void LimitSpace(std::size_t bytes, int error) {
        m_space = bytes;
        m_space_error = error;
    }
    /// Gives no more than this many bytes in each read.
    void LimitReads(std::size_t bytes) { m_largest_read = bytes; }

    /// What was called so far, in order: "write 12", "flush", "rename".
    [[nodiscard]] const std::vector<std::string>& calls() const { return m_calls; }
    /// Path and write-through of the last file that was opened for writing.
    [[nodiscard]] const std::string& written_path() const { return m_written_path; }
    [[nodiscard]] bool write_through() const { return m_write_through; }

    platform::FileHandle OpenForReading(const std::string& path) override {
        return Fails(Call::kOpenForReading) ? platform::kInvalidFile
                                            : m_system.OpenForReading(path);
    }
    platform::FileHandle OpenForWriting(const std::string& path, platform::Creation creation,
                                        bool write_through) override {
        m_calls.emplace_back("open");
        m_written_path = path;
        m_write_through = write_through;
        return Fails(Call::kOpenForWriting)
                   ? platform::kInvalidFile
                   : m_system.OpenForWriting(path, creation, write_through);
    }
    std::uint64_t Size(platform::FileHandle file) override { return m_system.Size(file); }
    bool Read(platform::FileHandle file, void* data, std::size_t size,
              std::size_t& count) override {
        return !Fails(Call::kRead) &&
               m_system.Read(file, data, std::min(size, m_largest_read), count);
    }
    bool Write(platform::FileHandle file, const void* data, std::size_t size,
               std::size_t& count) override {
        m_calls.push_back("write " + std::to_string(size));
        count = 0;
        if (Fails(Call::kWrite)) {
            return false;
        }
        const std::size_t taken = std::min({size, m_largest_write, m_space});
        const bool is_written = m_system.Write(file, data, taken, count);
        m_space -= taken;
        if (taken < size && m_space == 0) {
            platform::SetLastError(m_space_error);
            return false;
        }
        return is_written;
    }
    bool Flush(platform::FileHandle file) override {
        m_calls.emplace_back("flush");
        return !Fails(Call::kFlush) && m_system.Flush(file);
    }
    bool Close(platform::FileHandle file) override {
        m_calls.emplace_back("close");
        // The handle is gone either way, as with the system's.
        const bool is_closed = m_system.Close(file);
        return !Fails(Call::kClose) && is_closed;
    }
    bool CreateTemporaryFile(const std::string& folder, const std::string& prefix,
                             const std::string& like, char* name) override {
        m_calls.push_back("name " + prefix);
        return !Fails(Call::kName) && m_system.CreateTemporaryFile(folder, prefix, like, name);
    }
    bool Rename(const std::string& from, const std::string& to) override {
        m_calls.emplace_back("rename");
        return !Fails(Call::kRename) && m_system.Rename(from, to);
    }
    bool Remove(const std::string& path) override {
        m_calls.emplace_back("remove");
        return !Fails(Call::kRemove) && m_system.Remove(path);
    }
    bool Exists(const std::string& path) override {
        return Fails(Call::kExists) || m_system.Exists(path);
    }
    std::string FollowLinks(const std::string& path) override {
        return Fails(Call::kFollowLinks) ? std::string() : m_system.FollowLinks(path);
    }

 private:
    struct Fault {
        int error = 0;
        int passed = 0;
    };

    bool Fails(Call call) {
        if (m_count == m_action_at && m_action) {
            m_action();
        }
        if (m_count++ == m_fail_at) {
            platform::SetLastError(m_fail_error);
            return true;
        }
        const auto found = m_faults.find(call);
        if (found == m_faults.end() || found->second.passed-- > 0) {
            return false;
        }
        platform::SetLastError(found->second.error);
        m_faults.erase(found);
        return true;
    }

    platform::FileOperations& m_system = platform::SystemFiles();
    std::map<Call, Fault> m_faults;
    int m_count = 0;
    int m_action_at = -1;
    std::function<void()> m_action;
    int m_fail_at = -1;
    int m_fail_error = 0;
    std::size_t m_largest_write = std::numeric_limits<std::size_t>::max();
    std::size_t m_largest_read = std::numeric_limits<std::size_t>::max();
    std::size_t m_space = std::numeric_limits<std::size_t>::max();
    int m_space_error = 0;
    std::vector<std::string> m_calls;
    std::string m_written_path;
    bool m_write_through = false;
    const platform::FileOperationsOverride m_override;
};

}  // namespace wavo::testing
