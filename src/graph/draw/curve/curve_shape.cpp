#include "graph/draw/curve/curve_shape.h"

#include <algorithm>

#include "graph/draw/raster/plot_canvas.h"

namespace wavo {

void CurveShape::XChanged() {
    m_columns_found = false;
    m_reduced = false;
}

void CurveShape::YChanged() {
    m_reduction.RowsChanged();
    m_rows_found = false;
    m_reduced = false;
}

bool CurveShape::Update(TimeCurve& curve, const AxisMapping& x, const AxisMapping& y,
                        const QRect& plot, double step) {
    if (plot.isEmpty() || std::max(plot.width(), plot.height()) > ColumnSpans::kMostRows) {
        return false;
    }
    if (m_reduced && m_curve_version == curve.Version()) {
        return true;
    }
    FindPixels(curve, x, y, plot, step);
    const CurvePixels pixels{
        curve.TimesAreSums() ? m_sum_columns.FirstSteps() : m_step_columns.FirstSteps(), m_rows};
    m_has_spans = ReduceCurve(curve, pixels, m_reduction, m_spans);
    m_segments.clear();
    if (!m_has_spans) {
        m_segments = CurveSegments(curve, pixels, plot.bottomLeft());
    }
    m_reduced = true;
    m_curve_version = curve.Version();
    m_version = PlotCanvas::NewVersion();
    return true;
}

void CurveShape::FindPixels(TimeCurve& curve, const AxisMapping& x, const AxisMapping& y,
                            const QRect& plot, double step) {
    if (!m_rows_found) {
        m_rows.Find(y, Coordinate::kY, plot.bottom(), plot.height());
        m_rows_found = true;
    }
    if (!m_columns_found) {
        m_columns.Find(x, Coordinate::kX, plot.left(), plot.width());
        m_columns_found = true;
        m_step_columns_end = 0;
        m_sum_columns.Restart();
    }
    if (curve.TimesAreSums()) {
        m_sum_columns.Follow(m_columns, step, curve.Size());
        return;
    }
    const std::uint64_t end = std::max(curve.MaxPoints(), curve.EndOfSteps()) + 1;
    if (m_step_columns_end != end) {
        m_step_columns.Find(m_columns, step, end);
        m_step_columns_end = end;
    }
}

}  // namespace wavo
