// The segment in which a recorder tells of itself: one writes it, any number read it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/shared_memory.h"
#include "recorder/notice/notice.h"

namespace wavo::recorder {

class NoticePublisher {
 public:
    /// Makes the segment. Where there can be none, nobody is told anything: see LastError().
    explicit NoticePublisher(platform::WindowHandle window);

    /// A file name or reason that is too long is cut off, between characters.
    void Write(const Notice& notice);

 private:
    platform::SharedSegment m_segment;
    std::uint32_t m_sequence = 0;
};

class NoticeReader {
 public:
    /// Opens the segment of a recorder. IsOpen tells whether there is one.
    explicit NoticeReader(platform::WindowHandle window);
    ~NoticeReader();
    NoticeReader(NoticeReader&& other) noexcept;
    NoticeReader& operator=(NoticeReader&& other) noexcept;

    [[nodiscard]] bool IsOpen() const { return m_data != nullptr; }

    /// What was written last. Nothing when it is no notice, or when one is being written and its
    /// writer does not come to an end.
    [[nodiscard]] std::optional<Notice> Read() const;

 private:
    void Release() noexcept;

    void* m_data = nullptr;
    std::uint64_t m_size = 0;
    platform::MappingHandle m_handle = 0;
};

}  // namespace wavo::recorder
