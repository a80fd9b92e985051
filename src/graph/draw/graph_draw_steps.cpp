// The drawing step of a graph, in its order: take values, test the trigger, adapt the scales, draw
// frame and texts, draw the curves.
#include "graph/draw/graph_draw.h"

#include <algorithm>
#include <optional>

#include "graph/draw/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

void GraphDraw::DrawGraph(QImage& picture, bool restart, PixelWriting pixels) {
    FitTo(picture);
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
    if (m_lines.empty()) {
        MERRLOG(draw_texts::kBadLineCount);
    }
    if (pixels == PixelWriting::kNow) {
        DrawFrame(picture);
    }
    MTRACE(4, draw_texts::kDrawingGraph);
    DrawGraphs(picture, pixels);
    MTRACE(4, draw_texts::kGraphDrawn);
}

void GraphDraw::FitTo(const QImage& picture) {
    if (m_frame.FitToDevice(picture.devicePixelRatioF())) {
        FollowFrame();
    }
}

void GraphDraw::Paint(QImage& picture) {
    FitTo(picture);
    DrawFrame(picture);
    PlotCanvas* const canvas = BeginCurves(picture);
    for (const auto& line : m_lines) {
        if (IsTimeGraph()) {
            line->DrawAllLinesXIsTime(kOwnColor, canvas);
        } else {
            line->DrawAllLinesXIsAx(kOwnColor, canvas);
        }
    }
    m_canvas.End();
}

void GraphDraw::Restart() {
    for (const auto& line : m_lines) {
        line->Empty();
    }
    m_recorder.Restart();
    m_zoom.Leave();
    ShowFullScale();
}

void GraphDraw::ReportDifferentSizes() const {
    if (m_lines.size() != m_recorder.BuffersGiven()) {
        MERRLOG(draw_texts::kStreamsMissing);
    }
}

void GraphDraw::TakeValues() {
    m_zoom.BeginStep();
    m_recorder.Discard();
    if (IsTimeGraph() && !m_lines.empty()) {
        (void)m_lines.front()->GetXTimeRange();  // reports a scale that is no time range
    }
    if (m_zoom.IsShown()) {
        ShowZoomWindow();
        m_recorder.LeaveTriggers();
    } else if (m_recorder.TakeNewest()) {
        Refill();
    }
    ReportDifferentSizes();
}

void GraphDraw::ShowZoomWindow() {
    const StreamRows rows = m_recorder.Rows();
    const double recorded =
        m_lines.empty() ? 0.0 : static_cast<double>(m_lines.front()->HeldSamples()) * m_cycle_time;
    if (!m_zoom.TakeWindow(m_recorder, rows, recorded)) {
        return;  // without buffers the curves keep what they show
    }
    const TimeWindow& held = m_zoom.HeldWindow();
    const SampleStretch& wanted = m_zoom.Rows();
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const GraphValue* const value = m_recorder.Taken(i).value;
        if (value == nullptr) {
            continue;
        }
        if (m_zoom.IsOfRecording()) {
            // The curve still holds the whole recording; its buffer may have run on.
            m_lines[i]->ShowOwnWindow(held.start, held.end);
        } else {
            // The curve looks at the buffer's own samples: a window costs nothing per sample.
            m_lines[i]->ShowWindow(value->Values(), rows.Parts(i, wanted.position, wanted.count));
        }
    }
    ShowScale(m_zoom.State().Length());
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
    m_zoom.ShowAll();
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
        if (m_zoom.IsTaken() && m_recorder.Taken(i).value != nullptr) {
            continue;  // the scale was fitted to the window
        }
        m_lines[i]->CheckYScaleValue(m_recorder.Taken(i).values);
        if (!IsTimeGraph()) {
            m_lines[i]->CheckXScaleValue(m_recorder.Taken(m_recorder.Axes()).values);
            FillScaleLines();
            m_graph.UpdateGuidingCircles();
        }
    }
}

void GraphDraw::DrawFrame(QImage& picture) {
    GraphFrame::Content content{m_zoom.Window(), m_recorder.State(), ShownXScale(), {}};
    for (const auto& line : m_lines) {
        content.curves.push_back({line->YLines(), ToQColor(line->Color()), line->ShownColor()});
    }
    if (m_frame.Draw(picture, content)) {
        m_canvas.Forget();
    }
}

PlotCanvas* GraphDraw::BeginCurves(QImage& picture) {
    m_canvas.Begin(picture, m_frame.Image(), m_frame.Origin(), m_frame.DevicePlotArea());
    return m_frame.PlotArea().isEmpty() ? nullptr : &m_canvas;
}

void GraphDraw::DrawGraphs(QImage& picture, PixelWriting pixels) {
    ReportDifferentSizes();
    const bool writes = pixels == PixelWriting::kNow;
    PlotCanvas* const canvas = writes ? BeginCurves(picture) : nullptr;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        AddAndDraw(i, canvas);
    }
    if (writes) {
        m_canvas.End();
    }
}

void GraphDraw::AddAndDraw(std::size_t axis, PlotCanvas* canvas) {
    LinesDrawAxis& line = *m_lines[axis];
    const TakenValues& taken = m_recorder.Taken(axis);
    if (!IsTimeGraph()) {
        line.DrawLinesXIsAx(m_recorder.Taken(m_recorder.Axes()).values, taken.values, canvas);
    } else if (taken.values.empty()) {
        line.DrawAllLinesXIsTime(kOwnColor, canvas);
    } else {
        line.DrawLinesXIsTime(taken.values, taken.start_time, canvas);
    }
}

}  // namespace wavo
