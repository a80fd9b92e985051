#include "graph/draw/graph_draw.h"

#include <algorithm>
#include <utility>

#include "graph/draw/report_texts.h"
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
            CheckedYLines(y_scale_lines), settings.units};
}

}  // namespace

GraphDraw::GraphDraw(const QRect& rectangle, const WavoGraph& graph, GraphDrawHost& host,
                     const GraphDisplaySettings& settings, double cycle_time,
                     std::int32_t x_scale_lines, std::int32_t y_scale_lines, GraphStreams streams)
    : m_graph(Completed(graph, settings)),
      m_host(host),
      m_frame(m_graph, LooksOf(settings, x_scale_lines, y_scale_lines), rectangle),
      m_recorder(m_graph, cycle_time, streams),
      m_zoom(m_graph, cycle_time),
      m_curves(m_graph, settings.background, cycle_time) {
    FillScaleLines();
    m_curves.Create(m_frame);
    SetLineStyles(settings.line_styles);
    PrimeCurves();
}

void GraphDraw::PrimeCurves() {
    if (m_recorder.State() == RunState::kWaitingForStart) {
        return;  // nothing is shown before the trigger
    }
    // Values that are still new come with the first step.
    m_recorder.TakeHeld();
    m_recorder.LeaveOutUnderived();
    m_curves.CheckScales(m_recorder, false);
    if (m_recorder.TakenRows() != 0) {
        m_curves.AddAndDraw(m_recorder, nullptr);
    }
    m_recorder.Discard();
}

void GraphDraw::FollowFrame() {
    FillScaleLines();
    m_curves.Follow(m_frame);
}

void GraphDraw::FillScaleLines() {
    m_frame.SetXRange(GraphDefineGetMinMaxValue(m_curves.ShownXScale()));
}

void GraphDraw::ShowScale(double time_range) {
    if (m_curves.ShowTimeRange(time_range)) {
        FillScaleLines();
    }
}

void GraphDraw::ShowFullScale() {
    m_zoom.ShowAll();
    if (IsTimeGraph()) {
        ShowScale(m_graph.XScale.TimeRange);
    }
}

void GraphDraw::SetLineStyles(bool shown) {
    m_frame.SetLineStyles(shown);
    m_curves.SetLineStyles(shown);
}

void GraphDraw::SetRectangle(const QRect& rectangle) {
    m_frame.SetRectangle(rectangle);
    FollowFrame();
}

void GraphDraw::RestoreZoom(const ZoomState& zoom) {
    m_zoom.Restore(zoom);
    // The next step shows the range or the window; here only scales that followed the values.
    RestoreScales(zoom.definition);
}

void GraphDraw::RestoreScales(const WavoGraph& graph) {
    bool changed = m_graph.XScale != graph.XScale;
    m_graph.XScale = graph.XScale;
    const std::size_t scales = std::min(Lines().size(), graph.YScales.size());
    for (std::size_t i = 0; i < scales; ++i) {
        changed |= m_graph.YScales[i] != graph.YScales[i];
        m_graph.YScales[i] = graph.YScales[i];
    }
    if (changed) {
        FollowFrame();
    }
}

void GraphDraw::ShowHistory(std::optional<ShownHistory> history) {
    const bool was_live = !m_history.has_value();
    m_history = std::move(history);
    if (m_history.has_value() && was_live) {
        m_before_history = m_graph;
    } else if (!m_history.has_value() && !was_live) {
        m_curves.ShowLive();
        RestoreScales(m_before_history);
        if (IsTimeGraph()) {
            ShowScale(m_zoom.IsShown() ? m_zoom.State().Length() : m_graph.XScale.TimeRange);
        }
    }
}

TimeWindow GraphDraw::DisplayedWindow() const {
    if (!m_history.has_value()) {
        return m_zoom.Window();
    }
    const double cycle_time = m_recorder.CycleTime();
    return {static_cast<double>(m_history->lines.begin - m_history->origin) * cycle_time,
            static_cast<double>(m_history->lines.end - 1 - m_history->origin) * cycle_time};
}

void GraphDraw::DetachValues() {
    ShowHistory(std::nullopt);  // it may be that of the buffers
    m_curves.KeepWindows();
    m_recorder.Detach();
}

bool GraphDraw::ShowsRecording() const {
    // While a graph waits again, its last recording may still be seen.
    const RunState state = m_recorder.State();
    return state == RunState::kRunningAfterStart || IsStopped(state) ||
           (state == RunState::kWaitingForStart && !Lines().empty() && Lines().front()->Size() > 0);
}

}  // namespace wavo
