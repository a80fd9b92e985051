#include "session/line_values.h"

#include <algorithm>
#include <array>

#include "graph/values/missing_value.h"

namespace wavo {

namespace {

/// Columns that a stretch is parted into in the search for its extreme.
constexpr std::int64_t kParts = 32;

}  // namespace

bool HistoryValues::IsOutlined(const LineRange& lines) {
    const std::array<std::int64_t, 2> bounds = {lines.begin, lines.end};
    ColumnOutline outline;
    return lines.Count() > 0 && m_history.Outline(bounds, {&outline, 1}) &&
           outline.possible_minimum <= outline.possible_maximum;
}

std::optional<LineBounds> HistoryValues::Bounds(const LineRange& lines) {
    if (!IsOutlined(lines)) {
        return std::nullopt;
    }
    const std::array<std::int64_t, 2> bounds = {lines.begin, lines.end};
    if (m_history.Columns(bounds, m_row) != HistoryAnswer::kAll || m_row.missing[0] != 0) {
        return std::nullopt;
    }
    return LineBounds{m_row.minimum[0], m_row.maximum[0], m_row.first[0], m_row.last[0]};
}

std::int64_t HistoryValues::Find(LineRange lines, double extreme,
                                 std::vector<double> ColumnRow::*kind) {
    while (lines.Count() > 1) {
        const std::int64_t part = (lines.Count() + kParts - 1) / kParts;
        m_bounds.clear();
        for (std::int64_t bound = lines.begin; bound < lines.end; bound += part) {
            m_bounds.push_back(bound);
        }
        m_bounds.push_back(lines.end);
        m_history.Columns(m_bounds, m_row);
        const std::vector<double>& extremes = m_row.*kind;
        const auto found = std::find(extremes.begin(), extremes.end(), extreme);
        if (found == extremes.end()) {
            return lines.begin;  // it was lost meanwhile; Losses tells
        }
        const auto column = static_cast<std::size_t>(found - extremes.begin());
        lines = {m_bounds[column], m_bounds[column + 1]};
    }
    return lines.begin;
}

std::optional<LineExtremes> HistoryValues::Extremes(const LineRange& lines) {
    if (!IsOutlined(lines)) {
        return std::nullopt;
    }
    const std::array<std::int64_t, 2> bounds = {lines.begin, lines.end};
    if (m_history.Columns(bounds, m_row) != HistoryAnswer::kAll ||
        m_row.minimum[0] > m_row.maximum[0]) {
        return std::nullopt;
    }
    LineExtremes extremes{m_row.minimum[0], m_row.maximum[0], 0, 0};
    extremes.minimum_line = Find(lines, extremes.minimum, &ColumnRow::minimum);
    extremes.maximum_line = Find(lines, extremes.maximum, &ColumnRow::maximum);
    return extremes;
}

std::vector<LineLog::Run> BufferValues::Underived() const {
    if (m_value.DerivationOrder() < 1) {
        return {};
    }
    const SampleRing& ring = m_value.Values();
    return m_value.Lines().UnderivedRuns(ring.FirstSequence(), ring.Appended(),
                                         static_cast<std::uint64_t>(m_value.DerivationOrder()),
                                         true);
}

bool BufferValues::Read(std::int64_t first, std::span<double> values) {
    m_history.Values(first, values);
    const std::int64_t end = first + static_cast<std::int64_t>(values.size());
    for (const LineLog::Run& run : Underived()) {
        const std::int64_t from = std::max(run.line, first);
        const std::int64_t to = std::min(run.line + static_cast<std::int64_t>(run.count), end);
        if (from < to) {
            std::fill(values.begin() + (from - first), values.begin() + (to - first), kNoValue);
        }
    }
    return true;
}

std::span<const double> BufferValues::InMemory(std::int64_t first, std::size_t count) const {
    const std::int64_t end = first + static_cast<std::int64_t>(count);
    for (const LineLog::Run& run : Underived()) {
        if (run.line < end && first < run.line + static_cast<std::int64_t>(run.count)) {
            return {};
        }
    }
    const SampleRing& ring = m_value.Values();
    for (const LineLog::Run& run : m_value.Lines().Runs(ring.FirstSequence(), ring.Appended())) {
        if (run.line <= first && end <= run.line + static_cast<std::int64_t>(run.count)) {
            const std::uint64_t sequence =
                run.sequence + static_cast<std::uint64_t>(first - run.line);
            const auto lying = ring.Range(sequence - ring.FirstSequence(), count).first;
            return lying.size() == count ? lying : std::span<const double>();
        }
    }
    return {};
}

}  // namespace wavo
