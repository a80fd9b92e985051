#include "graph/draw/graph_draw.h"

#include <QFontMetrics>
#include <algorithm>
#include <cmath>

#include "graph/draw/report_texts.h"
#include "graph/values/missing_value.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

constexpr std::int32_t kDefaultXScaleLines = 5;
constexpr std::int32_t kDefaultYScaleLines = 3;

/// A plot area with a lower or narrower side, logical pixels, is small.
constexpr int kSmallPlot = 40;

std::int32_t CheckedXLines(std::int32_t lines) {
    if (lines >= 1) {
        return lines;
    }
    MERRLOG(draw_texts::kBadScaleLinesX);
    return kDefaultXScaleLines;
}

std::int32_t CheckedYLines(std::int32_t lines) {
    if (lines >= 1) {
        return lines;
    }
    MERRLOG(draw_texts::kBadScaleLinesY);
    return kDefaultYScaleLines;
}

/// The definition with one entry per y axis in every list; a y scale more than y axes is legal.
WavoGraph Completed(WavoGraph graph, const GraphDisplaySettings& settings) {
    const std::size_t axes = graph.YCoorAxName.size();
    graph.YCoorAxColor.resize(axes, ComplementColor(settings.background));
    graph.YCoorAxDerivation.resize(axes, 0);
    graph.Triggers.resize(axes, TriggerEntry{TriggerTypeCode::kNone, 0.0, {}});
    graph.YScales.resize(std::max(axes, graph.YScales.size()));
    return graph;
}

int DeviceCoordinate(int logical, double ratio) {
    return ToPixel(std::round(static_cast<double>(logical) * ratio));
}

}  // namespace

GraphDraw::GraphDraw(const QRect& rectangle, const WavoGraph& graph, GraphDrawHost& host,
                     const GraphDisplaySettings& settings, double cycle_time,
                     std::int32_t x_scale_lines, std::int32_t y_scale_lines, GraphStreams streams)
    : m_graph(Completed(graph, settings)),
      m_host(host),
      m_settings(settings),
      m_colors(ToQColor(settings.background)),
      m_font(MakeFont(settings.font)),
      m_cycle_time(cycle_time),
      m_x_scale_lines(CheckedXLines(x_scale_lines)),
      m_y_scale_lines(CheckedYLines(y_scale_lines)),
      m_rectangle(rectangle),
      m_shown_x_scale(graph.XScale),
      m_recorder(m_graph, cycle_time, streams),
      m_zoom(m_graph, cycle_time) {
    Layout();
    CreateLines();
    PrimeLines();
}

void GraphDraw::CreateLines() {
    const PlotGeometry geometry = Geometry();
    for (std::size_t i = 0; i < m_graph.YCoorAxName.size(); ++i) {
        LinesDrawAxis::Settings settings;
        settings.x_type = m_graph.XCoorType;
        settings.background = m_settings.background;
        settings.mode = m_graph.Mode;
        settings.mode_ax = m_graph.ModeAx;
        settings.axis_name = m_graph.YCoorAxName[i];
        settings.derivation = m_graph.YCoorAxDerivation[i];
        settings.color = m_graph.YCoorAxColor[i];
        settings.cycle_time = m_cycle_time;
        settings.range = GraphTimeRange(m_graph);
        settings.fade_out_time = m_graph.FadeOutTime;
        m_lines.push_back(
            std::make_unique<LinesDrawAxis>(geometry, ShownXScale(), m_graph.YScales[i], settings));
    }
}

void GraphDraw::PrimeLines() {
    if (m_recorder.State() == RunState::kWaitingForStart) {
        return;  // nothing is shown before the trigger
    }
    // Values that are still new come with the first step.
    m_recorder.TakeHeld();
    m_recorder.LeaveOutUnderived();
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        m_lines[i]->CheckYScaleValue(m_recorder.Taken(i).values);
        if (!IsTimeGraph()) {
            m_lines[i]->CheckXScaleValue(m_recorder.TakenX().values);
        }
        if (!IsTimeGraph() || !m_recorder.Taken(i).values.empty()) {
            AddAndDraw(i, nullptr);
        }
    }
    m_recorder.Discard();
}

