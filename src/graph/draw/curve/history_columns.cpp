#include "graph/draw/curve/history_columns.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace wavo {

namespace {

/// Columns that a history is told of before they are looked at.
constexpr int kAnnouncedAhead = 32;

void TakeFinite(MinMax& range, double value) {
    if (std::isfinite(value)) {
        range.minimum = std::min(range.minimum, value);
        range.maximum = std::max(range.maximum, value);
    }
}

}  // namespace

bool HistoryColumns::SetBounds(const std::vector<std::int64_t>& bounds) {
    if (bounds == m_bounds && m_since.Holds(m_history, bounds.back())) {
        return !m_columns.empty();
    }
    m_bounds = bounds;
    m_since = HistoryMoment(m_history);
    m_broken.clear();
    m_columns.assign(bounds.size() - 1, {});
    if (!m_history.Outline(m_bounds, m_columns)) {
        m_columns.clear();
    }
    return !m_columns.empty();
}

bool HistoryColumns::Build(const PixelEdges& rows, ColumnSpans& spans) {
    TakeRows(rows);
    m_rows.assign(m_columns.size(), {});
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        FindRows(rows, i);
    }
    // Of broken columns at last: until then the scale may change, and what was found with it.
    const bool is_exact = LookCloser(rows) && LookIntoBroken(rows);
    Emit(rows, spans);
    // Reading may have found lines damaged that others were told of before.
    return is_exact && m_since.Holds(m_history, m_bounds.back());
}

void HistoryColumns::TakeRows(const PixelEdges& rows) {
    std::vector<double> edges;
    for (std::int32_t i = 1; i < rows.Size(); ++i) {
        edges.push_back(std::isnan(rows.Edge(i)) ? std::numeric_limits<double>::infinity()
                                                 : rows.Edge(i));
    }
    if (edges != m_edges) {
        m_edges = std::move(edges);
        m_broken.clear();
    }
}

bool HistoryColumns::AreAllExact() const {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (!m_columns[i].IsExact() && LinesOf(i).Count() > 0) {
            return false;
        }
    }
    return true;
}

MinMax HistoryColumns::Extremes() const {
    MinMax range;
    for (const ColumnOutline& column : m_columns) {
        TakeFinite(range, column.possible_minimum);
        TakeFinite(range, column.possible_maximum);
    }
    return range;
}

bool HistoryColumns::HasInfinite() const {
    return std::ranges::any_of(m_columns, [](const ColumnOutline& column) {
        return column.HasExtremes() &&
               (std::isinf(column.possible_minimum) || std::isinf(column.possible_maximum));
    });
}

void HistoryColumns::FindRows(const PixelEdges& rows, std::size_t column) {
    const ColumnOutline& outline = m_columns[column];
    const std::int32_t lowest = rows.Size() - 1;
    Rows& found = m_rows[column];
    found = {};
    if (outline.certain_minimum <= outline.certain_maximum) {
        found.certain_top = lowest - rows.IndexOf(outline.certain_maximum);
        found.certain_bottom = lowest - rows.IndexOf(outline.certain_minimum);
    }
    if (outline.possible_minimum <= outline.possible_maximum) {
        const bool is_certain = outline.possible_minimum == outline.certain_minimum &&
                                outline.possible_maximum == outline.certain_maximum;
        found.possible_top =
            is_certain ? found.certain_top : lowest - rows.IndexOf(outline.possible_maximum);
        found.possible_bottom =
            is_certain ? found.certain_bottom : lowest - rows.IndexOf(outline.possible_minimum);
    }
}

bool HistoryColumns::MayLeave(std::size_t column) const {
    const Rows& own = m_rows[column];
    const Rows& next = m_rows[column + 1];
    return own.certain_top > own.certain_bottom || m_columns[column].missing ||
           next.possible_top < own.certain_top || next.possible_bottom > own.certain_bottom;
}

bool HistoryColumns::IsInDoubt(const PixelEdges& rows, std::size_t column) const {
    const ColumnOutline& outline = m_columns[column];
    const Rows& own = m_rows[column];
    if (outline.IsExact() || LinesOf(column).Count() == 0) {
        return false;
    }
    if (outline.missing || LinesOf(column).Count() == 1 || own.certain_top > own.certain_bottom ||
        own.certain_top != own.possible_top || own.certain_bottom != own.possible_bottom) {
        return true;
    }
    if (column > 0 && MayLeave(column - 1)) {
        return true;  // the first value counts
    }
    if (column + 1 == m_columns.size() || !m_columns[column + 1].IsExact() ||
        std::isnan(m_columns[column + 1].first)) {
        return false;
    }
    // On a long way down the last value counts, too.
    const std::int32_t row = rows.Size() - 1 - rows.IndexOf(m_columns[column + 1].first);
    return row > own.certain_bottom && row - own.certain_top >= kLongWayDown;
}

bool HistoryColumns::LookCloser(const PixelEdges& rows) {
    // Each round looks at every column in doubt once; a look may bring doubt to those beside it.
    for (bool has_looked = true; has_looked;) {
        has_looked = false;
        std::size_t announced = 0;  // columns before it are announced
        int ahead = 0;              // so many of them that were not looked at
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            if (!IsInDoubt(rows, i)) {
                continue;
            }
            for (; announced < m_columns.size() && ahead < kAnnouncedAhead; ++announced) {
                if (announced > i && IsInDoubt(rows, announced)) {
                    m_history.Announce(LinesOf(announced), m_columns[announced]);
                    ++ahead;
                }
            }
            ahead = std::max(0, ahead - 1);
            if (m_history.LookCloser(LinesOf(i), m_columns[i]) != HistoryAnswer::kAll) {
                return false;
            }
            FindRows(rows, i);
            has_looked = true;
        }
    }
    return true;
}

bool HistoryColumns::LookIntoBroken(const PixelEdges& rows) {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (!IsBroken(i)) {
            continue;
        }
        BrokenColumn& broken = m_broken.try_emplace(i, LinesOf(i), m_columns[i]).first->second;
        if (!broken.IsDone() && !broken.GoOn(m_history, rows)) {
            return false;
        }
    }
    return true;
}

void HistoryColumns::Emit(const PixelEdges& rows, ColumnSpans& spans) const {
    SpanBuilder builder(spans, rows);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const ColumnOutline& outline = m_columns[i];
        const auto column = static_cast<std::int32_t>(i);
        if (LinesOf(i).Count() == 0) {
            continue;
        }
        const MinMax range{outline.possible_minimum, outline.possible_maximum};
        if (range.IsEmpty()) {
            builder.Break();
        } else if (const auto broken = m_broken.find(i);
                   broken != m_broken.end() && broken->second.IsDone()) {
            broken->second.Emit(column, builder, spans);
        } else {
            // Where first and last are not known, they do not matter.
            const bool is_exact = outline.IsExact();
            builder.Column(column, is_exact ? outline.first : range.minimum, range,
                           is_exact ? outline.last : range.minimum, LinesOf(i).Count() > 1);
        }
    }
}

}  // namespace wavo
