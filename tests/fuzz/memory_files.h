// Files in memory, in the place of the system's, for as long as the object lives: no disk between
// the fuzzer and the reader.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "platform/last_error.h"

namespace wavo::fuzzing {

class MemoryFiles final : public platform::FileOperations {
 public:
    /// No read gives more than `largest_read` bytes. REQUIRES: it is not 0.
    explicit MemoryFiles(std::size_t largest_read = SIZE_MAX)
        : m_largest_read(largest_read), m_override(*this) {}

    /// Makes or replaces a file.
    void Put(const std::string& path, std::string_view content) { m_files[path] = content; }
    /// The bytes of a file; empty when there is none.
    [[nodiscard]] std::string Get(const std::string& path) const {
        const auto found = m_files.find(path);
        return found != m_files.end() ? found->second : std::string();
    }

    platform::FileHandle OpenForReading(const std::string& path) override {
        return m_files.contains(path) ? Add({path, 0}) : Missing();
    }
    platform::FileHandle OpenForWriting(const std::string& path, platform::Creation creation,
                                        bool /*write_through*/) override {
        std::string& content = m_files[path];
        if (creation == platform::Creation::kCreateAlways) {
            content.clear();
        }
        return Add({path, content.size()});
    }
    std::uint64_t Size(platform::FileHandle file) override {
        return m_files[m_open[file].path].size();
    }
    bool Read(platform::FileHandle file, void* data, std::size_t size,
              std::size_t& count) override {
        Position& position = m_open[file];
        const std::string& content = m_files[position.path];
        count = std::min({size, m_largest_read, content.size() - position.offset});
        std::memcpy(data, content.data() + position.offset, count);
        position.offset += count;
        return true;
    }
    bool Write(platform::FileHandle file, const void* data, std::size_t size,
               std::size_t& count) override {
        m_files[m_open[file].path].append(static_cast<const char*>(data), size);
        count = size;
        return true;
    }
    bool Flush(platform::FileHandle /*file*/) override { return true; }
    bool Close(platform::FileHandle file) override { return m_open.erase(file) == 1; }
    bool CreateTemporaryFile(const std::string& folder, const std::string& prefix,
                             const std::string& /*like*/, char* name) override {
        const std::string path = folder + prefix + "0000.tmp";
        m_files[path].clear();
        std::memcpy(name, path.c_str(), path.size() + 1);
        return true;
    }
    bool Rename(const std::string& from, const std::string& to) override {
        m_files[to] = m_files[from];
        return Remove(from);
    }
    bool Remove(const std::string& path) override { return m_files.erase(path) == 1; }
    bool Exists(const std::string& path) override { return m_files.contains(path); }
    std::string FollowLinks(const std::string& path) override { return path; }

 private:
    struct Position {
        std::string path;
        std::size_t offset = 0;
    };

    platform::FileHandle Add(Position position) {
        m_open[++m_last_handle] = std::move(position);
        return m_last_handle;
    }
    static platform::FileHandle Missing() {
        platform::SetLastError(ENOENT);
        return platform::kInvalidFile;
    }

    const std::size_t m_largest_read;
    std::map<std::string, std::string> m_files;
    std::map<platform::FileHandle, Position> m_open;
    platform::FileHandle m_last_handle = 0;
    const platform::FileOperationsOverride m_override;
};

}  // namespace wavo::fuzzing
