// Which part of its streams a graph shows, and the values that it shows of them.
#include <algorithm>
#include <optional>

#include "graph/draw/curve/sweep.h"
#include "graph/draw/graph_draw.h"
#include "graph/draw/report_texts.h"
#include "graph/values/missing_value.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// Drops the rows that one of the columns has no sample of. REQUIRES: columns of one length.
void KeepFullRows(std::vector<std::vector<double>>& columns) {
    const std::size_t rows = columns.empty() ? 0 : columns.front().size();
    std::size_t kept = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        if (std::any_of(columns.begin(), columns.end(),
                        [row](const auto& column) { return IsNoSample(column[row]); })) {
            continue;
        }
        if (kept != row) {
            for (std::vector<double>& column : columns) {
                column[kept] = column[row];
            }
        }
        ++kept;
    }
    for (std::vector<double>& column : columns) {
        column.resize(kept);
    }
}

}  // namespace

bool GraphDraw::ShowsRecording() const {
    // While a graph waits again, its last recording may still be seen.
    const RunState state = m_recorder.State();
    return state == RunState::kRunningAfterStart || IsStopped(state) ||
           (state == RunState::kWaitingForStart && !m_lines.empty() && m_lines.front()->Size() > 0);
}

TimeWindow GraphDraw::ZoomSpanOf(const TimeWindow& marked) const {
    if (!IsTimeGraph() || m_zoom.State().active || m_graph.Mode == GraphMode::kContinuity ||
        m_lines.empty()) {
        return marked;
    }
    const LinesDrawAxis& line = *m_lines.front();  // all curves sweep together
    const std::optional<TimeWindow> shown =
        StretchOfPlaces(line.OverTime()->Runs(), m_cycle_time, marked);
    if (!shown.has_value()) {
        return marked;
    }
    double oldest = 0.0;  // of the curve, where SetZoomRange counts from
    if (!ShowsRecording()) {
        const StreamRows rows = m_recorder.Rows();
        oldest =
            (static_cast<double>(rows.Count()) - static_cast<double>(line.Size())) * m_cycle_time -
            m_recorder.TimeBeforeSpan(rows);
    }
    const TimeWindow span{std::max(0.0, shown->start + oldest), shown->end + oldest};
    return span.end > span.start ? span : marked;
}

bool GraphDraw::ShowsBuffers() const {
    return !IsStopped(m_recorder.State()) && !m_zoom.IsOfRecording();
}

std::optional<std::size_t> GraphDraw::StreamOf(const std::string& axis_name) const {
    const auto& names = m_graph.YCoorAxName;
    const auto found = std::find(names.begin(), names.end(), axis_name);
    if (found != names.end()) {
        return static_cast<std::size_t>(found - names.begin());
    }
    if (!IsTimeGraph() && axis_name == m_graph.XCoorAxName) {
        return m_recorder.Axes();
    }
    MERRLOG(draw_texts::kUnknownAxis, axis_name.c_str());
    return std::nullopt;
}

void GraphDraw::CurveValues(std::size_t stream, std::vector<double>& values) const {
    if (stream < m_lines.size()) {
        m_lines[stream]->GetYValues(values);
    } else if (!m_lines.empty()) {
        m_lines.front()->GetXValues(values);
    }
}

bool GraphDraw::GetAxValues(const std::string& axis_name, std::vector<double>& values) const {
    values.clear();
    const std::optional<std::size_t> stream = StreamOf(axis_name);
    if (!stream.has_value()) {
        return false;
    }
    const GraphValue* const value = m_recorder.Taken(*stream).value;
    if (!m_zoom.IsShown() && ShowsBuffers() && value != nullptr) {
        double start_time = 0.0;
        value->GetTimeRangeValues(values, GraphTimeRange(m_graph), start_time);
    } else {
        CurveValues(*stream, values);
    }
    return true;
}

void GraphDraw::GetAxRows(const std::vector<std::string>& axis_names,
                          std::vector<std::vector<double>>& columns) const {
    columns.assign(axis_names.size(), {});
    std::vector<std::size_t> streams;
    for (const std::string& name : axis_names) {
        if (const std::optional<std::size_t> stream = StreamOf(name)) {
            streams.push_back(*stream);
        }
    }
    if (streams.size() != axis_names.size()) {
        return;  // there is no line that all of them hold
    }
    const bool attached = std::all_of(streams.begin(), streams.end(), [this](std::size_t stream) {
        return m_recorder.Taken(stream).value != nullptr;
    });
    if (attached && ShowsBuffers() && m_zoom.IsShown() == m_zoom.IsTaken()) {
        const StreamRows rows = m_recorder.Rows();
        const SampleStretch shown = m_zoom.IsShown() ? m_zoom.Rows() : m_recorder.RowsOfSpan(rows);
        for (std::size_t i = 0; i < streams.size(); ++i) {
            CopyRows(rows, streams[i], shown, columns[i]);
        }
    } else {
        for (std::size_t i = 0; i < streams.size(); ++i) {
            CurveValues(streams[i], columns[i]);
        }
    }
    const auto shortest =
        std::min_element(columns.begin(), columns.end(),
                         [](const auto& a, const auto& b) { return a.size() < b.size(); });
    const std::size_t common = shortest == columns.end() ? 0 : shortest->size();
    for (std::vector<double>& column : columns) {
        // The rows of a window begin together, those of curves end together.
        const auto surplus = static_cast<std::ptrdiff_t>(column.size() - common);
        if (m_zoom.IsShown()) {
            column.resize(common);
        } else {
            column.erase(column.begin(), column.begin() + surplus);
        }
    }
    KeepFullRows(columns);
}

}  // namespace wavo
