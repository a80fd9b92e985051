#include "graph/draw/envelope.h"

#include "graph/draw/display_settings.h"
#include "graph/draw/frame/colors.h"
#include "graph/draw/raster/mapping.h"

namespace wavo {

void Envelope::Clear() {
    m_wanted = {};
    m_curve.reset();
    m_picture = QImage();
}

void Envelope::Begin() {
    m_background = QImage(m_wanted.size, QImage::Format_RGB32);
    m_background.fill(ToQColor(m_wanted.background));
    m_picture = m_background.copy();
    m_canvas = PlotCanvas();
    const QRect plot(QPoint(0, 0), m_wanted.size);
    m_plot = std::make_unique<CurvePlot>(
        PlotGeometry{plot, VerticalScaleLines(plot, 2), HorizontalScaleLines(plot, 2)}, 1.0);
    const double seconds = static_cast<double>(m_wanted.lines.Count() - 1) * m_wanted.cycle_time;
    m_plot->x.Fill({0.0, seconds});
    m_plot->y.Fill({-1.0, 1.0});
    m_curve = std::make_unique<HistoryCurve>(
        *m_wanted.history, HistoryCurve::Place{m_wanted.lines.begin, 0.0, m_wanted.cycle_time,
                                               m_wanted.lines.end - 1});
}

void Envelope::Draw(const Wanted& wanted) {
    if (m_curve == nullptr || !(wanted == m_wanted)) {
        m_wanted = wanted;
        Begin();
    } else if (m_curve->IsComplete() && m_version == wanted.history->Version()) {
        return;
    }
    m_version = wanted.history->Version();
    const MinMax range = m_curve->FiniteExtremes(*m_plot);
    if (!range.IsEmpty()) {
        const double margin = range.maximum > range.minimum ? 0.0 : 1.0;
        m_plot->y.Fill({range.minimum - margin, range.maximum + margin});
        m_plot->y.ResetSegment();
        m_curve->Remap(*m_plot, {.y_changed = true, .force_y = true});
    }
    CurveStyle style;
    style.color = ShownColor(ToQColor(wanted.color), ToQColor(wanted.background), kCurveContrast);
    m_canvas.Begin(m_picture, m_background, QPoint(), m_plot->area);
    m_curve->Draw(*m_plot, style, m_canvas);
    m_canvas.End();
}

}  // namespace wavo
