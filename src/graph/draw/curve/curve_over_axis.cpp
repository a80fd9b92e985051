#include "graph/draw/curve/curve_over_axis.h"

#include <QImage>
#include <algorithm>
#include <cmath>
#include <utility>

#include "graph/draw/curve/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

double ValueOf(const LinePoint& point, Coordinate coordinate) {
    return coordinate == Coordinate::kX ? point.x_value : point.y_value;
}

AxisCurve::Style StyleOf(const CurveStyle& style, double device_ratio) {
    AxisCurve::Style points;
    points.points = style.points;
    points.point_size = std::max(1, static_cast<int>(std::lround(style.point_size * device_ratio)));
    points.color = style.color;
    points.background = style.background;
    points.device_ratio = device_ratio;
    points.fade_out_age = style.fade_out_age;
    points.dashes = style.dashes;
    return points;
}

}  // namespace

void CurveOverAxis::Remap(CurvePlot& plot, const Remapping& what) {
    for (LinePoint& point : m_points) {
        plot.Map(point, what.force_x, what.force_y);
    }
    m_points.PointsMoved();
    m_version = PlotCanvas::NewVersion();
}

void CurveOverAxis::Clear() {
    m_points.Clear();
    m_version = PlotCanvas::NewVersion();
}

bool CurveOverAxis::Add(const CurveBatch& batch, CurvePlot& plot) {
    if (batch.x.size() != batch.y.size()) {
        MERRLOG(curve_texts::kUnequalValueCounts);
        return false;
    }
    for (std::size_t i = 0; i < batch.x.size(); ++i) {
        LinePoint point{0, 0, batch.y[i], batch.x[i]};
        plot.Map(point, false, false);
        m_points.Add(point);
    }
    m_version = PlotCanvas::NewVersion();
    return true;
}

LinePoint CurveOverAxis::Point(std::size_t place, const CurvePlot& /*plot*/) const {
    return m_points[place];
}

void CurveOverAxis::CopyValues(Coordinate coordinate, std::vector<double>& out) const {
    out.clear();
    for (const LinePoint& point : m_points) {
        out.push_back(ValueOf(point, coordinate));
    }
}

MinMax CurveOverAxis::FiniteExtremes(Coordinate coordinate) {
    MinMax extremes;
    for (const LinePoint& point : m_points) {
        const double value = ValueOf(point, coordinate);
        if (std::isfinite(value)) {
            extremes.minimum = std::min(extremes.minimum, value);
            extremes.maximum = std::max(extremes.maximum, value);
        }
    }
    return extremes;
}

void CurveOverAxis::Draw(const CurvePlot& plot, const CurveStyle& style, PlotCanvas& canvas) {
    if (m_points.Size() < 2) {
        return;
    }
    const AxisCurve::Style drawn = StyleOf(style, plot.device_ratio);
    PlotCanvas::AlonePainting alone;
    if (!drawn.points && drawn.dashes.IsSolid()) {
        alone.can_go_on = m_points.CanGoOn(drawn);
        alone.paint = [this, drawn](QImage& picture, const QRect& area, const PixelColumns& target,
                                    bool go_on, PixelRuns& touched) {
            m_points.DrawOn(picture, area, target, drawn, go_on, touched);
        };
    }
    canvas.Add(
        [this, area = plot.area, drawn](QImage& picture, PixelRuns& touched) {
            m_points.Draw(picture, area, drawn, &touched);
        },
        m_version, std::move(alone));
}

}  // namespace wavo
