// Text that grows at its end, for texts too large to risk an exception: growing says whether
// there was memory for it.
//
// Invariants:
// 1. The memory has kSlack bytes more than the text, so that short copies may write beyond it.
// 2. Growing moves the text: keep offsets, not pointers.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace wavo {

class TextBuffer {
 public:
    static constexpr std::size_t kSlack = 32;

    TextBuffer() = default;
    ~TextBuffer();
    TextBuffer(TextBuffer&& other) noexcept;
    TextBuffer& operator=(TextBuffer&& other) noexcept;

    [[nodiscard]] const char* data() const noexcept { return m_data; }
    [[nodiscard]] char* data() noexcept { return m_data; }
    [[nodiscard]] std::size_t size() const noexcept { return m_size; }
    [[nodiscard]] std::string_view View() const noexcept { return {m_data, m_size}; }
    [[nodiscard]] std::string_view View(std::size_t offset, std::size_t length) const noexcept {
        return {m_data + offset, length};
    }

    /// Makes room for `more` bytes behind the text. False when there is no memory for it (errno
    /// tells so); the text stays as it is. Room for nothing has its slack too.
    [[nodiscard]] bool Reserve(std::size_t more) noexcept {
        return (more <= m_capacity - m_size && m_data != nullptr) || Grow(more);
    }

    /// Appends `text`, which may not lie in this buffer. False as Reserve.
    [[nodiscard]] bool Append(std::string_view text) noexcept;

    /// Appends `text`, which may lie in this buffer. REQUIRES: room for it was reserved.
    void Put(std::string_view text) noexcept {
        std::memcpy(m_data + m_size, text.data(), text.size());
        m_size += text.size();
    }

    /// Sets the size. REQUIRES: room for it was reserved, and the bytes are written.
    void SetSize(std::size_t size) noexcept { m_size = size; }

    /// Empties the text and frees its memory.
    void Free() noexcept;

 private:
    bool Grow(std::size_t more) noexcept;

    char* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;  ///< without the slack
};

}  // namespace wavo
