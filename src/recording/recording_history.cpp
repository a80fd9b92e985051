#include "recording/recording_history.h"

#include <algorithm>

#include "recording/reading_ahead.h"

namespace wavo::recording {

namespace {

/// Lines that sums are made of at a time.
constexpr std::int64_t kSumPiece = 65536;

/// What is known of a column after a look at it. `before_line_0`: there are no lines there.
void Take(const ColumnExtent& extent, Closeness closeness, bool before_line_0,
          ColumnOutline& column) {
    column.certain_minimum = extent.certain.extremes.minimum;
    column.certain_maximum = extent.certain.extremes.maximum;
    column.possible_minimum = extent.possible.extremes.minimum;
    column.possible_maximum = extent.possible.extremes.maximum;
    column.first = extent.first;
    column.last = extent.last;
    column.missing = extent.possible.missing || before_line_0;
    // Where nothing is possible there is nothing.
    column.closeness = column.HasExtremes() ? closeness : Closeness::kExact;
}

bool ReachBeforeLine0(std::int64_t begin, std::int64_t end) {
    return begin < std::min<std::int64_t>(end, 0);
}

LineSpan NumbersOf(const LineRange& lines) {
    const auto number = [](std::int64_t line) {
        return static_cast<std::uint64_t>(std::max<std::int64_t>(line, 0));
    };
    return {number(lines.begin), number(lines.end)};
}

}  // namespace

LineRange RecordingHistory::Lines() const {
    return {static_cast<std::int64_t>(m_reader.FirstLine()),
            static_cast<std::int64_t>(m_reader.EndLine())};
}

void RecordingHistory::SetBounds(std::span<const std::int64_t> bounds) {
    m_bounds.clear();
    for (const std::int64_t bound : bounds) {
        m_bounds.push_back(static_cast<std::uint64_t>(std::max<std::int64_t>(bound, 0)));
    }
}

HistoryAnswer RecordingHistory::Columns(std::span<const std::int64_t> bounds, ColumnRow& row) {
    const std::size_t columns = bounds.empty() ? 0 : bounds.size() - 1;
    row.Reset(columns);
    SetBounds(bounds);
    m_columns.resize(columns);
    m_reader.Columns(m_axis, m_order, m_bounds, Detail::kLines, m_columns);
    for (std::size_t i = 0; i < columns; ++i) {
        const ColumnExtent& column = m_columns[i];
        row.first[i] = column.first;
        row.last[i] = column.last;
        row.minimum[i] = column.certain.extremes.minimum;
        row.maximum[i] = column.certain.extremes.maximum;
        row.missing[i] =
            column.certain.missing || ReachBeforeLine0(bounds[i], bounds[i + 1]) ? 1 : 0;
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
        sums.Add(HistorySums::Of(values));
    }
    return HistoryAnswer::kAll;
}

void RecordingHistory::LookAt(std::span<const std::int64_t> bounds, Detail detail,
                              Closeness closeness, std::span<ColumnOutline> columns) {
    SetBounds(bounds);
    m_columns.resize(columns.size());
    m_reader.Columns(m_axis, m_order, m_bounds, detail, m_columns);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Take(m_columns[i], closeness, ReachBeforeLine0(bounds[i], bounds[i + 1]), columns[i]);
    }
}

bool RecordingHistory::Outline(std::span<const std::int64_t> bounds,
                               std::span<ColumnOutline> columns) {
    if (HasLevels()) {
        LookAt(bounds, Detail::kChunks, Closeness::kFar, columns);
        return true;
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i] = {};
        columns[i].missing = true;
        const LineSpan numbers = NumbersOf({bounds[i], bounds[i + 1]});
        if (m_reader.Table().CountLines(numbers.first, numbers.end) == 0) {
            columns[i].closeness = Closeness::kExact;
        }
    }
    return true;
}

HistoryAnswer RecordingHistory::LookCloser(const LineRange& lines, ColumnOutline& column) {
    return ReadWithinBudget(ReadingBudget::kBytesPerUnit, [&] {
        const Detail detail = NextDetail(column);
        const LineSpan numbers = NumbersOf(lines);
        Take(m_reader.Extent(m_axis, m_order, numbers.first, numbers.end, detail),
             detail == Detail::kLines ? Closeness::kExact : Closeness::kNear,
             ReachBeforeLine0(lines.begin, lines.end), column);
    });
}

void RecordingHistory::Cut(const LineRange& lines, std::vector<std::int64_t>& bounds) const {
    const LineSpan numbers = NumbersOf(lines);
    std::vector<std::uint64_t> parts;
    m_reader.Table().Cut(numbers.first, numbers.end, parts);
    bounds.assign(parts.begin(), parts.end());
    bounds.front() = lines.begin;
    bounds.back() = lines.end;
}

HistoryAnswer RecordingHistory::LookNear(std::span<const std::int64_t> bounds,
                                         std::span<ColumnOutline> columns) {
    if (!HasLevels()) {
        Outline(bounds, columns);
        return HistoryAnswer::kAll;
    }
    return ReadWithinBudget(ReadingBudget::kBytesPerUnit,
                            [&] { LookAt(bounds, Detail::kBlocks, Closeness::kNear, columns); });
}

HistoryAnswer RecordingHistory::ValuesToDraw(std::int64_t first, std::span<double> values) {
    const bool is_long = values.size() > kLinesPerBlock;
    return ReadWithinBudget(
        is_long ? ReadingBudget::kBytesPerUnitOfValues : ReadingBudget::kBytesPerUnit,
        [&] { Values(first, values); });
}

void RecordingHistory::Announce(const LineRange& lines, const ColumnOutline& column) {
    if (HasLevels() && MayRead()) {
        ReadingAhead(m_reader).Announce(m_axis, NumbersOf(lines), NextDetail(column));
    }
}

}  // namespace wavo::recording
