#include "support/text_buffer.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace wavo {

TextBuffer::~TextBuffer() {
    Free();
}

TextBuffer::TextBuffer(TextBuffer&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)) {}

TextBuffer& TextBuffer::operator=(TextBuffer&& other) noexcept {
    if (this != &other) {
        Free();
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_capacity = std::exchange(other.m_capacity, 0);
    }
    return *this;
}

bool TextBuffer::Append(std::string_view text) noexcept {
    if (!Reserve(text.size())) {
        return false;
    }
    if (!text.empty()) {
        std::memcpy(m_data + m_size, text.data(), text.size());
        m_size += text.size();
    }
    return true;
}

void TextBuffer::Free() noexcept {
    std::free(m_data);
    m_data = nullptr;
    m_size = 0;
    m_capacity = 0;
}

bool TextBuffer::Grow(std::size_t more) noexcept {
    constexpr std::size_t kSmallest = 256;
    if (more > SIZE_MAX / 4 || m_size > SIZE_MAX / 4) {
        errno = ENOMEM;
        return false;
    }
    const std::size_t capacity = std::max({kSmallest, m_size + more, m_capacity * 2});
    void* const data = std::realloc(m_data, capacity + kSlack);
    if (data == nullptr) {
        return false;
    }
    m_data = static_cast<char*>(data);
    m_capacity = capacity;
    return true;
}

}  // namespace wavo