void GraphDraw::Layout() {
    const QFontMetrics font_metrics(m_font);
    m_metrics.line_height = font_metrics.height() + 4;
    m_metrics.gap = 2 * font_metrics.averageCharWidth();
    m_metrics.minimum_slot = 5 * font_metrics.averageCharWidth();
    m_metrics.slot_width = SlotWidth(font_metrics);
    m_layout = LayoutFrame(m_rectangle, m_metrics, static_cast<int>(m_recorder.Axes()));
    const QRect available = m_layout.plot;
    m_layout.plot = RoundPlot(available, m_graph);
    m_device_plot = ToDevice(m_layout.plot);
    if (std::min(m_layout.plot.width(), m_layout.plot.height()) < kSmallPlot) {
        // So small, the rounding from one kind of pixels to the other is seen.
        m_device_plot = RoundPlot(ToDevice(available), m_graph);
        m_layout.plot = ToLogical(m_device_plot);
    }
    m_vertical = VerticalScaleLines(m_device_plot, m_x_scale_lines);
    m_horizontal = HorizontalScaleLines(m_device_plot, m_y_scale_lines);
    FillScaleLines();
    for (const auto& line : m_lines) {
        line->SetGeometry(Geometry(), m_device_ratio);
    }
    Invalidate();
}

int GraphDraw::SlotWidth(const QFontMetrics& font_metrics) const {
    // Room for the longest name and for numbers as they are seen most; not for the numbers of the
    // moment, which would move the picture.
    int name_width = 0;
    for (std::size_t i = 0; i < m_graph.YCoorAxName.size(); ++i) {
        const std::string name = AxisLabel(m_graph.YCoorAxName[i], m_graph.YCoorAxDerivation[i]);
        name_width =
            std::max(name_width, font_metrics.horizontalAdvance(QString::fromStdString(name)));
    }
    const QString numbers = QStringLiteral("Y: =(-100.000 ... 100.000):   dy=100.000");
    return 2 * std::min(name_width, m_rectangle.width()) + font_metrics.horizontalAdvance(numbers) +
           2 * m_metrics.gap;
}

QRect GraphDraw::ToDevice(const QRect& logical) const {
    const int left = DeviceCoordinate(logical.left(), m_device_ratio);
    const int top = DeviceCoordinate(logical.top(), m_device_ratio);
    const int right = DeviceCoordinate(logical.right() + 1, m_device_ratio) - 1;
    const int bottom = DeviceCoordinate(logical.bottom() + 1, m_device_ratio) - 1;
    return {QPoint(left, top), QPoint(right, bottom)};
}

QRect GraphDraw::ToLogical(const QRect& device) const {
    const double ratio = m_device_ratio;
    const QPoint top_left(ToPixel(std::floor(device.left() / ratio)),
                          ToPixel(std::floor(device.top() / ratio)));
    const QPoint bottom_right(ToPixel(std::floor(device.right() / ratio)),
                              ToPixel(std::floor(device.bottom() / ratio)));
    return {top_left, bottom_right};
}

PlotGeometry GraphDraw::Geometry() const {
    return {m_device_plot, m_vertical, m_horizontal};
}

void GraphDraw::FillScaleLines() {
    FillScaleValues(m_vertical, GraphDefineGetMinMaxValue(ShownXScale()));
}

void GraphDraw::Invalidate() {
    m_frame_valid = false;
}

void GraphDraw::FitToDevice(double ratio) {
    if (ratio != m_device_ratio && ratio > 0.0) {
        m_device_ratio = ratio;
        Layout();
    }
}

void GraphDraw::SetRectangle(const QRect& rectangle) {
    m_rectangle = rectangle;
    Layout();
}

void GraphDraw::RestoreZoom(const ZoomState& zoom) {
    m_zoom.Restore(zoom);
    // The next step shows the range or the window; here only scales that followed the values.
    bool changed = m_graph.XScale != zoom.definition.XScale;
    m_graph.XScale = zoom.definition.XScale;
    for (std::size_t i = 0; i < std::min(m_lines.size(), zoom.definition.YScales.size()); ++i) {
        changed |= m_graph.YScales[i] != zoom.definition.YScales[i];
        m_graph.YScales[i] = zoom.definition.YScales[i];
    }
    if (changed) {
        FillScaleLines();
        for (const auto& line : m_lines) {
            line->SetGeometry(Geometry(), m_device_ratio);
        }
    }
}

void GraphDraw::DetachValues() {
    for (const auto& line : m_lines) {
        line->KeepWindow();
    }
    m_recorder.Detach();
}

double GraphDraw::PixelToTime(int x) const {
    return IsTimeGraph() ? ValueAtColumn(m_vertical, DeviceCoordinate(x, m_device_ratio)) : -1.0;
}

}  // namespace wavo
