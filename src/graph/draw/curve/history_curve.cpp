#include "graph/draw/curve/history_curve.h"

#include <QImage>
#include <QPoint>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "graph/draw/curve/segments.h"

namespace wavo {

void HistoryCurve::Remap(CurvePlot& /*plot*/, const Remapping& what) {
    m_columns_found = m_columns_found && !what.x_changed;
    m_rows_found = m_rows_found && !what.y_changed;
}

void HistoryCurve::Draw(const CurvePlot& plot, const CurveStyle& style, PlotCanvas& canvas) {
    m_is_complete = m_is_scale_complete;
    if (!std::exchange(m_is_scale_new, false)) {
        m_losses = m_history.Losses();
    }
    if (plot.area.isEmpty() ||
        std::max(plot.area.width(), plot.area.height()) > ColumnSpans::kMostRows) {
        return;
    }
    FindPixels(plot);
    FindBounds(plot);
    if (m_bounds.back() - m_bounds.front() < 2) {
        return;
    }
    if (IsDense()) {
        BuildSpans();
        AddSpans(m_spans, style, m_dashed, canvas);
        return;
    }
    BuildSegments(plot.area);
    canvas.Add(
        [this, area = plot.area, style](QImage& picture, PixelRuns& touched) {
            AddRectangle(touched, PaintSegments(picture, m_segments, area, style));
        },
        PlotCanvas::NewVersion());
}

void HistoryCurve::FindPixels(const CurvePlot& plot) {
    if (!m_columns_found) {
        m_columns.Find(plot.x, Coordinate::kX, plot.area.left(), plot.area.width());
        m_columns_found = true;
    }
    if (!m_rows_found) {
        m_rows.Find(plot.y, Coordinate::kY, plot.area.bottom(), plot.area.height());
        m_rows_found = true;
    }
}

double HistoryCurve::TimeOf(std::int64_t line) const {
    return static_cast<double>(line - m_place.first_line) * m_place.step + m_place.offset;
}

std::int64_t HistoryCurve::FirstLineFrom(double time) const {
    const double estimate =
        std::ceil((time - m_place.offset) / m_place.step) + static_cast<double>(m_place.first_line);
    if (std::isnan(estimate)) {
        return m_lines.end;
    }
    auto line = static_cast<std::int64_t>(
        std::clamp(estimate, static_cast<double>(m_lines.begin), static_cast<double>(m_lines.end)));
    while (line > m_lines.begin && TimeOf(line - 1) >= time) {
        --line;
    }
    while (line < m_lines.end && TimeOf(line) < time) {
        ++line;
    }
    return line;
}

void HistoryCurve::FindBounds(const CurvePlot& plot) {
    m_lines = m_history.Lines();
    m_lines.begin = std::max(m_lines.begin, m_place.first_line);
    m_lines.end = std::max(m_lines.end, m_lines.begin);
    m_lines.end = std::clamp(m_place.last_line + 1, m_lines.begin, m_lines.end);
    const double least = plot.x.Lines().front().value;
    const double most = plot.x.Lines().back().value;
    std::int64_t end = FirstLineFrom(std::nextafter(most, std::numeric_limits<double>::infinity()));
    if (end == m_place.last_line && end < m_lines.end && TimeOf(end) - most < 1e-9 * most) {
        end = m_lines.end;  // the scale ends a rounding error before it
    }
    m_bounds.clear();
    for (std::int32_t column = 0; column < m_columns.Size(); ++column) {
        // What lies before the scale would be mapped to its border.
        m_bounds.push_back(std::min(end, FirstLineFrom(std::max(m_columns.Edge(column), least))));
    }
    m_bounds.push_back(end);
}

MinMax HistoryCurve::FiniteExtremes(const CurvePlot& plot) {
    m_losses = m_history.Losses();
    m_is_scale_new = true;
    m_is_scale_complete = true;
    FindPixels(plot);
    FindBounds(plot);
    const LineRange lines{m_bounds.front(), m_bounds.back()};
    return lines.Count() == 0 ? MinMax() : ExtremesOf(lines);
}

bool HistoryCurve::TakeWhole(const LineRange& lines) {
    const bool is_anything_known = m_whole.outline.HasExtremes() || m_whole.outline.IsExact();
    if (m_whole.lines == lines && is_anything_known && m_whole.since.Holds(m_history, lines.end)) {
        return true;
    }
    m_whole = {lines, HistoryMoment(m_history), {}};
    const std::int64_t bounds[] = {lines.begin, lines.end};
    if (!m_history.Outline(bounds, {&m_whole.outline, 1})) {
        m_whole = {};
        return false;
    }
    return true;
}

MinMax HistoryCurve::ExtremesOf(const LineRange& lines) {
    if (lines.Count() < 2 || !IsDense()) {
        return FiniteExtremesOf(ValuesOf(lines.begin, lines.end));
    }
    if (!TakeWhole(lines)) {
        return FindFinite(lines);
    }
    ColumnOutline& whole = m_whole.outline;
    if (!whole.HasExtremes() && !whole.IsExact()) {  // nothing is known from far
        m_outlined.SetBounds(m_bounds);
        m_is_scale_complete = m_outlined.AreAllExact();
        return m_is_scale_complete && m_outlined.HasInfinite() ? FindFinite(lines)
                                                               : m_outlined.Extremes();
    }
    while (!whole.IsKnown() && m_history.LookCloser(lines, whole) == HistoryAnswer::kAll) {
    }
    m_is_scale_complete = whole.IsKnown();
    if (!whole.HasExtremes()) {
        return {};
    }
    if (std::isinf(whole.possible_minimum) || std::isinf(whole.possible_maximum)) {
        return FindFinite(lines);
    }
    return {whole.possible_minimum, whole.possible_maximum};
}

MinMax HistoryCurve::FindFinite(const LineRange& lines) {
    m_is_scale_complete = m_finite.GoOn(lines);
    return m_finite.Found();
}

bool HistoryCurve::IsDense() const {
    const std::int64_t begin = m_bounds.front();
    const std::int64_t end = m_bounds.back();
    for (std::size_t i = 0; i + 1 < m_bounds.size(); ++i) {
        const bool is_between = m_bounds[i] > begin && m_bounds[i] < end;
        if (is_between && m_bounds[i] == m_bounds[i + 1]) {
            return false;
        }
    }
    return true;
}

std::vector<double> HistoryCurve::ValuesOf(std::int64_t first, std::int64_t end) {
    std::vector<double> values(static_cast<std::size_t>(end - first));
    if (m_history.Values(first, values) != HistoryAnswer::kAll) {
        m_is_complete = false;
    }
    return values;
}

void HistoryCurve::BuildSpans() {
    const std::int32_t columns = m_columns.Size();
    m_spans.Clear(columns);
    if (m_outlined.SetBounds(m_bounds)) {
        m_is_complete = m_outlined.Build(m_rows, m_spans) && m_is_complete;
        return;
    }
    if (m_history.Columns(m_bounds, m_row) != HistoryAnswer::kAll) {
        m_is_complete = false;
    }
    SpanBuilder builder(m_spans, m_rows);
    for (std::int32_t column = 0; column < columns; ++column) {
        const auto at = static_cast<std::size_t>(column);
        const std::int64_t count = m_bounds[at + 1] - m_bounds[at];
        const MinMax range{m_row.minimum[at], m_row.maximum[at]};
        if (count == 0) {
            continue;
        }
        if (range.IsEmpty()) {
            builder.Break();
        } else if (m_row.missing[at] == 0) {
            builder.Column(column, m_row.first[at], range, m_row.last[at], count > 1);
        } else {
            for (const double value : ValuesOf(m_bounds[at], m_bounds[at + 1])) {
                if (std::isnan(value)) {
                    builder.Break();
                } else {
                    builder.Sample(column, value);
                }
            }
        }
    }
}

void HistoryCurve::BuildSegments(const QRect& area) {
    m_segments.clear();
    const std::vector<double> values = ValuesOf(m_bounds.front(), m_bounds.back());
    std::int32_t column = 0;
    bool open = false;
    QPoint last;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::int64_t line = m_bounds.front() + static_cast<std::int64_t>(i);
        while (m_bounds[static_cast<std::size_t>(column) + 1] <= line) {
            ++column;
        }
        if (std::isnan(values[i])) {
            open = false;
            continue;
        }
        const QPoint point = area.bottomLeft() + QPoint(column, -m_rows.IndexOf(values[i]));
        if (open) {
            m_segments.emplace_back(last, point);
        }
        open = true;
        last = point;
    }
}

}  // namespace wavo
