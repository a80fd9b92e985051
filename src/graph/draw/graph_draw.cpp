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

/// A zoom shorter than this, seconds, shows nothing.
constexpr double kSmallestZoom = 0.0001;

/// A plot area with a lower or narrower side, logical pixels, is small.
constexpr int kSmallPlot = 40;

/// Room for new values that is kept from step to step.
constexpr std::size_t kValuesKept = 16384;

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

int DeviceCoordinate(int logical, double ratio) {
    return ToPixel(std::round(static_cast<double>(logical) * ratio));
}

}  // namespace

void GraphDraw::DrawBuffer::Discard() {
    if (values.capacity() > kValuesKept) {
        std::vector<double>().swap(values);  // a refill takes as many as the curve holds
    }
    values.clear();
    start_time = 0.0;
    underived.clear();
}

void GraphDraw::DrawBuffer::DropFront(std::uint64_t count) {
    const std::uint64_t dropped = std::min<std::uint64_t>(count, values.size());
    values.erase(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(dropped));
    for (SampleStretch& stretch : underived) {
        const std::uint64_t end = stretch.position + stretch.count;
        stretch.position -= std::min(dropped, stretch.position);
        stretch.count = end - std::min(end, dropped + stretch.position);
    }
}

void GraphDraw::DrawBuffer::DropBack(std::uint64_t count) {
    values.resize(values.size() - std::min<std::uint64_t>(count, values.size()));
}

void GraphDraw::DrawBuffer::LeaveOutUnderived() {
    for (const SampleStretch& stretch : underived) {
        const auto begin = std::min<std::uint64_t>(stretch.position, values.size());
        const auto end = std::min<std::uint64_t>(stretch.position + stretch.count, values.size());
        std::fill(values.begin() + static_cast<std::ptrdiff_t>(begin),
                  values.begin() + static_cast<std::ptrdiff_t>(end), kNoValue);
    }
    underived.clear();
}

GraphDraw::GraphDraw(const QRect& rectangle, const WavoGraph& graph, GraphDrawHost& host,
                     const GraphDisplaySettings& settings, double cycle_time,
                     std::int32_t x_scale_lines, std::int32_t y_scale_lines, GraphStreams streams)
    : m_graph(graph),
      m_host(host),
      m_settings(settings),
      m_colors(ToQColor(settings.background)),
      m_font(MakeFont(settings.font)),
      m_cycle_time(cycle_time),
      m_x_scale_lines(CheckedXLines(x_scale_lines)),
      m_y_scale_lines(CheckedYLines(y_scale_lines)),
      m_stream_count(streams.y.size()),
      m_rectangle(rectangle),
      m_shown_x_scale(graph.XScale) {
    CompleteDefinition();
    m_zoom.definition = m_graph;
    m_buffers.resize(m_graph.YCoorAxName.size());
    for (std::size_t i = 0; i < std::min(m_buffers.size(), streams.y.size()); ++i) {
        m_buffers[i].value = streams.y[i];
    }
    m_x_buffer.value = streams.x;
    Layout();
    CreateLines();
    CreateTriggers();
    PrimeLines();
}

