// The drawing step of a graph, in its order: take values, test the trigger, adapt the scales, draw
// frame and texts, draw the curves.
#include "graph/draw/graph_draw.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "graph/draw/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// Times closer than this are one time.
constexpr double kTimeTolerance = 1e-6;

constexpr std::uint64_t kAnyCount = std::numeric_limits<std::uint64_t>::max();

}  // namespace

void GraphDraw::DrawGraph(QImage& picture, bool restart) {
    FitToDevice(picture.devicePixelRatioF());
    if (restart || m_restart_flag) {
        Restart();
    }
    MTRACE(4, draw_texts::kTakingValues);
    TakeValues();
    MTRACE(4, draw_texts::kValuesTaken);
    MTRACE(4, draw_texts::kTestingTrigger);
    TestTriggerCondition();
    MTRACE(4, draw_texts::kTriggerTested);
    LeaveOutUnderived();
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
    if (m_run_state != RunState::kRunning) {
        m_run_state = m_restart_state;
    }
    m_elapsed = 0.0;
    m_zoom.active = false;
    m_zoom.first = true;
    m_recorded_section = false;
    if (m_restart_flag) {
        for (GraphValue* value : Values()) {
            value->Reset();
        }
        m_restart_flag = false;
    }
    ShowFullScale();
    MarkFullRefill();
}

void GraphDraw::MarkFullRefill() {
    for (DrawBuffer& buffer : m_buffers) {
        buffer.full_refill = true;
    }
    m_x_buffer.full_refill = true;
}

void GraphDraw::DiscardValues() {
    for (DrawBuffer& buffer : m_buffers) {
        buffer.Discard();
    }
    m_x_buffer.Discard();
}

void GraphDraw::ReportDifferentSizes() const {
    if (m_lines.size() != m_stream_count) {
        MERRLOG(draw_texts::kStreamsMissing);
    }
}

void GraphDraw::TakeValues() {
    m_window_taken = false;
    DiscardValues();
    if (IsTimeGraph() && !m_lines.empty()) {
        (void)m_lines.front()->GetXTimeRange();  // reports a scale that is no time range
    }
    if (Zoomed()) {
        TakeZoomWindow();
        MarkFullRefill();
        if (m_run_state == RunState::kStoppedAfterStart ||
            m_run_state == RunState::kStoppedAfterStop) {
            StopValues();
        }
        m_run_state = RunState::kRunning;
    } else {
        TakeSpanOrNew();
    }
    ReportDifferentSizes();
}

