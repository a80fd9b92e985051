// The drawing step of a graph, in its order: take values, test the trigger, adapt the scales, draw
// frame and texts, draw the curves.
#include "graph/draw/graph_draw.h"

#include <algorithm>
#include <optional>

#include "graph/draw/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

void GraphDraw::DrawGraph(QImage& picture, bool restart) {
    FitToDevice(picture.devicePixelRatioF());
    if (restart || m_recorder.IsRestartAsked()) {
        Restart();
    }
    MTRACE(4, draw_texts::kTakingValues);
    TakeValues();
    MTRACE(4, draw_texts::kValuesTaken);
    MTRACE(4, draw_texts::kTestingTrigger);
    TestTriggers();
    MTRACE(4, draw_texts::kTriggerTested);
    m_recorder.LeaveOutUnderived();
    CheckScales();
    DrawFrame(picture);
    MTRACE(4, draw_texts::kDrawingGraph);
    DrawGraphs(picture);
    MTRACE(4, draw_texts::kGraphDrawn);
}

void GraphDraw::Restart() {
    for (const auto& line : m_lines) {
        line->Empty();
    }
    m_recorder.Restart();
    m_zoom.active = false;
    m_zoom.first = true;
    m_recorded_section = false;
    ShowFullScale();
}

void GraphDraw::ReportDifferentSizes() const {
    if (m_lines.size() != m_recorder.BuffersGiven()) {
        MERRLOG(draw_texts::kStreamsMissing);
    }
}

void GraphDraw::TakeValues() {
    m_window_taken = false;
    m_recorder.Discard();
    if (IsTimeGraph() && !m_lines.empty()) {
        (void)m_lines.front()->GetXTimeRange();  // reports a scale that is no time range
    }
    if (Zoomed()) {
        TakeZoomWindow();
        m_recorder.LeaveTriggers();
    } else if (m_recorder.TakeNewest()) {
        Refill();
    }
    ReportDifferentSizes();
}

void GraphDraw::TakeZoomWindow() {
    const StreamRows rows = m_recorder.Rows();
    const double before = m_recorded_section ? 0.0 : m_recorder.TimeBeforeSpan(rows);
    const TimeWindow window = WindowInRows(before);
    for (std::size_t i = 0; i < m_recorder.Axes(); ++i) {
        GraphValue* const value = m_recorder.Taken(i).value;
        if (value == nullptr) {
            continue;
        }
        if (m_recorded_section) {
            // The curve still holds the whole recording; its buffer may have run on.
            m_lines[i]->ShowOwnWindow(window.start, window.end);
            m_window_taken = true;
            continue;
        }
        if (!m_window_taken) {
            // A window may reach beyond the newest sample while the buffers are not full.
            const std::uint64_t count = rows.AreEven() ? value->StoredCount() : rows.Count();
            const double held = static_cast<double>(count) * m_cycle_time;
            std::optional<SampleStretch> found;
            if (window.start < held) {
                found = value->FindDefineTimeRange(window.start, std::min(window.end, held),
                                                   value->LatestTime(), rows.Count());
            }
            m_window_rows = found.value_or(SampleStretch());
            m_window_taken = true;
        }
        // The curve looks at the buffer's own samples: a window costs nothing per sample.
        m_lines[i]->ShowWindow(value->Values(),
                               rows.Parts(i, m_window_rows.position, m_window_rows.count));
    }
    if (m_window_taken) {  // without buffers the curves keep what they show
        m_window = {window.start - before, window.end - before};
        ShowScale(m_zoom.end - m_zoom.start);
    }
}

void GraphDraw::ShowScale(double time_range) {
    if (m_shown_x_scale.TimeRange == time_range &&
        m_shown_x_scale.ScaleType == m_graph.XScale.ScaleType) {
        return;
    }
    m_shown_x_scale = m_graph.XScale;
    m_shown_x_scale.TimeRange = time_range;
    FillScaleLines();
    for (const auto& line : m_lines) {
        line->XScaleChanged();
    }
}

void GraphDraw::ShowFullScale() {
    m_window = {};
    if (IsTimeGraph()) {
        ShowScale(m_graph.XScale.TimeRange);
    }
}

void GraphDraw::Refill() {
    ShowFullScale();
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        if (m_recorder.Taken(i).value != nullptr) {
            m_lines[i]->Empty();
        }
    }
}

void GraphDraw::TestTriggers() {
    switch (m_recorder.TestTriggers()) {
        case TriggerEvent::kNone:
            break;
        case TriggerEvent::kStarted:
            for (const auto& line : m_lines) {
                line->Empty();
            }
            if (!IsTimeGraph()) {
                m_graph.XScale.TimeRange = m_graph.FadeOutTime;
            }
            break;
        case TriggerEvent::kEnded:
            m_host.RecordingEnded();
            break;
    }
}

void GraphDraw::CheckScales() {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        if (m_window_taken && m_recorder.Taken(i).value != nullptr) {
            continue;  // the scale was fitted to the window
        }
        m_lines[i]->CheckYScaleValue(m_recorder.Taken(i).values);
        if (!IsTimeGraph()) {
            m_lines[i]->CheckXScaleValue(m_recorder.TakenX().values);
            FillScaleLines();
            m_graph.UpdateGuidingCircles();
        }
    }
}

void GraphDraw::DrawGraphs(QImage& picture) {
    ReportDifferentSizes();
    m_canvas.Begin(picture, m_frame, m_frame_rectangle.topLeft(), m_device_plot);
    PlotCanvas* const canvas = m_layout.plot.isEmpty() ? nullptr : &m_canvas;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        AddAndDraw(i, canvas);
    }
    m_canvas.End();
}

void GraphDraw::AddAndDraw(std::size_t axis, PlotCanvas* canvas) {
    LinesDrawAxis& line = *m_lines[axis];
    const TakenValues& taken = m_recorder.Taken(axis);
    if (!IsTimeGraph()) {
        line.DrawLinesXIsAx(m_recorder.TakenX().values, taken.values, canvas);
    } else if (taken.values.empty()) {
        line.DrawAllLinesXIsTime(kOwnColor, canvas);
    } else {
        line.DrawLinesXIsTime(taken.values, taken.start_time, canvas);
    }
}

}  // namespace wavo
