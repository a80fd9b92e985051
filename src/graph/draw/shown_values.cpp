#include "graph/draw/shown_values.h"

#include <algorithm>

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

bool ShownValues::AreOfBuffers() const {
    return !IsStopped(m_graph.State()) && !m_graph.ZoomWindow().IsOfRecording();
}

std::optional<std::size_t> ShownValues::StreamOf(const std::string& axis_name) const {
    const WavoGraph& graph = m_graph.Graph();
    const auto& names = graph.YCoorAxName;
    const auto found = std::find(names.begin(), names.end(), axis_name);
    if (found != names.end()) {
        return static_cast<std::size_t>(found - names.begin());
    }
    if (graph.XCoorType == CoorType::kAxis && axis_name == graph.XCoorAxName) {
        return m_graph.Recorder().Axes();
    }
    MERRLOG(draw_texts::kUnknownAxis, axis_name.c_str());
    return std::nullopt;
}

void ShownValues::CurveValues(std::size_t stream, std::vector<double>& values) const {
    if (stream < m_graph.Lines().size()) {
        m_graph.Lines()[stream]->GetYValues(values);
    } else if (!m_graph.Lines().empty()) {
        m_graph.Lines().front()->GetXValues(values);
    }
}

void ShownValues::PastValues(std::size_t stream, std::vector<double>& values) const {
    const ShownHistory& past = *m_graph.Past();
    LineRange lines = past.lines;
    if (m_graph.Graph().XCoorType == CoorType::kAxis) {
        lines.begin = std::max(lines.begin, lines.end - ShownHistory::kMostPoints);
    }
    values.assign(static_cast<std::size_t>(lines.Count()), NoSample());
    if (History* const history = stream < past.y.size() ? past.y[stream] : past.x) {
        history->Values(lines.begin, values);
    }
}

bool ShownValues::Of(const std::string& axis_name, std::vector<double>& values) const {
    values.clear();
    const std::optional<std::size_t> stream = StreamOf(axis_name);
    if (!stream.has_value()) {
        return false;
    }
    const GraphValue* const value = m_graph.Recorder().Taken(*stream).value;
    if (m_graph.Past().has_value()) {
        PastValues(*stream, values);
    } else if (!m_graph.ZoomWindow().IsShown() && AreOfBuffers() && value != nullptr) {
        double start_time = 0.0;
        value->GetTimeRangeValues(values, GraphTimeRange(m_graph.Graph()), start_time);
    } else {
        CurveValues(*stream, values);
    }
    return true;
}

void ShownValues::RowsOf(const std::vector<std::string>& axis_names,
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
        return m_graph.Recorder().Taken(stream).value != nullptr;
    });
    if (m_graph.Past().has_value()) {
        for (std::size_t i = 0; i < streams.size(); ++i) {
            PastValues(streams[i], columns[i]);
        }
    } else if (attached && AreOfBuffers() &&
               m_graph.ZoomWindow().IsShown() == m_graph.ZoomWindow().IsTaken()) {
        const StreamRows rows = m_graph.Recorder().Rows();
        const SampleStretch shown = m_graph.ZoomWindow().IsShown()
                                        ? m_graph.ZoomWindow().Rows()
                                        : RowsOfSpan(m_graph.Recorder(), rows);
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
        if (m_graph.ZoomWindow().IsShown()) {
            column.resize(common);
        } else {
            column.erase(column.begin(), column.begin() + surplus);
        }
    }
    KeepFullRows(columns);
}

}  // namespace wavo
