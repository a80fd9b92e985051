#include "graph/draw/lines_draw_axis.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "graph/draw/curve/curve_kinds.h"
#include "graph/draw/curve/curve_over_axis.h"
#include "graph/draw/display_settings.h"
#include "graph/draw/frame/colors.h"
#include "graph/draw/raster/dash_pattern.h"
#include "graph/draw/report_texts.h"
#include "support/diagnostics.h"
#include "support/to_count.h"

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

CurveDefinition DefinitionOf(const LinesDrawAxis::Settings& settings) {
    return {settings.x_type, settings.mode, settings.cycle_time,
            MaxCurvePoints(settings.range, settings.cycle_time)};
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
      m_plot(geometry, 1.0),
      m_curve(MakeCurve(DefinitionOf(m_settings))),
      m_over_time(m_curve->OverTime()) {
    m_plot.x.Fill(RangeOf(m_x_scale));
    m_plot.y.Fill(RangeOf(m_y_scale));
}

void LinesDrawAxis::Empty() {
    m_curve->Clear();
    m_plot.x.ForgetLast();
    m_plot.y.ForgetLast();
    m_x_auto.Reset();
    m_y_auto.Reset();
}

void LinesDrawAxis::SetGeometry(const PlotGeometry& geometry, double device_ratio) {
    m_plot.area = geometry.plot;
    m_plot.device_ratio = device_ratio;
    m_plot.x.SetLines(geometry.vertical);
    m_plot.x.Fill(RangeOf(m_x_scale));
    m_plot.x.ResetSegment();
    m_plot.y.SetLines(geometry.horizontal);
    m_plot.y.Fill(RangeOf(m_y_scale));
    m_plot.y.ResetSegment();
    Remap({.x_changed = true, .y_changed = true, .force_x = true, .force_y = true});
}

void LinesDrawAxis::XScaleChanged() {
    m_plot.x.Fill(RangeOf(m_x_scale));
    m_plot.x.ResetSegment();
    Remap({.x_changed = true, .force_x = true});
}

void LinesDrawAxis::Remap(const Remapping& what) {
    m_curve->Remap(m_plot, what);
    if (m_past != nullptr) {
        m_past->Remap(m_plot, what);
    }
}

double LinesDrawAxis::GetXTimeRange() const {
    if (m_x_scale.ScaleType != ScaleTypeCode::kTime) {
        MERRLOG(draw_texts::kNoTimeRange);
        return 0.0;
    }
    return m_x_scale.TimeRange;
}

void LinesDrawAxis::DrawLinesXIsTime(const std::vector<double>& values, double start_time,
                                     PlotCanvas* canvas, const SampleOrigin& origin) {
    if (values.empty()) {
        return;
    }
    if (m_curve->Add({{}, values, start_time == 0.0, m_x_scale.TimeRange, origin}, m_plot)) {
        m_y_auto.CountDrawn(values.size());
    }
    DrawAllLinesXIsTime(kOwnColor, canvas);
}

void LinesDrawAxis::DrawLinesXIsAx(const std::vector<double>& x_values,
                                   const std::vector<double>& y_values, PlotCanvas* canvas) {
    if (m_curve->Add({x_values, y_values}, m_plot)) {
        m_x_auto.CountDrawn(x_values.size());
        m_y_auto.CountDrawn(y_values.size());
    }
    DrawAllLinesXIsAx(kOwnColor, canvas);
}

void LinesDrawAxis::ShowWindow(const SampleBuffer& buffer, std::vector<RowPart> parts) {
    m_over_time->ShowWindow(buffer, std::move(parts));
    FitScaleToWindow(m_curve->FiniteExtremes(Coordinate::kY));
}

void LinesDrawAxis::ShowOwnWindow(double from, double to) {
    // A window may reach beyond the newest sample.
    const std::uint64_t held = m_over_time->HeldSamples();
    const std::uint64_t end = ToCount(to / m_settings.cycle_time, kMostPoints);
    const std::uint64_t count = ToCount((to - from) / m_settings.cycle_time, end);
    const std::uint64_t first = std::min(end - count, held);
    m_over_time->ShowOwnWindow({first, std::min(end, held) - first});
    FitScaleToWindow(m_curve->FiniteExtremes(Coordinate::kY));
}

void LinesDrawAxis::ShowHistory(History* history, const LineRange& lines) {
    m_shows_past = true;
    if (history == nullptr) {
        m_past.reset();
        m_past_over_time = nullptr;
        return;
    }
    const HistoryCurve::Place place{lines.begin, 0.0, m_settings.cycle_time, lines.end - 1};
    if (m_past_over_time != nullptr && &m_past_over_time->Past() == history) {
        m_past_over_time->SetPlace(place);
    } else {
        auto past = std::make_unique<HistoryCurve>(*history, place);
        m_past_over_time = past.get();
        m_past = std::move(past);
    }
    if (m_y_scale.ScaleType == ScaleTypeCode::kAxis &&
        m_y_scale.ScaleAx == ScaleAxCode::kAutomatic) {
        FitScaleToWindow(m_past_over_time->FiniteExtremes(m_plot));
    }
}

void LinesDrawAxis::ShowPoints(const std::vector<double>& x_values,
                               const std::vector<double>& y_values) {
    m_shows_past = true;
    m_past.reset();  // its points are not mapped to other scales any more
    m_past_over_axis = nullptr;
    m_plot.x.ForgetLast();
    m_plot.y.ForgetLast();
    // The x scale is that of all curves of the graph: another one may have adapted it.
    m_x_auto.Reset();
    const auto none = [] { return Extremes(); };
    m_x_auto.Check(m_x_scale, ExtremesOf(x_values), MaxPoints(), none);
    ApplyScaleChange(Coordinate::kX);
    const Extremes of_y = ExtremesOf(y_values);
    FitScaleToWindow(of_y.set ? MinMax{of_y.minimum, of_y.maximum} : MinMax());
    m_past_points = static_cast<double>(x_values.size());
    auto past = std::make_unique<CurveOverAxis>(std::max<std::uint64_t>(x_values.size(), 1));
    past->Add({x_values, y_values}, m_plot);
    m_past_over_axis = past.get();
    m_past = std::move(past);
}

void LinesDrawAxis::ShowLive() {
    m_shows_past = false;
    m_past.reset();
    m_past_over_time = nullptr;
    m_past_over_axis = nullptr;
}

void LinesDrawAxis::KeepWindow() {
    if (m_over_time != nullptr) {
        m_over_time->KeepWindow();
    }
}

void LinesDrawAxis::FitScaleToWindow(const MinMax& extremes) {
    // The scale fits the window alone, whatever was drawn before.
    m_y_auto.Reset();
    MTRACE(4, draw_texts::kCheckingYScale);
    const ScaleDefinition before = m_y_scale;
    const bool checked =
        m_y_auto.Check(m_y_scale, ToExtremes(extremes), MaxPoints(), [] { return Extremes(); });
    // A window that stands still has the same scale each time.
    if (checked && m_y_scale != before) {
        ApplyScaleChange(Coordinate::kY);
    }
    MTRACE(4, draw_texts::kYScaleChecked);
}

void LinesDrawAxis::ApplyScaleChange(Coordinate coordinate) {
    const bool is_x = coordinate == Coordinate::kX;
    if (is_x) {
        m_plot.x.Fill(RangeOf(m_x_scale));
    } else {
        m_plot.y.Fill(RangeOf(m_y_scale));
    }
    m_plot.x.ResetSegment();
    m_plot.y.ResetSegment();
    Remap({.x_changed = is_x, .y_changed = !is_x, .force_y = true});
}

void LinesDrawAxis::CheckScale(Coordinate coordinate, const std::vector<double>& new_values) {
    const bool is_x = coordinate == Coordinate::kX;
    AutoScale& automatic = is_x ? m_x_auto : m_y_auto;
    const auto held = [&] { return ToExtremes(m_curve->FiniteExtremes(coordinate)); };
    if (automatic.Check(is_x ? m_x_scale : m_y_scale, ExtremesOf(new_values), MaxPoints(), held)) {
        ApplyScaleChange(coordinate);
    }
}

void LinesDrawAxis::CheckXScaleValue(const std::vector<double>& x_values) {
    MTRACE(4, draw_texts::kCheckingXScale);
    CheckScale(Coordinate::kX, x_values);
    MTRACE(4, draw_texts::kXScaleChecked);
}

void LinesDrawAxis::CheckYScaleValue(const std::vector<double>& y_values) {
    MTRACE(4, draw_texts::kCheckingYScale);
    CheckScale(Coordinate::kY, y_values);
    MTRACE(4, draw_texts::kYScaleChecked);
}

CurveStyle LinesDrawAxis::StyleIn(ColorRef color) const {
    CurveStyle style;
    style.color = (color & kOwnColor) != 0 ? m_shown_color : ToQColor(color);
    style.background = ToQColor(m_settings.background);
    style.points = m_settings.mode_ax == AxisDrawMode::kPoints;
    style.point_size = m_settings.point_size;
    if (m_dashes != 0) {
        style.dashes = DashPattern(m_dashes, m_plot.device_ratio);
    }
    style.fade_out_age =
        m_shows_past ? m_past_points : m_settings.fade_out_time / m_settings.cycle_time;
    return style;
}

CurveStyle LinesDrawAxis::BackStyle() const {
    CurveStyle style = StyleIn(kOwnColor);
    const auto half = [](int a, int b) { return (a + b) / 2; };
    style.color = QColor(half(style.color.red(), style.background.red()),
                         half(style.color.green(), style.background.green()),
                         half(style.color.blue(), style.background.blue()));
    style.fade_out_age = 0.0;
    return style;
}

void LinesDrawAxis::DrawIn(ColorRef color, PlotCanvas* canvas) {
    Curve* const drawn = m_shows_past ? m_past.get() : m_curve.get();
    if (canvas != nullptr && drawn != nullptr) {
        drawn->Draw(m_plot, StyleIn(color), *canvas);
    }
}

void LinesDrawAxis::DrawAllLinesXIsTime(ColorRef color, PlotCanvas* canvas) {
    MTRACE(4, draw_texts::kDrawingOverTime);
    DrawIn(color, canvas);
    MTRACE(4, draw_texts::kDrawnOverTime);
}

void LinesDrawAxis::DrawAllLinesXIsAx(ColorRef color, PlotCanvas* canvas) {
    MTRACE(4, draw_texts::kDrawingOverAxis);
    DrawIn(color, canvas);
    MTRACE(4, draw_texts::kDrawnOverAxis);
}

}  // namespace wavo
