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

GraphFrame::Looks LooksOf(const GraphDisplaySettings& settings, std::int32_t x_scale_lines,
                          std::int32_t y_scale_lines) {
    return {ToQColor(settings.background), MakeFont(settings.font), CheckedXLines(x_scale_lines),
            CheckedYLines(y_scale_lines)};
}

}  // namespace

GraphDraw::GraphDraw(const QRect& rectangle, const WavoGraph& graph, GraphDrawHost& host,
                     const GraphDisplaySettings& settings, double cycle_time,
                     std::int32_t x_scale_lines, std::int32_t y_scale_lines, GraphStreams streams)
    : m_graph(Completed(graph, settings)),
      m_host(host),
      m_settings(settings),
      m_cycle_time(cycle_time),
      m_frame(m_graph, LooksOf(settings, x_scale_lines, y_scale_lines), rectangle),
      m_shown_x_scale(graph.XScale),
      m_recorder(m_graph, cycle_time, streams),
      m_zoom(m_graph, cycle_time) {
    FillScaleLines();
    CreateLines();
    PrimeLines();
}

void GraphDraw::CreateLines() {
    const PlotGeometry geometry = m_frame.Geometry();
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
            m_lines[i]->CheckXScaleValue(m_recorder.Taken(m_recorder.Axes()).values);
        }
        if (!IsTimeGraph() || !m_recorder.Taken(i).values.empty()) {
            AddAndDraw(i, nullptr);
        }
    }
    m_recorder.Discard();
}

void GraphDraw::FollowFrame() {
    FillScaleLines();
    for (const auto& line : m_lines) {
        line->SetGeometry(m_frame.Geometry(), m_frame.DeviceRatio());
    }
}

void GraphDraw::FillScaleLines() {
    m_frame.SetXRange(GraphDefineGetMinMaxValue(ShownXScale()));
}

void GraphDraw::SetRectangle(const QRect& rectangle) {
    m_frame.SetRectangle(rectangle);
    FollowFrame();
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
        FollowFrame();
    }
}

void GraphDraw::DetachValues() {
    for (const auto& line : m_lines) {
        line->KeepWindow();
    }
    m_recorder.Detach();
}

}  // namespace wavo
