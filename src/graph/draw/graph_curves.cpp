#include "graph/draw/graph_curves.h"

#include <algorithm>
#include <utility>

#include "graph/draw/display_settings.h"

namespace wavo {

GraphCurves::GraphCurves(WavoGraph& graph, ColorRef background, double cycle_time)
    : m_graph(graph),
      m_background(background),
      m_cycle_time(cycle_time),
      m_is_over_time(graph.XCoorType != CoorType::kAxis),
      m_shown_x_scale(graph.XScale) {}

void GraphCurves::Create(const GraphFrame& frame) {
    const PlotGeometry geometry = frame.Geometry();
    ScaleDefinition& x_scale = m_is_over_time ? m_shown_x_scale : m_graph.XScale;
    for (std::size_t i = 0; i < m_graph.YCoorAxName.size(); ++i) {
        LinesDrawAxis::Settings settings;
        settings.x_type = m_graph.XCoorType;
        settings.background = m_background;
        settings.mode = m_graph.Mode;
        settings.mode_ax = m_graph.ModeAx;
        settings.axis_name = m_graph.YCoorAxName[i];
        settings.derivation = m_graph.YCoorAxDerivation[i];
        settings.color = m_graph.YCoorAxColor[i];
        settings.cycle_time = m_cycle_time;
        settings.range = GraphTimeRange(m_graph);
        settings.fade_out_time = m_graph.FadeOutTime;
        m_lines.push_back(
            std::make_unique<LinesDrawAxis>(geometry, x_scale, m_graph.YScales[i], settings));
    }
}

bool GraphCurves::ShowTimeRange(double time_range) {
    if (m_shown_x_scale.TimeRange == time_range &&
        m_shown_x_scale.ScaleType == m_graph.XScale.ScaleType) {
        return false;
    }
    m_shown_x_scale = m_graph.XScale;
    m_shown_x_scale.TimeRange = time_range;
    for (const auto& line : m_lines) {
        line->XScaleChanged();
    }
    return true;
}

void GraphCurves::SetLineStyles(bool shown) {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        m_lines[i]->SetDashes(shown ? i : 0);
    }
}

void GraphCurves::Follow(const GraphFrame& frame) {
    const PlotGeometry geometry = frame.Geometry();
    for (const auto& line : m_lines) {
        line->SetGeometry(geometry, frame.DeviceRatio());
    }
}

void GraphCurves::Empty() {
    for (const auto& line : m_lines) {
        line->Empty();
    }
}

void GraphCurves::EmptyAttached(const GraphRecorder& recorder) {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        if (recorder.Taken(i).value != nullptr) {
            m_lines[i]->Empty();
        }
    }
}

void GraphCurves::CheckScales(const GraphRecorder& recorder, bool show_window) {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const TakenValues& taken = recorder.Taken(i);
        if (show_window && taken.value != nullptr) {
            continue;
        }
        m_lines[i]->CheckYScaleValue(taken.values);
        if (!m_is_over_time) {
            m_lines[i]->CheckXScaleValue(recorder.Taken(recorder.Axes()).values);
        }
    }
}

void GraphCurves::AddAndDraw(const GraphRecorder& recorder, PlotCanvas* canvas) {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const TakenValues& taken = recorder.Taken(i);
        if (!m_is_over_time) {
            m_lines[i]->DrawLinesXIsAx(recorder.Taken(recorder.Axes()).values, taken.values,
                                       canvas);
        } else if (taken.values.empty()) {
            m_lines[i]->DrawAllLinesXIsTime(kOwnColor, canvas);
        } else {
            m_lines[i]->DrawLinesXIsTime(taken.values, taken.start_time, canvas, taken.origin);
        }
    }
}

void GraphCurves::Draw(PlotCanvas* canvas) {
    for (const auto& line : m_lines) {
        if (m_is_over_time) {
            line->DrawAllLinesXIsTime(kOwnColor, canvas);
        } else {
            line->DrawAllLinesXIsAx(kOwnColor, canvas);
        }
    }
}

void GraphCurves::ShowWindow(const GraphZoom& zoom, const GraphRecorder& recorder,
                             const StreamRows& rows) {
    const TimeWindow& held = zoom.HeldWindow();
    const SampleStretch& wanted = zoom.Rows();
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const GraphValue* const value = recorder.Taken(i).value;
        if (value == nullptr) {
            continue;
        }
        if (zoom.IsOfRecording()) {
            // The curve still holds the whole recording; its buffer may have run on.
            m_lines[i]->ShowOwnWindow(held.start, held.end);
        } else {
            // The curve looks at the buffer's own samples: a window costs nothing per sample.
            m_lines[i]->ShowWindow(value->Values(), rows.Parts(i, wanted.position, wanted.count));
        }
    }
}

void GraphCurves::ShowHistory(const ShownHistory& history) {
    if (!m_is_over_time) {
        ShowPoints(history);
        return;
    }
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        m_lines[i]->ShowHistory(history.y[i], history.lines);
    }
}

void GraphCurves::ShowPoints(const ShownHistory& history) {
    LineRange lines = history.lines;
    lines.begin = std::max(lines.begin, lines.end - ShownHistory::kMostPoints);
    std::vector<History*> streams = history.y;
    streams.push_back(history.x);
    if (!m_past_points.Read(streams, lines)) {
        return;
    }
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        m_lines[i]->ShowPoints(m_past_points.Values(m_lines.size()), m_past_points.Values(i));
    }
}

void GraphCurves::ShowLive() {
    m_past_points = {};
    for (const auto& line : m_lines) {
        line->ShowLive();
    }
}

bool GraphCurves::IsExact() const {
    return m_past_points.IsComplete() &&
           std::ranges::all_of(m_lines, [](const auto& line) { return line->IsExact(); });
}

void GraphCurves::KeepWindows() {
    for (const auto& line : m_lines) {
        line->KeepWindow();
    }
}

double GraphCurves::HeldTime() const {
    return m_lines.empty() ? 0.0
                           : static_cast<double>(m_lines.front()->HeldSamples()) * m_cycle_time;
}

std::vector<GraphFrame::Curve> GraphCurves::OfFrame() const {
    std::vector<GraphFrame::Curve> curves;
    curves.reserve(m_lines.size());
    for (const auto& line : m_lines) {
        curves.push_back({line->YLines(), ToQColor(line->Color()), line->ShownColor()});
    }
    return curves;
}

}  // namespace wavo
