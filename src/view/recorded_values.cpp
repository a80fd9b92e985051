#include "view/recorded_values.h"

#include <algorithm>

#include "graph/values/missing_value.h"

namespace wavo {

namespace {

/// Points that each curve of a graph holds.
std::uint64_t HeldPoints(const GraphDraw& graph) {
    if (graph.Lines().empty()) {
        return 0;
    }
    const LinesDrawAxis& line = *graph.Lines().front();
    return line.OverTime() != nullptr ? line.HeldSamples() : line.Size();
}

LineRange RangeOf(const std::vector<LineLog::Run>& runs) {
    if (runs.empty()) {
        return {};
    }
    return {runs.front().line, runs.back().line + static_cast<std::int64_t>(runs.back().count)};
}

}  // namespace

bool HoldsRecording(const GraphDraw& graph) {
    return graph.ShowsRecording() || graph.ZoomWindow().IsOfRecording();
}

std::vector<LineLog::Run> LinesOfCurves(const GraphDraw& graph) {
    const std::uint64_t taken = graph.Recorder().TakenRows();
    return graph.Recorder().TakenLines().Runs(taken - std::min(taken, HeldPoints(graph)), taken);
}

std::vector<LineLog::Run> LinesOfGraph(const GraphDraw& graph) {
    if (HoldsRecording(graph)) {
        return LinesOfCurves(graph);
    }
    const StreamRows rows = graph.Recorder().Rows();
    return rows.LinesOf(0, rows.Count());
}

LineRange RecordedValues::Lines() const {
    return RangeOf(LinesOfCurves(m_graph));
}

double RecordedValues::ValueOf(std::uint64_t place) const {
    const std::size_t axes = m_graph.Recorder().Axes();
    const LinesDrawAxis& line = *m_graph.Lines()[m_stream < axes ? m_stream : 0];
    if (line.OverTime() != nullptr) {
        return line.OverTime()->HeldSample(place);
    }
    const LinePoint point = line.Point(place);
    return m_stream < axes ? point.y_value : point.x_value;
}

bool RecordedValues::Read(std::int64_t first, std::span<double> values) {
    std::fill(values.begin(), values.end(), NoSample());
    const std::vector<LineLog::Run> runs = LinesOfCurves(m_graph);
    const std::int64_t end = first + static_cast<std::int64_t>(values.size());
    for (const LineLog::Run& run : runs) {
        const std::int64_t to = std::min(run.line + static_cast<std::int64_t>(run.count), end);
        for (std::int64_t line = std::max(run.line, first); line < to; ++line) {
            const auto row = run.sequence + static_cast<std::uint64_t>(line - run.line);
            values[static_cast<std::size_t>(line - first)] = ValueOf(row - runs.front().sequence);
        }
    }
    return true;
}

}  // namespace wavo
