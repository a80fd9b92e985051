#include "graph/draw/curve/curve_over_time.h"

#include <QImage>
#include <utility>

#include "graph/draw/curve/segments.h"

namespace wavo {

CurveOverTime::CurveOverTime(std::unique_ptr<TimeCurve> samples) : m_samples(std::move(samples)) {}

void CurveOverTime::Remap(CurvePlot& /*plot*/, const Remapping& what) {
    if (what.x_changed) {
        m_shape.XChanged();
    }
    if (what.y_changed) {
        m_shape.YChanged();
    }
}

bool CurveOverTime::Add(const CurveBatch& batch, CurvePlot& /*plot*/) {
    return m_samples->Add(batch.y, batch.at_start, batch.time_range, batch.y_origin);
}

std::size_t CurveOverTime::Size() const {
    return static_cast<std::size_t>(m_samples->Size());
}

LinePoint CurveOverTime::Point(std::size_t place, const CurvePlot& plot) const {
    const double value = m_samples->Sample(place);
    const double time = m_samples->Time(place);
    return {plot.x.MapForced(time), plot.y.MapForced(value), value, time};
}

void CurveOverTime::CopyValues(Coordinate coordinate, std::vector<double>& out) const {
    out.clear();
    if (coordinate == Coordinate::kY) {
        m_samples->CopySamples(out);
    }
}

MinMax CurveOverTime::FiniteExtremes(Coordinate coordinate) {
    return coordinate == Coordinate::kY ? m_samples->FiniteExtremes() : MinMax();
}

void CurveOverTime::Draw(const CurvePlot& plot, const CurveStyle& style, PlotCanvas& canvas) {
    if (m_samples->Size() < 2 ||
        !m_shape.Update(*m_samples, plot.x, plot.y, plot.area, m_samples->Step())) {
        return;
    }
    if (m_shape.HasSpans()) {
        AddSpans(m_shape.Spans(), style, m_dashed, canvas);
    } else {
        canvas.Add(
            [this, area = plot.area, style](QImage& picture, PixelRuns& touched) {
                AddRectangle(touched, PaintSegments(picture, m_shape.Segments(), area, style));
            },
            m_shape.Version());
    }
}

}  // namespace wavo
