// The drawing step of a graph, in its order: take values, test the trigger, adapt the scales, draw
// frame and texts, draw the curves.
#include "graph/draw/graph_draw.h"

#include "graph/draw/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

void GraphDraw::DrawGraph(QImage& picture, bool restart, PixelWriting pixels) {
    if (m_frame.FitToDevice(picture.devicePixelRatioF())) {
        FollowFrame();
    }
    if (restart || m_recorder.IsRestartAsked()) {
        Restart();
    }
    MTRACE(4, draw_texts::kTakingValues);
    TakeValues();
    MTRACE(4, draw_texts::kValuesTaken);
    MTRACE(4, draw_texts::kTestingTrigger);
    if (!m_history.has_value()) {
        TestTriggers();
    }
    MTRACE(4, draw_texts::kTriggerTested);
    m_recorder.LeaveOutUnderived();
    CheckScales();
    if (Lines().empty()) {
        MERRLOG(draw_texts::kBadLineCount);
    }
    PlotCanvas* const canvas = pixels == PixelWriting::kNow ? BeginPicture(picture) : nullptr;
    MTRACE(4, draw_texts::kDrawingGraph);
    ReportDifferentSizes();
    if (canvas != nullptr && m_back.Show(m_host.BehindOf(*this))) {
        m_curves.AddAndDraw(m_recorder, nullptr);
        m_back.Draw(Lines(), Places(), *canvas);
        m_curves.Draw(canvas);
    } else {
        m_curves.AddAndDraw(m_recorder, canvas);
    }
    if (pixels == PixelWriting::kNow) {
        m_canvas.End();
    }
    MTRACE(4, draw_texts::kGraphDrawn);
}

void GraphDraw::Paint(QImage& picture) {
    if (m_frame.FitToDevice(picture.devicePixelRatioF())) {
        FollowFrame();
    }
    PlotCanvas* const canvas = BeginPicture(picture);
    if (canvas != nullptr && m_back.Show(m_host.BehindOf(*this))) {
        m_back.Draw(Lines(), Places(), *canvas);
    }
    m_curves.Draw(canvas);
    m_canvas.End();
}

PlotCanvas* GraphDraw::BeginPicture(QImage& picture) {
    if (m_frame.Draw(picture, {DisplayedWindow(), m_recorder.State(), m_curves.ShownXScale(),
                               m_curves.OfFrame()})) {
        m_canvas.Forget();
    }
    m_canvas.Begin(picture, m_frame.Image(), m_frame.Origin(), m_frame.DevicePlotArea());
    return m_frame.PlotArea().isEmpty() ? nullptr : &m_canvas;
}

void GraphDraw::Restart() {
    m_curves.Empty();
    m_recorder.Restart();
    m_zoom.Leave();
    ShowFullScale();
}

void GraphDraw::ReportDifferentSizes() const {
    if (Lines().size() != m_recorder.BuffersGiven()) {
        MERRLOG(draw_texts::kStreamsMissing);
    }
}

void GraphDraw::TakeValues() {
    m_zoom.BeginStep();
    m_recorder.Discard();
    if (IsTimeGraph() && !Lines().empty()) {
        (void)Lines().front()->GetXTimeRange();  // reports a scale that is no time range
    }
    if (m_history.has_value()) {
        ShowPast();
    } else if (m_zoom.IsShown()) {
        const StreamRows rows = m_recorder.Rows();
        if (m_zoom.TakeWindow(m_recorder, rows, m_curves.HeldTime())) {
            m_curves.ShowWindow(m_zoom, m_recorder, rows);
            ShowScale(m_zoom.State().Length());
        }
        m_recorder.LeaveTriggers();
    } else if (m_recorder.TakeNewest()) {
        ShowFullScale();
        m_curves.EmptyAttached(m_recorder);
    }
    ReportDifferentSizes();
}

void GraphDraw::ShowPast() {
    if (IsTimeGraph()) {
        ShowScale(static_cast<double>(m_history->lines.Count() - 1) * m_recorder.CycleTime());
    }
    m_curves.ShowHistory(*m_history);
}

void GraphDraw::TestTriggers() {
    switch (m_recorder.TestTriggers()) {
        case TriggerEvent::kNone:
            break;
        case TriggerEvent::kStarted:
            m_curves.Empty();
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
    if (!m_history.has_value()) {
        m_curves.CheckScales(m_recorder, m_zoom.IsTaken());
    }
    if (!IsTimeGraph() && !Lines().empty()) {
        FillScaleLines();
        m_graph.UpdateGuidingCircles();
    }
}

}  // namespace wavo