void GraphDraw::TakeZoomWindow() {
    const StreamRows rows = Rows();
    const double before = m_recorded_section ? 0.0 : TimeBeforeDisplay(rows);
    const TimeWindow window = WindowInRows(before);
    for (std::size_t i = 0; i < m_buffers.size(); ++i) {
        GraphValue* const value = m_buffers[i].value;
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

void GraphDraw::TakeSpanOrNew() {
    const StreamRows rows = Rows();
    const bool refill = std::any_of(m_buffers.begin(), m_buffers.end(), [](const DrawBuffer& b) {
        return b.value != nullptr && b.full_refill;
    });
    if (refill) {
        Refill(rows);
    } else {
        TakeNew(rows);
    }
}

void GraphDraw::Refill(const StreamRows& rows) {
    ShowFullScale();
    for (std::size_t i = 0; i < m_buffers.size(); ++i) {
        if (m_buffers[i].value != nullptr) {
            m_lines[i]->Empty();
            m_buffers[i].full_refill = false;
        }
    }
    m_x_buffer.full_refill = m_x_buffer.full_refill && m_x_buffer.value == nullptr;
    TakeRows(rows, RowsOfSpan(rows));
}

void GraphDraw::TakeNew(const StreamRows& rows) {
    const std::uint64_t first = rows.FirstNew();
    if (!rows.NewValuesAreEven()) {
        TakeRows(rows, {first, rows.Count() - first});
    } else {
        for (std::size_t i = 0; i <= m_buffers.size(); ++i) {
            DrawBuffer& buffer = BufferOf(i);
            if (buffer.value != nullptr) {
                buffer.value->GetNewValues(buffer.values, buffer.start_time);
                buffer.underived = rows.Underived(i, first, buffer.values.size());
            }
        }
    }
    // A stream that is younger than others goes on where they do.
    const double start = rows.StartOfNew();
    for (DrawBuffer& buffer : m_buffers) {
        buffer.start_time = start;
    }
    m_x_buffer.start_time = start;
}

void GraphDraw::LeaveOutUnderived() {
    for (std::size_t i = 0; i <= m_buffers.size(); ++i) {
        BufferOf(i).LeaveOutUnderived();
    }
}

bool GraphDraw::IsTrigger(std::uint64_t& index) const {
    for (const TriggerData& trigger : m_TriggerData) {
        if (trigger.pTestTriggerEvent == nullptr) {
            MERRLOG(draw_texts::kTriggerWithoutTest);
            continue;
        }
        const double limit = m_graph.Triggers[trigger.axis].TriggerValue;
        if (trigger.pTestTriggerEvent(m_buffers[trigger.axis].values, index, limit)) {
            return true;
        }
    }
    return false;
}

void GraphDraw::TestTriggerCondition() {
    switch (m_run_state) {
        case RunState::kRunning:
            break;
        case RunState::kWaitingForStart:
            StepWaitingForStart();
            break;
        case RunState::kRunningAfterStart:
            StepRunningAfterStart();
            break;
        case RunState::kWaitingForStop:
            StepWaitingForStop();
            break;
        case RunState::kStoppedAfterStart:
        case RunState::kStoppedAfterStop:
            StepStopped();
            break;
    }
}

void GraphDraw::StepWaitingForStart() {
    std::uint64_t index = 0;
    if (!IsTrigger(index)) {
        DiscardValues();
        return;
    }
    const auto drop_before = [index](DrawBuffer& buffer) {
        if (buffer.values.size() > 1) {
            buffer.DropFront(index);
            buffer.start_time = 0.0;
        }
    };
    for (std::size_t i = 0; i < m_buffers.size(); ++i) {
        drop_before(m_buffers[i]);
        m_lines[i]->Empty();
    }
    m_run_state = RunState::kRunningAfterStart;
    m_elapsed = 0.0;
    if (!IsTimeGraph()) {
        drop_before(m_x_buffer);
        m_graph.XScale.TimeRange = m_graph.FadeOutTime;
    }
}

void GraphDraw::StepRunningAfterStart() {
    if (m_buffers.empty()) {
        return;
    }
    m_elapsed += static_cast<double>(m_buffers.front().values.size()) * m_cycle_time;
    const bool over_time = m_graph.XScale.ScaleType == ScaleTypeCode::kTime;
    const double range = over_time ? m_graph.XScale.TimeRange : m_graph.FadeOutTime;
    if (m_elapsed < range - kTimeTolerance) {
        return;
    }
    if (over_time) {
        const std::uint64_t beyond = ToCount((m_elapsed - range) / m_cycle_time + 0.5, kAnyCount);
        const auto cut = [beyond](DrawBuffer& buffer) {
            if (buffer.values.size() >= beyond) {
                buffer.DropBack(beyond);
            }
        };
        std::for_each(m_buffers.begin(), m_buffers.end(), cut);
        cut(m_x_buffer);
    }
    m_run_state = RunState::kStoppedAfterStart;
    m_host.RecordingEnded();
}

void GraphDraw::StepWaitingForStop() {
    std::uint64_t index = 0;
    if (!IsTrigger(index)) {
        return;
    }
    m_run_state = RunState::kStoppedAfterStop;
    const auto keep_up_to = [index](DrawBuffer& buffer) {
        const std::uint64_t size = buffer.values.size();
        buffer.DropBack(size > index ? size - index - 1 : 0);
    };
    std::for_each(m_buffers.begin(), m_buffers.end(), keep_up_to);
    keep_up_to(m_x_buffer);
    StopValues();
}

void GraphDraw::StepStopped() {
    StopValues();
    DiscardValues();
}

void GraphDraw::StopValues() {
    for (GraphValue* value : Values()) {
        value->SetEnabled(false);
    }
}

void GraphDraw::CheckScales() {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        if (m_window_taken && m_buffers[i].value != nullptr) {
            continue;  // the scale was fitted to the window
        }
        m_lines[i]->CheckYScaleValue(m_buffers[i].values);
        if (!IsTimeGraph()) {
            m_lines[i]->CheckXScaleValue(m_x_buffer.values);
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
        DrawLine(*m_lines[i], m_buffers[i], canvas);
    }
    m_canvas.End();
}

void GraphDraw::DrawLine(LinesDrawAxis& line, const DrawBuffer& buffer, PlotCanvas* canvas) {
    if (!IsTimeGraph()) {
        line.DrawLinesXIsAx(m_x_buffer.values, buffer.values, canvas);
    } else if (buffer.values.empty()) {
        line.DrawAllLinesXIsTime(kOwnColor, canvas);
    } else {
        line.DrawLinesXIsTime(buffer.values, buffer.start_time, canvas);
    }
}

}  // namespace wavo
