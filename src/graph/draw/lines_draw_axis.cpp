#include "graph/draw/lines_draw_axis.h"

#include <QLine>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

#include "graph/draw/colors.h"
#include "graph/draw/display_settings.h"
#include "graph/draw/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// More points than any machine records; keeps a wild range from becoming a number of points.
constexpr std::uint64_t kMostPoints = std::uint64_t{1} << 31U;

Extremes ToExtremes(const MinMax& range) {
    return range.IsEmpty() ? Extremes() : Extremes{true, range.minimum, range.maximum};
}

ScaleRange RangeOf(const ScaleDefinition& scale) {
    return GraphDefineGetMinMaxValue(scale);
}

}  // namespace

std::uint64_t MaxCurvePoints(double range, double cycle_time) {
    return ToCount(std::round(range / cycle_time), kMostPoints) + 1;
}

LinesDrawAxis::LinesDrawAxis(const PlotGeometry& geometry, ScaleDefinition& x_scale,
                             ScaleDefinition& y_scale, Settings settings)
    : m_settings(std::move(settings)),
      m_shown_color(wavo::ShownColor(ToQColor(m_settings.color), ToQColor(m_settings.background),
                                     kCurveContrast)),
      m_x_scale(x_scale),
      m_y_scale(y_scale),
      m_plot(geometry.plot),
      m_x_mapping(Coordinate::kX, geometry.vertical),
      m_y_mapping(Coordinate::kY, geometry.horizontal),
      m_curve(m_settings.mode, m_settings.cycle_time,
              MaxCurvePoints(m_settings.range, m_settings.cycle_time)),
      m_points(m_curve.MaxPoints()) {
    m_x_mapping.Fill(RangeOf(m_x_scale));
    m_y_mapping.Fill(RangeOf(m_y_scale));
}

void LinesDrawAxis::Empty() {
    m_curve.Clear();
    m_points.Clear();
    m_x_mapping.ForgetLast();
    m_y_mapping.ForgetLast();
    m_x_auto.Reset();
    m_y_auto.Reset();
    ++m_changes;
}

void LinesDrawAxis::SetGeometry(const PlotGeometry& geometry, double device_ratio) {
    m_plot = geometry.plot;
    m_device_ratio = device_ratio;
    m_x_mapping.SetLines(geometry.vertical);
    m_x_mapping.Fill(RangeOf(m_x_scale));
    m_x_mapping.ResetSegment();
    m_y_mapping.SetLines(geometry.horizontal);
    m_y_mapping.Fill(RangeOf(m_y_scale));
    m_y_mapping.ResetSegment();
    m_shape.XChanged();
    m_shape.YChanged();
    MapAll(true, true);
}

void LinesDrawAxis::XScaleChanged() {
    m_x_mapping.Fill(RangeOf(m_x_scale));
    m_x_mapping.ResetSegment();
    m_shape.XChanged();
    MapAll(true, false);
}

void LinesDrawAxis::MapPoint(LinePoint& point, bool force_x, bool force_y) {
    point.x = m_x_mapping.Map(point.x_value, force_x);
    point.y = m_y_mapping.Map(point.y_value, force_y);
}

void LinesDrawAxis::MapAll(bool force_x, bool force_y) {
    for (LinePoint& point : m_points) {
        MapPoint(point, force_x, force_y);
    }
    m_points.PointsMoved();
    ++m_changes;
}

std::size_t LinesDrawAxis::Size() const {
    return m_settings.x_type == CoorType::kAxis ? m_points.Size()
                                                : static_cast<std::size_t>(m_curve.Size());
}

LinePoint LinesDrawAxis::Point(std::size_t place) const {
    if (m_settings.x_type == CoorType::kAxis) {
        return m_points[place];
    }
    const double value = m_curve.Sample(place);
    const double time = m_curve.Time(place);
    return {m_x_mapping.MapForced(time), m_y_mapping.MapForced(value), value, time};
}

LinePoint LinesDrawAxis::MakePoint(double x_value, double y_value) {
    LinePoint point{0, 0, y_value, x_value};
    MapPoint(point, false, false);
    return point;
}

double LinesDrawAxis::GetXTimeRange() const {
    if (m_x_scale.ScaleType != ScaleTypeCode::kTime) {
        MERRLOG(draw_texts::kNoTimeRange);
        return 0.0;
    }
    return m_x_scale.TimeRange;
}

