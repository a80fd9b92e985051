// An open data file that is closed with its owner.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/data_file.h"
#include "recording/bytes.h"

namespace wavo::recording {

class RecordingFile {
 public:
    RecordingFile() = default;
    explicit RecordingFile(platform::FileHandle file) : m_file(file) {}
    ~RecordingFile() { Close(); }
    RecordingFile(RecordingFile&& other) noexcept
        : m_file(std::exchange(other.m_file, platform::kInvalidFile)) {}
    RecordingFile& operator=(RecordingFile&& other) noexcept {
        if (this != &other) {
            Close();
            m_file = std::exchange(other.m_file, platform::kInvalidFile);
        }
        return *this;
    }

    [[nodiscard]] bool IsOpen() const { return m_file != platform::kInvalidFile; }
    [[nodiscard]] platform::FileHandle handle() const { return m_file; }

    /// False when closing fails; the file is closed all the same. True when none is open.
    bool Close() {
        return !IsOpen() ||
               platform::DataFiles().Close(std::exchange(m_file, platform::kInvalidFile));
    }

    bool Append(Bytes bytes) {
        return platform::DataFiles().Append(m_file, bytes.data(), bytes.size());
    }
    bool Sync() { return platform::DataFiles().Sync(m_file); }

    /// Reads all of `bytes` from `offset` on; false when it fails or the file ends before.
    bool ReadAt(std::uint64_t offset, std::span<std::byte> bytes) const {
        std::size_t count = 0;
        return platform::DataFiles().ReadAt(m_file, offset, bytes.data(), bytes.size(), count) &&
               count == bytes.size();
    }

    /// These bytes will be read soon.
    void WillRead(std::uint64_t offset, std::size_t size) const {
        platform::DataFiles().WillRead(m_file, offset, size);
    }

 private:
    platform::FileHandle m_file = platform::kInvalidFile;
};

}  // namespace wavo::recording
