#include "graph/draw/curve/rows_from_blocks.h"

#include <numeric>

namespace wavo {

namespace {

/// Columns from one whose memory is asked for to the one that is worked on.
constexpr std::size_t kFetchAhead = 8;

}  // namespace

void RowsFromBlocks::Resize(std::size_t columns) {
    m_details.resize(columns);
    m_columns.resize(columns);
    m_inner_minimum.resize(columns);
    m_inner_maximum.resize(columns);
    m_outer_minimum.resize(columns);
    m_outer_maximum.resize(columns);
    m_inner_low.resize(columns);
    m_inner_high.resize(columns);
    m_outer_low.resize(columns);
    m_outer_high.resize(columns);
}

std::size_t RowsFromBlocks::Find(const Source& source, std::span<const std::size_t> bounds,
                                 std::size_t detail, const PixelEdges& rows,
                                 const RowsOfColumns& found) {
    const std::size_t columns = bounds.size() - 1;
    Resize(columns);
    std::iota(m_columns.begin(), m_columns.end(), 0U);
    source.pyramid.LimitsOfRow(bounds, detail,
                               {m_inner_minimum.data(), m_inner_maximum.data(),
                                m_outer_minimum.data(), m_outer_maximum.data()});
    std::size_t left = TakeKnown(rows, found, columns, detail);
    std::size_t looked_at = 0;
    while (left != 0) {
        --detail;
        looked_at = detail == 0 ? left : 0;
        NarrowAll(source, bounds, left, detail);
        left = TakeKnown(rows, found, left, detail);  // none at detail 0
    }
    FindFirst(source, bounds, rows, found);
    return looked_at;
}

std::size_t RowsFromBlocks::TakeKnown(const PixelEdges& rows, const RowsOfColumns& found,
                                      std::size_t count, std::size_t detail) {
    const auto map = [&rows, count](const std::vector<double>& values,
                                    std::vector<std::int32_t>& indices) {
        rows.IndicesOf(std::span(values).first(count), indices.data());
    };
    map(m_outer_minimum, m_outer_low);
    map(m_outer_maximum, m_outer_high);
    map(m_inner_minimum, m_inner_low);
    map(m_inner_maximum, m_inner_high);
    const std::int32_t lowest = rows.Size() - 1;
    std::size_t left = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t column = m_columns[i];
        found.top[column] = lowest - m_outer_high[i];
        found.bottom[column] = lowest - m_outer_low[i];
        m_details[column] = static_cast<std::uint8_t>(detail);
        m_columns[left] = column;
        m_inner_minimum[left] = m_inner_minimum[i];
        m_inner_maximum[left] = m_inner_maximum[i];
        left += static_cast<std::size_t>((m_outer_low[i] != m_inner_low[i]) |
                                         (m_outer_high[i] != m_inner_high[i]));
    }
    return left;
}

void RowsFromBlocks::NarrowAll(const Source& source, std::span<const std::size_t> bounds,
                               std::size_t count, std::size_t detail) {
    const auto fetch = [&](std::size_t i) {
        const std::uint32_t column = m_columns[i];
        source.pyramid.FetchToNarrow(source.slots, bounds[column], bounds[column + 1], detail);
    };
    for (std::size_t i = 0; i < count; ++i) {
        if (i + kFetchAhead < count) {
            fetch(i + kFetchAhead);
        }
        const std::uint32_t column = m_columns[i];
        MinMax inner{m_inner_minimum[i], m_inner_maximum[i]};
        MinMax outer;
        source.pyramid.Narrow(source.slots, bounds[column], bounds[column + 1], detail, inner,
                              outer);
        m_inner_minimum[i] = inner.minimum;
        m_inner_maximum[i] = inner.maximum;
        m_outer_minimum[i] = outer.minimum;
        m_outer_maximum[i] = outer.maximum;
    }
}

void RowsFromBlocks::FindFirst(const Source& source, std::span<const std::size_t> bounds,
                               const PixelEdges& rows, const RowsOfColumns& found) {
    const std::size_t columns = bounds.size() - 1;
    // A block that a border cuts holds the first sample behind it, and lies in the rows of the
    // column before: so does the sample.
    std::size_t asked = 0;
    for (std::size_t i = 0; i < columns; ++i) {
        const bool is_held = i != 0 && i + 1 != columns &&
                             (bounds[i] & (MinMaxPyramid::BlockSize(m_details[i - 1]) - 1)) != 0;
        found.first[i] = i != 0 ? found.top[i - 1] : 0;
        m_columns[asked] = static_cast<std::uint32_t>(i);
        asked += static_cast<std::size_t>(!is_held);
    }
    for (std::size_t i = 0; i < asked; ++i) {
        if (i + kFetchAhead < asked) {
            __builtin_prefetch(source.slots + bounds[m_columns[i + kFetchAhead]]);
        }
        m_outer_minimum[i] = source.slots[bounds[m_columns[i]]];
    }
    rows.IndicesOf(std::span(m_outer_minimum).first(asked), m_outer_low.data());
    for (std::size_t i = 0; i < asked; ++i) {
        found.first[m_columns[i]] = rows.Size() - 1 - m_outer_low[i];
    }
}

}  // namespace wavo
