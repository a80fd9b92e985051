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
    m_empty_from = 0;
}

void ColumnSpans::Add(std::int32_t column, std::int32_t first_row, std::int32_t last_row) {
    std::int16_t& held_top = top[static_cast<std::size_t>(column)];
    std::int16_t& held_bottom = bottom[static_cast<std::size_t>(column)];
    const auto first = static_cast<std::int16_t>(first_row);
    const auto last = static_cast<std::int16_t>(last_row);
    m_empty_from = std::max(m_empty_from, column + 1);
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

void ColumnSpans::AddRow(std::int32_t column, std::span<const std::int32_t> first_rows,
                         std::span<const std::int32_t> last_rows) {
    std::size_t i = 0;
    for (; i < first_rows.size() && column + static_cast<std::int32_t>(i) < m_empty_from; ++i) {
        Add(column + static_cast<std::int32_t>(i), first_rows[i], last_rows[i]);
    }
    std::int16_t* const tops = top.data() + column;
    std::int16_t* const bottoms = bottom.data() + column;
    for (std::size_t next = i; next < first_rows.size(); ++next) {
        tops[next] = static_cast<std::int16_t>(first_rows[next]);
        bottoms[next] = static_cast<std::int16_t>(last_rows[next]);
    }
    m_empty_from = std::max(m_empty_from, column + static_cast<std::int32_t>(first_rows.size()));
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