void GraphDraw::CompleteDefinition() {
    // One entry per y axis in every list; a y scale more than y axes is legal.
    const std::size_t axes = m_graph.YCoorAxName.size();
    m_graph.YCoorAxColor.resize(axes, ComplementColor(m_settings.background));
    m_graph.YCoorAxDerivation.resize(axes, 0);
    m_graph.Triggers.resize(axes, TriggerEntry{TriggerTypeCode::kNone, 0.0, {}});
    m_graph.YScales.resize(std::max(axes, m_graph.YScales.size()));
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

void GraphDraw::CreateTriggers() {
    for (std::size_t i = 0; i < m_graph.Triggers.size() && i < m_lines.size(); ++i) {
        const TriggerTypeCode type = m_graph.Triggers[i].TriggerType;
        if (type == TriggerTypeCode::kNone) {
            continue;
        }
        m_TriggerData.push_back({i, TestOfTrigger(type)});
        const std::optional<RunState> initial = InitialRunState(type);
        if (initial.has_value()) {
            m_run_state = *initial;
            m_restart_state = *initial;
        }
    }
}

void GraphDraw::PrimeLines() {
    if (m_run_state == RunState::kWaitingForStart) {
        return;  // nothing is shown before the trigger
    }
    // Values that are still new come with the first step.
    const StreamRows rows = Rows();
    SampleStretch held = RowsOfSpan(rows);
    held.count -= std::min(held.count, rows.Count() - rows.FirstNew());
    TakeRows(rows, held);
    LeaveOutUnderived();
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const DrawBuffer& buffer = m_buffers[i];
        m_lines[i]->CheckYScaleValue(buffer.values);
        if (IsTimeGraph()) {
            m_lines[i]->DrawLinesXIsTime(buffer.values, buffer.start_time, nullptr);
        } else {
            m_lines[i]->CheckXScaleValue(m_x_buffer.values);
            m_lines[i]->DrawLinesXIsAx(m_x_buffer.values, buffer.values, nullptr);
        }
    }
    DiscardValues();
}

void GraphDraw::Layout() {
    const QFontMetrics font_metrics(m_font);
    m_metrics.line_height = font_metrics.height() + 4;
    m_metrics.gap = 2 * font_metrics.averageCharWidth();
    m_metrics.minimum_slot = 5 * font_metrics.averageCharWidth();
    m_metrics.slot_width = SlotWidth(font_metrics);
    m_layout = LayoutFrame(m_rectangle, m_metrics, static_cast<int>(m_buffers.size()));
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

void GraphDraw::SetZoomRange(double start, double end) {
    if (start > end || !std::isfinite(start) || !std::isfinite(end)) {
        MERRLOG(draw_texts::kBadZoomTime);
        m_zoom.active = false;
        return;
    }
    if (end - start < kSmallestZoom) {
        MERRLOG(draw_texts::kZoomTooSmall);
        return;
    }
    if (m_zoom.first) {
        m_zoom.first = false;
        m_zoom.offset = 0.0;
    } else if (m_zoom.offset == 0.0) {
        m_zoom.offset = m_zoom.start;
    } else {
        m_zoom.offset += m_zoom.start;
    }
    if (!m_zoom.active) {
        m_recorded_section = ShowsRecording();
    }
    m_zoom.start = start;
    m_zoom.end = end;
    m_zoom.graph_number = m_graph.GraphNumber;
    m_zoom.active = true;
    m_zoom.definition = m_graph;
}

void GraphDraw::RestoreZoom(const ZoomState& zoom) {
    m_zoom = zoom;
    m_window = {};
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
    for (DrawBuffer& buffer : m_buffers) {
        buffer.value = nullptr;
    }
    m_x_buffer.value = nullptr;
}

void GraphDraw::RestartAfterTrigger() {
    if (m_run_state != RunState::kStoppedAfterStart && m_run_state != RunState::kStoppedAfterStop) {
        return;
    }
    if (m_restart_state == RunState::kWaitingForStop) {
        m_restart_flag = true;
    }
    m_run_state = m_restart_state;
}

double GraphDraw::PixelToTime(int x) const {
    return IsTimeGraph() ? ValueAtColumn(m_vertical, DeviceCoordinate(x, m_device_ratio)) : -1.0;
}

double GraphDraw::LatestTime() const {
    double latest = 0.0;
    for (const GraphValue* value : Values()) {
        latest = std::max(latest, value->LatestTime());
    }
    return latest;
}

std::vector<GraphValue*> GraphDraw::Values() const {
    std::vector<GraphValue*> values;
    for (const DrawBuffer& buffer : m_buffers) {
        if (buffer.value != nullptr) {
            values.push_back(buffer.value);
        }
    }
    if (m_x_buffer.value != nullptr) {
        values.push_back(m_x_buffer.value);
    }
    return values;
}

}  // namespace wavo
