#include "graph/draw/graph_places.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "graph/draw/curve/sweep.h"
#include "graph/draw/graph_draw.h"
#include "graph/values/line_log.h"
#include "support/to_count.h"

namespace wavo {

namespace {

/// The sequence of a line among runs; nothing when none has it.
std::optional<std::uint64_t> SequenceOf(const std::vector<LineLog::Run>& runs, std::int64_t line) {
    const auto run = std::find_if(runs.begin(), runs.end(), [line](const LineLog::Run& each) {
        return each.line <= line && line - each.line < static_cast<std::int64_t>(each.count);
    });
    return run == runs.end()
               ? std::nullopt
               : std::optional(run->sequence + static_cast<std::uint64_t>(line - run->line));
}

/// The line of a sequence among runs; nothing when none has it.
std::optional<std::int64_t> LineOf(const std::vector<LineLog::Run>& runs, std::uint64_t sequence) {
    const auto run = std::find_if(runs.begin(), runs.end(), [sequence](const LineLog::Run& each) {
        return each.sequence <= sequence && sequence - each.sequence < each.count;
    });
    return run == runs.end()
               ? std::nullopt
               : std::optional(run->line + static_cast<std::int64_t>(sequence - run->sequence));
}

}  // namespace

double GraphPlaces::TimeAt(int x) const {
    return m_graph.Graph().XCoorType != CoorType::kAxis ? m_graph.Frame().XValueAt(x) : -1.0;
}

std::optional<int> GraphPlaces::PixelAt(double time) const {
    const bool is_over_time = m_graph.Graph().XCoorType != CoorType::kAxis;
    return is_over_time ? m_graph.Frame().PixelOfX(time) : std::nullopt;
}

TimeWindow GraphPlaces::ZoomSpanOf(const TimeWindow& marked) const {
    const WavoGraph& graph = m_graph.Graph();
    if (graph.XCoorType == CoorType::kAxis || graph.Mode == GraphMode::kContinuity ||
        m_graph.Zoom().active || m_graph.Past().has_value() || m_graph.Lines().empty()) {
        return marked;
    }
    const LinesDrawAxis& line = *m_graph.Lines().front();  // all curves sweep together
    const GraphRecorder& recorder = m_graph.Recorder();
    const std::optional<TimeWindow> shown =
        StretchOfPlaces(line.OverTime()->Runs(), recorder.CycleTime(), marked);
    if (!shown.has_value()) {
        return marked;
    }
    double oldest = 0.0;  // of the curve, where SetZoomRange counts from
    if (!m_graph.ShowsRecording()) {
        const StreamRows rows = recorder.Rows();
        oldest = (static_cast<double>(rows.Count()) - static_cast<double>(line.Size())) *
                     recorder.CycleTime() -
                 TimeBeforeSpan(recorder, rows);
    }
    const TimeWindow span{std::max(0.0, shown->start + oldest), shown->end + oldest};
    return span.end > span.start ? span : marked;
}

const TimeCurve* GraphPlaces::AnyCurve() const {
    for (const auto& line : m_graph.Lines()) {
        if (line->OverTime() != nullptr && line->OverTime()->Size() > 0) {
            return line->OverTime();
        }
    }
    return nullptr;
}

std::vector<LineLog::Run> GraphPlaces::WindowLines() const {
    const GraphZoom& zoom = m_graph.ZoomWindow();
    if (!zoom.IsTaken()) {
        return {};  // the buffers have gone, or the window comes with the next step
    }
    return m_graph.Recorder().Rows().LinesOf(zoom.Rows().position, zoom.Rows().count);
}

std::uint64_t GraphPlaces::FirstRow(const TimeCurve& curve) const {
    const std::uint64_t taken = m_graph.Recorder().TakenRows();
    return taken - std::min(taken, curve.HeldSamples()) + curve.Stretch().position;
}

std::vector<LineLog::Run> GraphPlaces::CurveLines(const TimeCurve& curve) const {
    const std::uint64_t first = FirstRow(curve);
    return m_graph.Recorder().TakenLines().Runs(first, first + curve.Stretch().count);
}

std::optional<std::int64_t> GraphPlaces::LineAt(double time) const {
    if (m_graph.Past().has_value()) {
        const LineRange& lines = m_graph.Past()->lines;
        const double line = std::round(time / m_graph.Recorder().CycleTime());
        return line >= 0.0 && line < static_cast<double>(lines.Count())
                   ? std::optional(lines.begin + static_cast<std::int64_t>(line))
                   : std::nullopt;
    }
    if (m_graph.ZoomWindow().IsOfBuffers()) {
        constexpr std::uint64_t kMost = std::uint64_t{1} << 62U;
        const std::uint64_t row = ToCount(time / m_graph.Recorder().CycleTime() + 0.5, kMost);
        return time >= 0.0 ? LineOf(WindowLines(), row) : std::nullopt;
    }
    const TimeCurve* const curve = AnyCurve();
    const std::optional<std::uint64_t> position =
        curve != nullptr ? curve->PositionAt(time) : std::nullopt;
    return position.has_value() ? LineOf(CurveLines(*curve), FirstRow(*curve) + *position)
                                : std::nullopt;
}

std::optional<double> GraphPlaces::TimeOf(std::int64_t line) const {
    if (m_graph.Past().has_value()) {
        const LineRange& lines = m_graph.Past()->lines;
        return line >= lines.begin && line < lines.end
                   ? std::optional(static_cast<double>(line - lines.begin) *
                                   m_graph.Recorder().CycleTime())
                   : std::nullopt;
    }
    if (m_graph.ZoomWindow().IsOfBuffers()) {
        const std::optional<std::uint64_t> row = SequenceOf(WindowLines(), line);
        return row.has_value()
                   ? std::optional(static_cast<double>(*row) * m_graph.Recorder().CycleTime())
                   : std::nullopt;
    }
    const TimeCurve* const curve = AnyCurve();
    const std::optional<std::uint64_t> row =
        curve != nullptr ? SequenceOf(CurveLines(*curve), line) : std::nullopt;
    return row.has_value() ? std::optional(curve->TimeAt(*row - FirstRow(*curve))) : std::nullopt;
}

std::optional<double> GraphPlaces::TimeOfLine(std::int64_t line) const {
    const double cycle_time = m_graph.Recorder().CycleTime();
    if (m_graph.Past().has_value()) {
        return static_cast<double>(line - m_graph.Past()->lines.begin) * cycle_time;
    }
    const TimeCurve* const curve = m_graph.ZoomWindow().IsOfBuffers() ? nullptr : AnyCurve();
    const std::vector<LineLog::Run> runs = curve != nullptr ? CurveLines(*curve) : WindowLines();
    if (runs.empty()) {
        return std::nullopt;
    }
    // Lines are missed in between: what comes next to the newest one is what counts.
    const LineLog::Run& newest = runs.back();
    const std::uint64_t row = newest.sequence + newest.count - 1;
    const std::int64_t behind = line - (newest.line + static_cast<std::int64_t>(newest.count) - 1);
    const double seen = curve != nullptr ? curve->TimeAt(row - FirstRow(*curve))
                                         : static_cast<double>(row) * cycle_time;
    return seen + static_cast<double>(behind) * cycle_time;
}

std::optional<double> GraphPlaces::PastValueAt(std::size_t axis, double time) const {
    History* const history = m_graph.Past()->y[axis];
    const std::optional<std::int64_t> line = LineAt(time);
    if (history == nullptr || !line.has_value()) {
        return std::nullopt;
    }
    double value = 0.0;
    history->Values(*line, {&value, 1});
    return std::isnan(value) ? std::nullopt : std::optional(value);
}

std::optional<double> GraphPlaces::ValueAt(std::size_t axis, double time) const {
    if (m_graph.Past().has_value()) {
        return PastValueAt(axis, time);
    }
    const TimeCurve* const curve = m_graph.Lines()[axis]->OverTime();
    const std::optional<std::uint64_t> position =
        curve != nullptr ? curve->PositionAt(time) : std::nullopt;
    if (!position.has_value()) {
        return std::nullopt;
    }
    const double value = curve->SampleAt(*position);
    return std::isnan(value) ? std::nullopt : std::optional(value);
}

}  // namespace wavo
