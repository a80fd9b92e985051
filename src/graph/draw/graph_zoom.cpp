#include "graph/draw/graph_zoom.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "graph/draw/graph_draw.h"
#include "graph/draw/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// A zoom shorter than this, seconds, shows nothing.
constexpr double kSmallestZoom = 0.0001;

}  // namespace

GraphZoom::GraphZoom(const WavoGraph& graph, double cycle_time)
    : m_graph(graph), m_cycle_time(cycle_time) {
    m_state.definition = graph;
}

void GraphZoom::Set(double start, double end, bool of_recording) {
    if (start > end || !std::isfinite(start) || !std::isfinite(end)) {
        MERRLOG(draw_texts::kBadZoomTime);
        m_state.active = false;
        return;
    }
    if (end - start < kSmallestZoom) {
        MERRLOG(draw_texts::kZoomTooSmall);
        return;
    }
    if (m_state.first) {
        m_state.first = false;
        m_state.offset = 0.0;
    } else if (m_state.offset == 0.0) {
        m_state.offset = m_state.start;
    } else {
        m_state.offset += m_state.start;
    }
    if (!m_state.active) {
        m_of_recording = of_recording;
    }
    m_state.start = start;
    m_state.end = end;
    m_state.graph_number = m_graph.GraphNumber;
    m_state.active = true;
    m_state.definition = m_graph;
}

void GraphZoom::Restore(const ZoomState& zoom) {
    m_state = zoom;
    m_window = {};
}

void GraphZoom::Leave() {
    m_state.active = false;
    m_state.first = true;
    m_of_recording = false;
    m_window = {};
}

bool GraphZoom::TakeWindow(const GraphRecorder& recorder, const StreamRows& rows, double recorded) {
    GraphValue* first = nullptr;
    for (std::size_t i = 0; i < recorder.Axes() && first == nullptr; ++i) {
        first = recorder.Taken(i).value;
    }
    if (first == nullptr) {
        return false;
    }
    const double before = m_of_recording ? 0.0 : TimeBeforeSpan(recorder, rows);
    const double longest = LongestRange(recorder);
    // The batch that the trigger fired in is recorded besides the range.
    m_held = WindowIn(before, m_of_recording ? std::max(longest, recorded) : longest);
    if (!m_of_recording) {
        m_rows = RowsOf(*first, rows);
    }
    m_window = {m_held.start - before, m_held.end - before};
    m_taken = true;
    return true;
}

TimeWindow GraphZoom::WindowIn(double before, double longest) const {
    TimeWindow window{m_state.offset + m_state.start + before,
                      m_state.offset + m_state.end + before};
    if (window.end > longest) {
        window = {longest - m_state.Length(), longest};
    }
    if (window.start < 0.0) {
        window = {0.0, m_state.Length()};
    }
    return window;
}

SampleStretch GraphZoom::RowsOf(GraphValue& value, const StreamRows& rows) const {
    // A window may reach beyond the newest sample while the buffers are not full.
    const std::uint64_t count = rows.AreEven() ? value.StoredCount() : rows.Count();
    const double held = static_cast<double>(count) * m_cycle_time;
    if (m_held.start >= held) {
        return {};
    }
    return value
        .FindDefineTimeRange(m_held.start, std::min(m_held.end, held), value.LatestTime(),
                             rows.Count())
        .value_or(SampleStretch());
}

void GraphZooms::Zoom(const std::vector<GraphDraw*>& graphs, const TimeWindow& span) {
    for (GraphDraw* const graph : graphs) {
        ZoomState before = graph->Zoom();
        before.definition = graph->Graph();
        graph->SetZoomRange(span.start, span.end);
        const ZoomState& now = graph->Zoom();
        if (!now.active || now.start != span.start || now.end != span.end) {
            continue;
        }
        for (GraphValue* const value : graph->Recorder().Values()) {
            value->MarkFirstRangeRequest();
        }
        m_entries.push_back({graph->Graph().GraphNumber, before});
    }
}

bool GraphZooms::StepBack(GraphDraw& graph) {
    const auto last = std::find_if(m_entries.rbegin(), m_entries.rend(), [&](const Entry& entry) {
        return entry.graph_number == graph.Graph().GraphNumber;
    });
    if (last == m_entries.rend()) {
        return false;
    }
    graph.RestoreZoom(last->before);
    m_entries.erase(std::next(last).base());
    return true;
}

void GraphZooms::StepBack(const std::vector<GraphDraw*>& graphs) {
    for (GraphDraw* const graph : graphs) {
        StepBack(*graph);
    }
}

void GraphZooms::LeaveAll(const std::vector<GraphDraw*>& graphs) {
    for (GraphDraw* const graph : graphs) {
        while (StepBack(*graph)) {
        }
    }
}

}  // namespace wavo
