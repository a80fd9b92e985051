#include "graph/draw/curve/finite_search.h"

#include <algorithm>
#include <cmath>

#include "graph/draw/curve/line_parts.h"

namespace wavo {

namespace {

/// Pieces of so many lines are read: where that costs time, and where it does not.
constexpr std::int64_t kReadFromFile = 64;
constexpr std::int64_t kReadInMemory = 4096;

void WidenByFinite(double value, MinMax& range) {
    if (std::isfinite(value)) {
        range.minimum = std::min(range.minimum, value);
        range.maximum = std::max(range.maximum, value);
    }
}

bool IsInfinite(double minimum, double maximum) {
    return minimum <= maximum && (std::isinf(minimum) || std::isinf(maximum));
}

}  // namespace

bool FiniteSearch::GoOn(const LineRange& lines) {
    if (m_lines != lines || !m_since.Holds(m_history, lines.end)) {
        m_lines = lines;
        m_since = HistoryMoment(m_history);
        m_found = {};
        m_rest.assign(1, lines);
    }
    while (!m_rest.empty()) {
        const LineRange piece = m_rest.back();
        m_rest.pop_back();
        if (!TakePiece(piece)) {
            m_rest.push_back(piece);
            return false;
        }
    }
    return true;
}

bool FiniteSearch::TakePiece(const LineRange& piece) {
    const std::int64_t bounds_of_piece[] = {piece.begin, piece.end};
    ColumnOutline whole;
    const bool is_outlined = m_history.Outline(bounds_of_piece, {&whole, 1});
    if (piece.Count() <= (is_outlined ? kReadFromFile : kReadInMemory)) {
        if (is_outlined && !LookClosely(piece, whole)) {
            return false;  // reading the values costs nothing behind that
        }
        TakeValues(piece);
        return true;
    }
    const std::vector<std::int64_t> bounds = PartsOf(piece);
    if (is_outlined) {
        return TakeOutlined(bounds);
    }
    TakeAnswered(bounds);
    return true;
}

bool FiniteSearch::LookClosely(const LineRange& lines, ColumnOutline& part) {
    while (!part.IsExact()) {
        if (m_history.LookCloser(lines, part) != HistoryAnswer::kAll) {
            return false;
        }
    }
    return true;
}

bool FiniteSearch::TakeOutlined(const std::vector<std::int64_t>& bounds) {
    std::vector<ColumnOutline> parts(bounds.size() - 1);
    m_history.Outline(bounds, parts);
    std::vector<LineRange> infinite;
    MinMax found = m_found;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const LineRange lines{bounds[i], bounds[i + 1]};
        const auto may_widen = [&] {
            return !parts[i].HasExtremes() || parts[i].possible_minimum < found.minimum ||
                   parts[i].possible_maximum > found.maximum;
        };
        const auto is_infinite = [&] {
            return IsInfinite(parts[i].possible_minimum, parts[i].possible_maximum);
        };
        while (!parts[i].IsKnown() && !is_infinite() && may_widen()) {
            if (m_history.LookCloser(lines, parts[i]) != HistoryAnswer::kAll) {
                return false;
            }
        }
        if (is_infinite()) {
            infinite.push_back(lines);
        }
        WidenByFinite(parts[i].certain_minimum, found);
        WidenByFinite(parts[i].certain_maximum, found);
    }
    m_found = found;
    m_rest.insert(m_rest.end(), infinite.begin(), infinite.end());
    return true;
}

void FiniteSearch::TakeAnswered(const std::vector<std::int64_t>& bounds) {
    ColumnRow row;
    m_history.Columns(bounds, row);
    for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
        WidenByFinite(row.minimum[i], m_found);
        WidenByFinite(row.maximum[i], m_found);
        if (IsInfinite(row.minimum[i], row.maximum[i])) {
            m_rest.push_back({bounds[i], bounds[i + 1]});
        }
    }
}

void FiniteSearch::TakeValues(const LineRange& lines) {
    std::vector<double> values(static_cast<std::size_t>(lines.Count()));
    m_history.Values(lines.begin, values);
    for (const double value : values) {
        WidenByFinite(value, m_found);
    }
}

}  // namespace wavo
