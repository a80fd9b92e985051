// Data files in memory, in the place of the system's, for as long as the object lives.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data_file.h"
#include "platform/last_error.h"

namespace wavo::testing {

class MemoryDataFiles final : public platform::DataFileOperations {
 public:
    MemoryDataFiles() : m_override(*this) {}

    /// Makes or replaces a file.
    void Put(const std::string& path, std::string_view content) {
        m_files[path] = std::make_shared<std::string>(content);
    }
    /// The bytes of a file. REQUIRES: it is there.
    [[nodiscard]] std::string& Content(const std::string& path) { return *m_files.at(path); }

    platform::FileHandle OpenForReading(const std::string& path) override {
        return m_files.contains(path) ? Add(path) : Fail(ENOENT);
    }
    platform::FileHandle CreateNew(const std::string& path, bool& exists) override {
        exists = m_files.contains(path);
        if (exists) {
            return Fail(EEXIST);
        }
        Put(path, "");
        return Add(path);
    }
    bool Size(platform::FileHandle file, std::uint64_t& size) override {
        size = m_open.at(file)->size();
        return true;
    }
    void WillRead(platform::FileHandle /*file*/, std::uint64_t offset, std::size_t size) override {
        announced.push_back({offset, size});
    }
    bool ReadAt(platform::FileHandle file, std::uint64_t offset, void* data, std::size_t size,
                std::size_t& count) override {
        reads.push_back({offset, size});
        const std::string& content = *m_open.at(file);
        count = offset < content.size() ? std::min<std::size_t>(size, content.size() - offset) : 0;
        if (count > 0) {
            std::memcpy(data, content.data() + offset, count);
        }
        return true;
    }
    bool Append(platform::FileHandle file, const void* data, std::size_t size) override {
        m_open.at(file)->append(static_cast<const char*>(data), size);
        return true;
    }
    bool Sync(platform::FileHandle /*file*/) override { return true; }
    bool Close(platform::FileHandle file) override { return m_open.erase(file) == 1; }
    bool IsNamed(platform::FileHandle file, const std::string& path) override {
        const auto found = m_files.find(path);
        return found != m_files.end() && found->second == m_open.at(file);
    }
    bool RemoveUnused(const std::string& path) override { return m_files.erase(path) == 1; }
    bool FreeSpace(const std::string& /*folder*/, std::uint64_t& bytes) override {
        bytes = std::uint64_t{1} << 40U;
        return true;
    }
    bool List(const std::string& /*folder*/, std::vector<platform::FolderFile>& files) override {
        files.clear();
        for (const auto& [path, content] : m_files) {
            files.push_back({path, content->size()});
        }
        return true;
    }

    /// Bytes from a place on.
    struct Stretch {
        std::uint64_t offset = 0;
        std::size_t size = 0;

        friend bool operator==(const Stretch&, const Stretch&) = default;
    };
    std::vector<Stretch> reads;
    std::vector<Stretch> announced;

 private:
    platform::FileHandle Add(const std::string& path) {
        m_open[++m_last_handle] = m_files.at(path);
        return m_last_handle;
    }
    static platform::FileHandle Fail(int error) {
        platform::SetLastError(error);
        return platform::kInvalidFile;
    }

    std::map<std::string, std::shared_ptr<std::string>> m_files;
    std::map<platform::FileHandle, std::shared_ptr<std::string>> m_open;
    platform::FileHandle m_last_handle = 0;
    const platform::DataFileOperationsOverride m_override;
};

}  // namespace wavo::testing
