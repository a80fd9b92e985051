#include "recording/recording_history.h"

#include <algorithm>
#include <cmath>

namespace wavo::recording {

namespace {

/// Lines that sums are made of at a time.
constexpr std::int64_t kSumPiece = 65536;

HistorySums SumsOf(std::span<const double> values) {
    HistorySums sums;
    for (const double value : values) {
        if (std::isfinite(value)) {
            ++sums.count;
            sums.sum += value;
        }
    }
    // In two passes: far from zero the squares of the values would lose the differences.
    const double mean = sums.Mean();
    for (const double value : values) {
        if (std::isfinite(value)) {
            sums.sum_of_squares += (value - mean) * (value - mean);
        }
    }
    return sums;
}

void Add(const HistorySums& more, HistorySums& sums) {
    if (more.count == 0) {
        return;
    }
    const double both = static_cast<double>(sums.count) + static_cast<double>(more.count);
    const double apart = more.Mean() - sums.Mean();
    sums.sum_of_squares +=
        more.sum_of_squares + (sums.count == 0 ? 0.0
                                               : apart * apart * static_cast<double>(sums.count) *
                                                     (static_cast<double>(more.count) / both));
    sums.count += more.count;
    sums.sum += more.sum;
}

}  // namespace

LineRange RecordingHistory::Lines() const {
    return {static_cast<std::int64_t>(m_reader.FirstLine()),
            static_cast<std::int64_t>(m_reader.EndLine())};
}

HistoryAnswer RecordingHistory::Columns(std::span<const std::int64_t> bounds, ColumnRow& row) {
    const std::size_t columns = bounds.empty() ? 0 : bounds.size() - 1;
    row.Reset(columns);
    m_bounds.clear();
    for (const std::int64_t bound : bounds) {
        m_bounds.push_back(static_cast<std::uint64_t>(std::max<std::int64_t>(bound, 0)));
    }
    m_columns.resize(columns);
    m_reader.Columns(m_axis, m_order, m_bounds, Detail::kLines, m_columns);
    for (std::size_t i = 0; i < columns; ++i) {
        const ColumnExtent& column = m_columns[i];
        row.first[i] = column.first;
        row.last[i] = column.last;
        row.minimum[i] = column.certain.extremes.minimum;
        row.maximum[i] = column.certain.extremes.maximum;
        // There are no lines before line 0.
        row.missing[i] =
            column.certain.missing || bounds[i] < std::min<std::int64_t>(bounds[i + 1], 0) ? 1 : 0;
    }
    return HistoryAnswer::kAll;
}

HistoryAnswer RecordingHistory::Values(std::int64_t first, std::span<double> values) {
    if (first < 0) {
        const auto before = static_cast<std::size_t>(
            std::min<std::uint64_t>(values.size(), 0 - static_cast<std::uint64_t>(first)));
        std::fill_n(values.begin(), before, m_absent);
        values = values.subspan(before);
        first = 0;
    }
    m_reader.ReadValues(m_axis, m_order, static_cast<std::uint64_t>(first), m_absent, values);
    return HistoryAnswer::kAll;
}

HistoryAnswer RecordingHistory::Sums(const LineRange& lines, HistorySums& sums) {
    sums = {};
    const LineRange held = Lines();
    const std::int64_t end = std::min(lines.end, held.end);
    std::vector<double> values;
    for (std::int64_t line = std::max(lines.begin, held.begin); line < end; line += kSumPiece) {
        values.resize(static_cast<std::size_t>(std::min(kSumPiece, end - line)));
        // What is not there is no finite value.
        m_reader.ReadValues(m_axis, m_order, static_cast<std::uint64_t>(line),
                            std::numeric_limits<double>::quiet_NaN(), values);
        Add(SumsOf(values), sums);
    }
    return HistoryAnswer::kAll;
}

}  // namespace wavo::recording
