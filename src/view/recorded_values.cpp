#include "view/recorded_values.h"

#include <algorithm>
#include <array>
#include <cmath>

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

/// The streams that a graph shows the past of.
std::vector<History*> StreamsOf(const ShownHistory& past) {
    std::vector<History*> streams = past.y;
    streams.push_back(past.x);
    std::erase(streams, nullptr);
    return streams;
}

LineLog::Run RunOf(const LineRange& lines) {
    return {0, lines.begin, static_cast<std::uint64_t>(lines.Count())};
}

/// The first line of a range, or the last, that has a value in a stream.
std::optional<std::int64_t> EndWithValue(History& stream, LineRange lines, bool is_first) {
    ColumnRow row;
    while (lines.Count() > 0) {
        const std::int64_t middle = lines.begin + lines.Count() / 2;
        stream.Columns(std::array{lines.begin, middle, lines.end}, row);
        const auto has_value = [&row](std::size_t column) {
            return row.minimum[column] <= row.maximum[column];
        };
        if (!has_value(0) && !has_value(1)) {
            return std::nullopt;
        }
        if (lines.Count() == 1) {
            return lines.begin;
        }
        const bool in_front = is_first ? has_value(0) : !has_value(1);
        lines = in_front ? LineRange{lines.begin, middle} : LineRange{middle, lines.end};
    }
    return std::nullopt;
}

}  // namespace

bool HoldsRecording(const GraphDraw& graph) {
    return graph.ShowsRecording() || graph.ZoomWindow().IsOfRecording();
}

std::vector<LineLog::Run> LinesOfCurves(const GraphDraw& graph) {
    const std::uint64_t taken = graph.Recorder().TakenRows();
    return graph.Recorder().TakenLines().Runs(taken - std::min(taken, HeldPoints(graph)), taken);
}

std::vector<LineLog::Run> LinesOfPoints(const GraphDraw& graph) {
    if (!graph.Past().has_value()) {
        return LinesOfCurves(graph);
    }
    const LineRange& lines = graph.Past()->lines;
    return {RunOf({std::max(lines.begin, lines.end - ShownHistory::kMostPoints), lines.end})};
}

bool ShowsOpenRecording(const GraphDraw& graph) {
    return graph.Past().has_value() && graph.Recorder().Values().empty();
}

std::vector<LineLog::Run> LinesOfGraph(const GraphDraw& graph) {
    if (ShowsOpenRecording(graph)) {
        std::optional<LineRange> all;
        for (const History* const stream : StreamsOf(*graph.Past())) {
            const LineRange lines = stream->Lines();
            all = all ? LineRange{std::min(all->begin, lines.begin), std::max(all->end, lines.end)}
                      : lines;
        }
        return all && all->Count() > 0 ? std::vector{RunOf(*all)} : std::vector<LineLog::Run>();
    }
    if (HoldsRecording(graph) && !graph.Past().has_value()) {
        return LinesOfCurves(graph);
    }
    const StreamRows rows = graph.Recorder().Rows();
    return rows.LinesOf(0, rows.Count());
}

LineRange ShownLines(const GraphDraw& graph) {
    if (graph.Past().has_value()) {
        return graph.Past()->lines;
    }
    const GraphRecorder& recorder = graph.Recorder();
    const GraphZoom& zoom = graph.ZoomWindow();
    if (zoom.IsOfBuffers()) {
        return zoom.IsTaken()
                   ? RangeOf(recorder.Rows().LinesOf(zoom.Rows().position, zoom.Rows().count))
                   : LineRange();
    }
    if (zoom.IsOfRecording()) {
        const double step = recorder.CycleTime();
        const auto first = graph.Places().LineAt(0.0);
        auto last = graph.Places().LineAt(graph.Zoom().Length() - step / 2);
        last = last ? last : graph.Places().LineAt(graph.Zoom().Length() - step);
        return first && last ? LineRange{*first, *last + 1} : LineRange();
    }
    // A sweep shows what came last, like any other curve.
    const std::uint64_t taken = recorder.TakenRows();
    std::uint64_t held = 0;
    for (const auto& line : graph.Lines()) {
        held = std::max<std::uint64_t>(held, line->Size());
    }
    return RangeOf(recorder.TakenLines().Runs(taken - std::min(taken, held), taken));
}

std::optional<std::int64_t> LineWithValue(const GraphDraw& graph, std::int64_t line,
                                          int direction) {
    std::optional<std::int64_t> before;
    std::optional<std::int64_t> behind;
    const auto streams = StreamsOf(*graph.Past());
    // Before any of them is searched: that may take long.
    for (History* const stream : streams) {
        double value = 0.0;
        stream->Values(line, {&value, 1});
        if (!std::isnan(value)) {
            return line;
        }
    }
    for (History* const stream : streams) {
        const LineRange lines = stream->Lines();
        const auto next = EndWithValue(*stream, {std::max(line, lines.begin), lines.end}, true);
        const auto last = EndWithValue(*stream, {lines.begin, std::min(line, lines.end)}, false);
        behind = next ? std::min(behind.value_or(*next), *next) : behind;
        before = last ? std::max(before.value_or(*last), *last) : before;
    }
    return direction > 0 ? (behind ? behind : before) : (before ? before : behind);
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
