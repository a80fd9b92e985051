#include "tables/field_cutter.h"

#include <algorithm>
#include <cstring>

namespace wavo::tables {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
/// What is kept of a field that is too long, to be told.
constexpr std::size_t kShownBytes = 64;

}  // namespace

FieldCutter::FieldCutter(TableBytes& bytes, std::size_t buffer_size)
    : m_bytes(bytes), m_buffer(buffer_size) {}

std::string_view FieldCutter::Beginning() {
    if (m_end == 0 && !m_has_ended) {
        Fill();
        if (std::string_view(m_buffer.data(), m_end).starts_with(kByteOrderMark)) {
            m_begin = kByteOrderMark.size();
        }
    }
    return {m_buffer.data() + m_begin, m_end - m_begin};
}

void FieldCutter::Fill() {
    if (m_begin > 0) {
        std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    while (!m_has_ended && m_end < m_buffer.size()) {
        const std::size_t count = m_bytes.Read({m_buffer.data() + m_end, m_buffer.size() - m_end});
        m_end += count;
        m_has_ended = count == 0;
    }
}

void FieldCutter::Drain() {
    do {
        m_begin = m_end;
        Fill();
    } while (!m_has_ended);
    m_begin = m_end;
    m_is_in_line = false;
}

FieldCutter::Cut FieldCutter::Next(Field& field) {
    for (;;) {
        const Found found = m_is_skipping ? SkipRest(field) : Find(field);
        if (found == Found::kYes) {
            return Cut::kField;
        }
        if (found == Found::kEnd) {
            return Cut::kEnd;
        }
        if (IsFull()) {
            m_is_skipping = true;
            m_unquoted.assign(m_buffer.data(), std::min(kShownBytes, m_buffer.size()));
            continue;
        }
        if (m_is_limited) {
            if (m_allowed == 0) {
                return Cut::kLater;
            }
            --m_allowed;
        }
        Fill();
    }
}

FieldCutter::Found FieldCutter::Find(Field& field) {
    if (!m_is_in_line) {
        if (const Found found = FindLine(); found != Found::kYes) {
            return found;
        }
    }
    m_begin = BehindBlanks(m_begin);
    if (m_begin == m_end && !m_has_ended) {
        return Found::kMore;
    }
    return m_begin < m_end && m_buffer[m_begin] == '"' ? CutQuoted(field) : CutPlain(field);
}

/// Goes to the next line that is not blank.
FieldCutter::Found FieldCutter::FindLine() {
    if (m_line_ended) {
        m_line_ended = false;
        ++m_line_number;
    }
    for (;;) {
        if (m_skips_line_feed && m_begin < m_end) {
            m_begin += m_buffer[m_begin] == '\n' ? 1 : 0;
            m_skips_line_feed = false;
        }
        m_begin = BehindBlanks(m_begin);
        if (m_begin == m_end) {
            return m_has_ended ? Found::kEnd : Found::kMore;
        }
        const char c = m_buffer[m_begin];
        if (c != '\n' && c != '\r') {
            m_is_in_line = true;
            return Found::kYes;
        }
        ++m_begin;
        ++m_line_number;
        m_skips_line_feed = c == '\r';
    }
}

std::size_t FieldCutter::BehindBlanks(std::size_t at) const {
    while (at < m_end && IsBlank(m_buffer[at])) {
        ++at;
    }
    return at;
}

FieldCutter::Found FieldCutter::CutPlain(Field& field) {
    std::size_t at = m_begin;
    while (at < m_end && !EndsField(m_buffer[at])) {
        ++at;
    }
    if (at == m_end && !m_has_ended) {
        return Found::kMore;
    }
    std::size_t end = at;
    while (end > m_begin && IsBlank(m_buffer[end - 1])) {
        --end;
    }
    field.text = {m_buffer.data() + m_begin, end - m_begin};
    field.fault = FieldFault::kNone;
    return EndField(at, field);
}

FieldCutter::Found FieldCutter::CutQuoted(Field& field) {
    std::size_t at = m_begin + 1;
    m_unquoted.clear();
    field.fault = FieldFault::kQuote;
    for (; at < m_end && m_buffer[at] != '\n' && m_buffer[at] != '\r'; ++at) {
        if (m_buffer[at] == '"') {
            if (at + 1 == m_end && !m_has_ended) {
                return Found::kMore;
            }
            if (at + 1 == m_end || m_buffer[at + 1] != '"') {
                field.fault = FieldFault::kNone;
                ++at;
                break;
            }
            ++at;
        }
        m_unquoted += m_buffer[at];
    }
    // What stands behind the second quotation mark is no part of any field.
    const std::size_t behind = m_separator == ' ' ? at : BehindBlanks(at);
    at = behind;
    while (at < m_end && !EndsField(m_buffer[at])) {
        ++at;
    }
    if (at == m_end && !m_has_ended) {
        return Found::kMore;
    }
    if (at > behind) {
        field.fault = FieldFault::kQuote;
    }
    field.text = m_unquoted;
    return EndField(at, field);
}

FieldCutter::Found FieldCutter::SkipRest(Field& field) {
    std::size_t at = m_begin;
    while (at < m_end && !EndsField(m_buffer[at])) {
        ++at;
    }
    m_begin = at;
    if (at == m_end && !m_has_ended) {
        return Found::kMore;
    }
    field.text = m_unquoted;
    field.fault = FieldFault::kTooLong;
    const Found found = EndField(at, field);
    m_is_skipping = found == Found::kMore;
    if (m_is_skipping) {
        m_begin = m_end - 1;  // of a run of blanks one is enough
    }
    return found;
}

FieldCutter::Found FieldCutter::EndField(std::size_t at, Field& field) {
    if (m_separator == ' ') {
        at = BehindBlanks(at);
        if (at == m_end && !m_has_ended) {
            return Found::kMore;
        }
    }
    const bool is_end = at == m_end;
    const char c = is_end ? '\0' : m_buffer[at];
    field.is_last = is_end || c == '\n' || c == '\r';
    if (field.is_last) {
        m_is_in_line = false;
        m_line_ended = true;
        m_last_is_open = is_end;
        m_skips_line_feed = c == '\r';
    }
    // Where blanks separate, `at` is the begin of the next field.
    m_begin = is_end || (m_separator == ' ' && !field.is_last) ? at : at + 1;
    return Found::kYes;
}

}  // namespace wavo::tables