void LinesDrawAxis::DrawLinesXIsTime(const std::vector<double>& values, double start_time,
                                     PlotCanvas* canvas) {
    if (values.empty()) {
        return;
    }
    m_curve.BeginBatch(start_time == 0.0, m_x_scale.TimeRange);
    if (m_settings.mode != GraphMode::kContinuity) {
        m_curve.AddClassic(values, m_x_scale.TimeRange);
        m_y_auto.CountDrawn(values.size());
    } else if (values.size() <= m_curve.MaxPoints()) {
        m_curve.AddContinuity(values);
        m_y_auto.CountDrawn(values.size());
    } else {
        MERRLOG(draw_texts::kTooManyNewValues);
    }
    DrawAllLinesXIsTime(kOwnColor, canvas);
}

void LinesDrawAxis::ShowWindow(const SampleRing& ring, std::vector<RowPart> parts) {
    m_curve.ShowWindow(ring, std::move(parts));
    FitScaleToWindow();
}

void LinesDrawAxis::ShowOwnWindow(double from, double to) {
    // A window may reach beyond the newest sample.
    const std::uint64_t held = m_curve.HeldSamples();
    const std::uint64_t end = ToCount(to / m_settings.cycle_time, kMostPoints);
    const std::uint64_t count = ToCount((to - from) / m_settings.cycle_time, end);
    const std::uint64_t first = std::min(end - count, held);
    m_curve.ShowOwnWindow({first, std::min(end, held) - first});
    FitScaleToWindow();
}

void LinesDrawAxis::FitScaleToWindow() {
    // The scale fits the window alone, whatever was drawn before.
    m_y_auto.Reset();
    MTRACE(4, draw_texts::kCheckingYScale);
    const ScaleDefinition before = m_y_scale;
    const bool checked = m_y_auto.Check(m_y_scale, ToExtremes(m_curve.FiniteExtremes()),
                                        m_curve.MaxPoints(), [] { return Extremes(); });
    // A window that stands still has the same scale each time.
    if (checked && m_y_scale != before) {
        ApplyScaleChange(m_y_mapping, m_y_scale);
    }
    MTRACE(4, draw_texts::kYScaleChecked);
}

void LinesDrawAxis::DrawLinesXIsAx(const std::vector<double>& x_values,
                                   const std::vector<double>& y_values, PlotCanvas* canvas) {
    if (x_values.size() != y_values.size()) {
        MERRLOG(draw_texts::kUnequalValueCounts);
    } else {
        for (std::size_t i = 0; i < x_values.size(); ++i) {
            m_points.Add(MakePoint(x_values[i], y_values[i]));
        }
        m_x_auto.CountDrawn(x_values.size());
        m_y_auto.CountDrawn(y_values.size());
        m_changes += x_values.size();
    }
    DrawAllLinesXIsAx(kOwnColor, canvas);
}

Extremes LinesDrawAxis::HeldExtremes(double LinePoint::*value) {
    if (m_settings.x_type != CoorType::kAxis) {
        return ToExtremes(m_curve.FiniteExtremes());
    }
    Extremes extremes;
    for (const LinePoint& point : m_points) {
        extremes.Add(point.*value);
    }
    return extremes;
}

void LinesDrawAxis::ApplyScaleChange(AxisMapping& mapping, const ScaleDefinition& scale) {
    mapping.Fill(RangeOf(scale));
    m_x_mapping.ResetSegment();
    m_y_mapping.ResetSegment();
    if (&mapping == &m_x_mapping) {
        m_shape.XChanged();
    } else {
        m_shape.YChanged();
    }
    MapAll(false, true);
}

void LinesDrawAxis::CheckXScaleValue(const std::vector<double>& x_values) {
    MTRACE(4, draw_texts::kCheckingXScale);
    const auto held = [this] { return HeldExtremes(&LinePoint::x_value); };
    if (m_x_auto.Check(m_x_scale, ExtremesOf(x_values), MaxPoints(), held)) {
        ApplyScaleChange(m_x_mapping, m_x_scale);
    }
    MTRACE(4, draw_texts::kXScaleChecked);
}

