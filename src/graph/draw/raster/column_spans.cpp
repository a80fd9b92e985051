#include "graph/draw/raster/column_spans.h"

#include <algorithm>

namespace wavo {

bool EndsEarly(std::int32_t rows) {
    if (rows < kLongWayDown) {
        return false;
    }
    // The painter adds 1/65536 columns, truncated, per row, and half of one such step is what it
    // starts with: it falls short when the remainder is larger.
    constexpr std::int32_t kColumn = 65536;
    const std::int32_t step = kColumn / rows;
    return kColumn - rows * step > step / 2;
}

void ColumnSpans::Clear(std::int32_t columns) {
    top.assign(static_cast<std::size_t>(columns), kNoTop);
    bottom.assign(static_cast<std::size_t>(columns), kNoBottom);
    more.clear();
}

void ColumnSpans::Add(std::int32_t column, std::int32_t first_row, std::int32_t last_row) {
    std::int16_t& held_top = top[static_cast<std::size_t>(column)];
    std::int16_t& held_bottom = bottom[static_cast<std::size_t>(column)];
    const auto first = static_cast<std::int16_t>(first_row);
    const auto last = static_cast<std::int16_t>(last_row);
    if (held_top > held_bottom) {
        held_top = first;
        held_bottom = last;
    } else if (first_row <= held_bottom + 1 && last_row >= held_top - 1) {
        held_top = std::min(held_top, first);
        held_bottom = std::max(held_bottom, last);
    } else {
        more.push_back({column, first, last});
    }
}

void SpanBuilder::Column(std::int32_t column, double first, const MinMax& range, double last,
                         bool several) {
    std::int32_t top = RowOf(range.maximum);
    std::int32_t bottom = several ? RowOf(range.minimum) : top;
    // Where a curve rises or falls through the column, its first sample is one of these two.
    const std::int32_t first_row = first == range.maximum   ? top
                                   : first == range.minimum ? bottom
                                                            : RowOf(first);
    bool ink = several;
    if (m_open && column == m_column) {
        top = std::min(top, m_top);
        bottom = std::max(bottom, m_bottom);
        ink = true;
    } else if (m_open) {
        ink = LeadTo(first_row) || several;
    }
    m_open = true;
    m_ink = ink;
    m_column = column;
    m_top = top;
    m_bottom = bottom;
    m_last = last;
}

bool SpanBuilder::LeadTo(std::int32_t row) {
    bool early = false;
    if (row - m_top >= kLongWayDown) {
        const std::int32_t rows = row - RowOf(m_last);
        early = EndsEarly(rows);
    }
    if (row > m_bottom) {
        m_bottom = early ? row : row - 1;
    } else if (row < m_top) {
        m_top = row + 1;
    }
    m_ink = true;
    Flush();
    return !early;
}

void SpanBuilder::Break() {
    Flush();
    m_open = false;
}

void SpanBuilder::Flush() {
    if (m_open && m_ink) {
        m_spans.Add(m_column, m_top, m_bottom);
    }
}

}  // namespace wavo
