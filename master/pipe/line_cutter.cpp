#include "master/pipe/line_cutter.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace wavo::master {

std::span<char> LineCutter::Room() {
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= std::exchange(m_begin, 0);
    return std::span(m_buffer).subspan(m_end, std::min(kRoom, m_buffer.size() - m_end));
}

LineCutter::Piece LineCutter::Next(std::string_view* line) {
    while (m_begin < m_end) {
        const char* const begin = m_buffer.data() + m_begin;
        const std::size_t left = m_end - m_begin;
        const auto* const line_end = static_cast<const char*>(std::memchr(begin, '\n', left));
        if (line_end == nullptr) {
            if (m_is_skipping || left > kLongestLine) {
                m_begin = m_end;
                *line = {begin, left};
                return std::exchange(m_is_skipping, true) ? Piece::kNone : Piece::kTooLong;
            }
            return Piece::kNone;
        }
        const auto size = static_cast<std::size_t>(line_end - begin);
        m_begin += size + 1;
        if (!std::exchange(m_is_skipping, false)) {
            *line = {begin, size};
            return size > kLongestLine ? Piece::kTooLong : Piece::kLine;
        }
    }
    return Piece::kNone;
}

std::optional<std::string_view> LineCutter::TakeRest() {
    const std::string_view rest(m_buffer.data() + m_begin, m_end - m_begin);
    m_begin = m_end;
    return rest.empty() || m_is_skipping ? std::nullopt : std::optional(rest);
}

void LineCutter::Clear() {
    m_begin = m_end = 0;
    m_is_skipping = false;
}

}  // namespace wavo::master