void LinesDrawAxis::CheckYScaleValue(const std::vector<double>& y_values) {
    MTRACE(4, draw_texts::kCheckingYScale);
    const auto held = [this] { return HeldExtremes(&LinePoint::y_value); };
    if (m_y_auto.Check(m_y_scale, ExtremesOf(y_values), MaxPoints(), held)) {
        ApplyScaleChange(m_y_mapping, m_y_scale);
    }
    MTRACE(4, draw_texts::kYScaleChecked);
}

QColor LinesDrawAxis::DrawColor(ColorRef color) const {
    return (color & kOwnColor) != 0 ? m_shown_color : ToQColor(color);
}

void LinesDrawAxis::DrawAllLinesXIsTime(ColorRef color, PlotCanvas* canvas) {
    MTRACE(4, draw_texts::kDrawingOverTime);
    if (canvas != nullptr && m_curve.Size() >= 2 &&
        m_shape.Update(m_curve, m_x_mapping, m_y_mapping, m_plot, m_settings.cycle_time)) {
        const QColor drawn = DrawColor(color);
        if (m_shape.HasSpans()) {
            canvas->Add(m_shape.Spans(), drawn.rgb());
        } else {
            canvas->Add(
                [this, drawn](QImage& picture, PixelRuns& touched) {
                    AddRectangle(touched, DrawSegments(picture, drawn));
                },
                m_shape.Version());
        }
    }
    MTRACE(4, draw_texts::kDrawnOverTime);
}

QRect LinesDrawAxis::DrawSegments(QImage& picture, const QColor& color) const {
    // The same pixels without a ratio: scaling by the ratio and back may miss 1 by a rounding, and
    // segments then leave pixels beside those of their ends.
    QImage pixels(picture.bits(), picture.width(), picture.height(), picture.bytesPerLine(),
                  picture.format());
    QPainter painter(&pixels);
    painter.setClipRect(m_plot);
    QPen pen(color);
    pen.setWidth(1);
    pen.setCosmetic(true);
    painter.setPen(pen);
    // Each segment on its own: the picture does not depend on how many are drawn in one call.
    const std::vector<QLine>& segments = m_shape.Segments();
    painter.drawLines(segments.data(), static_cast<int>(segments.size()));
    QRect touched;
    for (const QLine& segment : segments) {
        touched |= QRect(segment.p1(), QSize(1, 1)) | QRect(segment.p2(), QSize(1, 1));
    }
    return touched;
}

void LinesDrawAxis::DrawAllLinesXIsAx(ColorRef color, PlotCanvas* canvas) {
    MTRACE(4, draw_texts::kDrawingOverAxis);
    if (canvas != nullptr && m_points.Size() >= 2) {
        const QColor drawn = DrawColor(color);
        const AxisCurve::Style style = AxisStyle(drawn);
        PlotCanvas::AlonePainting alone;
        if (!style.points) {
            alone.can_go_on = m_points.CanGoOn(style);
            alone.paint = [this, style](QImage& picture, const QRect& area,
                                        const PixelColumns& target, bool go_on,
                                        PixelRuns& touched) {
                m_points.DrawOn(picture, area, target, style, go_on, touched);
            };
        }
        canvas->Add(
            [this, style](QImage& picture, PixelRuns& touched) {
                m_points.Draw(picture, m_plot, style, &touched);
            },
            m_changes, std::move(alone));
    }
    MTRACE(4, draw_texts::kDrawnOverAxis);
}

AxisCurve::Style LinesDrawAxis::AxisStyle(const QColor& color) const {
    AxisCurve::Style style;
    style.points = m_settings.mode_ax == AxisDrawMode::kPoints;
    style.point_size =
        std::max(1, static_cast<int>(std::lround(m_settings.point_size * m_device_ratio)));
    style.color = color;
    style.background = ToQColor(m_settings.background);
    style.device_ratio = m_device_ratio;
    style.fade_out_age = m_settings.fade_out_time / m_settings.cycle_time;
    return style;
}

void LinesDrawAxis::GetYValues(std::vector<double>& out) const {
    if (m_settings.x_type != CoorType::kAxis) {
        m_curve.CopySamples(out);
        return;
    }
    out.clear();
    for (const LinePoint& point : m_points) {
        out.push_back(point.y_value);
    }
}

void LinesDrawAxis::GetXValues(std::vector<double>& out) const {
    out.clear();
    for (const LinePoint& point : m_points) {
        out.push_back(point.x_value);
    }
}

}  // namespace wavo
