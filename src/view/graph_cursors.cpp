#include "view/graph_cursors.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "view/recorded_values.h"

namespace wavo {

namespace {

using LineRuns = std::vector<LineLog::Run>;

constexpr double kFirstPlace = 1.0 / 3.0;
constexpr double kSecondPlace = 2.0 / 3.0;
constexpr double kTenthOfWindow = 0.1;

bool IsOverTime(const GraphDraw& graph) {
    return graph.Graph().XCoorType != CoorType::kAxis;
}

bool HasCurves(const GraphDraw& graph) {
    return !graph.Lines().empty() && !graph.PlotArea().isEmpty();
}

/// Seconds that the time axis shows. REQUIRES: HasCurves.
double ShownTime(const GraphDraw& graph) {
    return graph.Lines().front()->XLines().back().value;
}

/// Of a cursor's place, which may be the end of the axis.
double TimeAtPart(const GraphDraw& graph, double part) {
    const double shown = ShownTime(graph);
    return std::min(shown, part * shown);
}

/// The line of a row of the curves; nothing when none has it.
std::optional<std::int64_t> LineOfRow(const LineRuns& runs, std::uint64_t row) {
    for (const LineLog::Run& run : runs) {
        if (run.sequence <= row && row - run.sequence < run.count) {
            return run.line + static_cast<std::int64_t>(row - run.sequence);
        }
    }
    return std::nullopt;
}

bool Contains(const LineRuns& runs, std::int64_t line) {
    return std::any_of(runs.begin(), runs.end(), [line](const LineLog::Run& run) {
        return run.line <= line && line - run.line < static_cast<std::int64_t>(run.count);
    });
}

/// The line itself, else the next one that there is in a direction, else the last before it.
std::optional<std::int64_t> NearestLine(const LineRuns& runs, std::int64_t line, int direction) {
    std::optional<std::int64_t> before;
    std::optional<std::int64_t> behind;
    for (const LineLog::Run& run : runs) {
        const std::int64_t last = run.line + static_cast<std::int64_t>(run.count) - 1;
        if (run.line <= line && line <= last) {
            return line;
        }
        if (last < line) {
            before = last;
        } else if (!behind) {
            behind = run.line;
        }
    }
    return direction > 0 ? (behind ? behind : before) : (before ? before : behind);
}

QPointF ToLogical(const GraphDraw& graph, const LinePoint& point) {
    const double ratio = graph.Frame().DeviceRatio();
    return {std::floor(point.x / ratio), std::floor(point.y / ratio)};
}

bool IsPoint(const LinePoint& point) {
    return !std::isnan(point.x_value) && !std::isnan(point.y_value);
}

/// The line of the point of a curve over an axis that is nearest to a place, the newest of them.
std::optional<std::int64_t> LineNearPoint(const GraphDraw& graph, const QPoint& place) {
    const LinesDrawAxis& curve = *graph.Lines().front();
    double least = std::numeric_limits<double>::infinity();
    std::size_t nearest = 0;
    for (std::size_t i = 0; i < curve.ShownSize(); ++i) {
        const LinePoint point = curve.ShownPoint(i);
        if (!IsPoint(point)) {
            continue;
        }
        const QPointF apart = ToLogical(graph, point) - place;
        const double distance = QPointF::dotProduct(apart, apart);
        if (distance <= least) {
            least = distance;
            nearest = i;
        }
    }
    const LineRuns runs = LinesOfPoints(graph);
    if (!std::isfinite(least) || runs.empty()) {
        return std::nullopt;
    }
    return LineOfRow(runs, runs.front().sequence + nearest);
}

/// Where a curve over an axis shows a line.
std::optional<QPoint> PointOfLine(const GraphDraw& graph, std::int64_t line) {
    const LinesDrawAxis& curve = *graph.Lines().front();
    const LineRuns runs = LinesOfPoints(graph);
    for (const LineLog::Run& run : runs) {
        if (run.line <= line && line - run.line < static_cast<std::int64_t>(run.count)) {
            const std::uint64_t row = run.sequence + static_cast<std::uint64_t>(line - run.line);
            const std::uint64_t place = row - runs.front().sequence;
            if (place >= curve.ShownSize() || !IsPoint(curve.ShownPoint(place))) {
                return std::nullopt;
            }
            const QPoint point = ToLogical(graph, curve.ShownPoint(place)).toPoint();
            return graph.PlotArea().contains(point) ? std::optional(point) : std::nullopt;
        }
    }
    return std::nullopt;
}

/// A time that a logical pixel column shows, not at its very edge; -1 outside the plot area.
double TimeInColumn(const GraphDraw& graph, int column) {
    constexpr double kInside = 0.25;
    const double edge = graph.PixelToTime(column);
    const double shown = ShownTime(graph);
    return edge < 0.0 ? edge : std::min(shown, edge + kInside * shown / graph.PlotArea().width());
}

/// The logical pixel column in which a line is seen.
std::optional<int> ColumnOf(const GraphPlaces& places, std::int64_t line) {
    const auto time = places.TimeOf(line);
    return time ? places.PixelAt(*time) : std::nullopt;
}

/// The line that is seen at a time, in the same pixel column where there is one, or the one that is
/// seen next to it.
std::optional<std::int64_t> LineNearTime(const GraphDraw& graph, double time) {
    const GraphPlaces places = graph.Places();
    const std::optional<int> column = places.PixelAt(time);
    if (const auto line = places.LineAt(time)) {
        for (const std::int64_t near : {*line, *line + 1, *line - 1}) {
            if (ColumnOf(places, near) == column) {
                return near;
            }
        }
        return line;
    }
    if (!column) {
        return std::nullopt;
    }
    for (int apart = 1; apart < graph.PlotArea().width(); ++apart) {
        for (const int x : {*column - apart, *column + apart}) {
            const double there = places.TimeAt(x);
            const auto line = there >= 0.0 ? places.LineAt(there) : std::nullopt;
            if (line) {
                return line;
            }
        }
    }
    return std::nullopt;
}

}  // namespace

GraphCursors::GraphCursors(GraphBoard& board, ZoomTarget& zooms, std::function<bool()> values_flow,
                           BringIn bring_in, std::function<void()> moved)
    : m_board(board),
      m_zooms(zooms),
      m_values_flow(std::move(values_flow)),
      m_bring_in(std::move(bring_in)),
      m_moved(std::move(moved)) {}

void GraphCursors::Show(bool shown) {
    if (shown == m_shown) {
        return;
    }
    m_shown = shown;
    m_active.reset();
    if (shown) {
        m_active = CursorName::kA;
        m_states = {};
        Of(CursorName::kA).x = kFirstPlace;
        Of(CursorName::kB).x = kSecondPlace;
        m_followed.reset();
        Renew();
    }
    m_moved();
}

void GraphCursors::Activate(std::optional<CursorName> name) {
    if (name != m_active) {
        m_active = name;
        m_moved();
    }
}

GraphDraw* GraphCursors::GraphOf(CursorName name) const {
    return m_board.Find(Of(name).graph);
}

GraphDraw* GraphCursors::FirstGraph() const {
    const auto& drawers = m_board.Drawers();
    GraphDraw* const selected = m_board.Find(m_zooms.Selected());
    if (drawers.empty() || (selected != nullptr && IsOverTime(*selected))) {
        return selected;
    }
    const auto over_time = std::find_if(drawers.begin(), drawers.end(),
                                        [](const auto& drawer) { return IsOverTime(*drawer); });
    return over_time != drawers.end() ? over_time->get()
           : selected != nullptr      ? selected
                                      : drawers.front().get();
}

bool GraphCursors::FlowsInto(const GraphDraw& graph) const {
    const RunState state = graph.Recorder().State();
    const std::vector<GraphValue*> values = graph.Recorder().Values();
    return m_values_flow() && !IsStopped(state) && state != RunState::kWaitingForStart &&
           !graph.ZoomWindow().IsOfRecording() && !graph.Past().has_value() &&
           std::any_of(values.begin(), values.end(),
                       [](const GraphValue* value) { return value->Enabled(); });
}

void GraphCursors::Renew() {
    const Followed now{m_board.Steps(), m_values_flow()};
    if (!m_shown || m_followed == now) {
        return;
    }
    for (State& state : m_states) {
        Follow(state);
    }
    m_followed = now;
}

void GraphCursors::Follow(State& state) const {
    const GraphDraw* graph = m_board.Find(state.graph);
    if (graph == nullptr) {
        graph = FirstGraph();
        state.graph = graph == nullptr ? 0 : graph->Graph().GraphNumber;
    }
    if (graph == nullptr || !HasCurves(*graph)) {
        state.line.reset();
        return;
    }
    const bool flows = FlowsInto(*graph);
    if (flows || (state.line && !Contains(LinesOfGraph(*graph), *state.line))) {
        state.line.reset();
    }
    if (!state.line) {
        state.line = LineAtPlace(*graph, state, flows);
    }
    if (!flows && state.line) {
        TakePlace(*graph, *state.line, &state);
    }
}

std::optional<std::int64_t> GraphCursors::LineAtPlace(const GraphDraw& graph, const State& state,
                                                      bool flows) {
    if (!IsOverTime(graph)) {
        return LineNearPoint(graph, PixelOf(graph, state));
    }
    const double time = TimeAtPart(graph, state.x);
    if (flows) {
        return graph.Places().LineAt(time);
    }
    const auto line = LineNearTime(graph, time);
    return line && ShowsOpenRecording(graph) ? LineWithValue(graph, *line, 1) : line;
}

bool GraphCursors::IsSeen(const GraphDraw& graph, std::int64_t line) {
    if (!IsOverTime(graph)) {
        return PointOfLine(graph, line).has_value();
    }
    const auto time = graph.Places().TimeOf(line);
    return time && *time <= ShownTime(graph);
}

QPoint GraphCursors::PixelOf(const GraphDraw& graph, const State& state) {
    const QRect& plot = graph.PlotArea();
    if (IsOverTime(graph)) {
        const auto column = graph.Places().PixelAt(TimeAtPart(graph, state.x));
        return {column.value_or(plot.left()), plot.top()};
    }
    return {plot.left() + static_cast<int>(std::lround(state.x * (plot.width() - 1))),
            plot.top() + static_cast<int>(std::lround(state.y * (plot.height() - 1)))};
}

void GraphCursors::TakePlace(const GraphDraw& graph, std::int64_t line, State* state) {
    if (IsOverTime(graph)) {
        if (const auto time = graph.Places().TimeOf(line); time && *time <= ShownTime(graph)) {
            state->x = *time / ShownTime(graph);
        }
    } else if (const auto point = PointOfLine(graph, line)) {
        const QRect& plot = graph.PlotArea();
        state->x = static_cast<double>(point->x() - plot.left()) / std::max(1, plot.width() - 1);
        state->y = static_cast<double>(point->y() - plot.top()) / std::max(1, plot.height() - 1);
    }
}

std::optional<QPoint> GraphCursors::PlaceIn(const GraphDraw& graph, CursorName name) const {
    if (!m_shown || !HasCurves(graph)) {
        return std::nullopt;
    }
    const State& state = Of(name);
    const bool is_own = state.graph == graph.Graph().GraphNumber;
    if (is_own && (!state.line || (IsOverTime(graph) && FlowsInto(graph)))) {
        return PixelOf(graph, state);
    }
    if (!state.line) {
        return std::nullopt;
    }
    if (!IsOverTime(graph)) {
        return PointOfLine(graph, *state.line);
    }
    const auto column = ColumnOf(graph.Places(), *state.line);
    return column ? std::optional(QPoint(*column, graph.PlotArea().top())) : std::nullopt;
}

void GraphCursors::PutAt(CursorName name, const GraphDraw& graph, const QPoint& point) {
    if (!HasCurves(graph)) {
        return;
    }
    const QRect& plot = graph.PlotArea();
    const int x = std::clamp(point.x(), plot.left(), plot.right());
    const int y = std::clamp(point.y(), plot.top(), plot.bottom());
    State& state = Of(name);
    state.graph = graph.Graph().GraphNumber;
    state.line.reset();
    if (IsOverTime(graph)) {
        const double shown = ShownTime(graph);
        state.x = shown > 0.0 ? std::clamp(TimeInColumn(graph, x) / shown, 0.0, 1.0) : 0.0;
    } else {
        state.x = static_cast<double>(x - plot.left()) / std::max(1, plot.width() - 1);
        state.y = static_cast<double>(y - plot.top()) / std::max(1, plot.height() - 1);
    }
    m_followed.reset();
    Renew();
    m_moved();
}

void GraphCursors::PutOn(CursorName name, std::int64_t line) {
    State& state = Of(name);
    if (const GraphDraw* const graph = GraphOf(name); graph != nullptr && HasCurves(*graph)) {
        state.line = line;
        TakePlace(*graph, line, &state);
        m_followed.reset();
        Renew();
        m_moved();
    }
}

void GraphCursors::JumpTo(CursorName name, std::int64_t line) {
    const GraphDraw* const graph = GraphOf(name);
    if (graph != nullptr && HasCurves(*graph) && !FlowsInto(*graph) && !IsSeen(*graph, line)) {
        m_bring_in(*graph, line);
    }
    PutOn(name, line);
}

void GraphCursors::Move(CursorName name, CursorStep step, int direction) {
    const GraphDraw* const graph = GraphOf(name);
    if (graph == nullptr || !HasCurves(*graph)) {
        return;
    }
    State& state = Of(name);
    if (!state.line || FlowsInto(*graph)) {
        MoveOnScreen(*graph, step, direction, &state);
    } else {
        MoveByLines(*graph, step, direction, &state);
        if (state.line && graph->Past().has_value() && !IsSeen(*graph, *state.line)) {
            m_bring_in(*graph, *state.line);
        }
    }
    m_followed.reset();
    Renew();
    m_moved();
}

void GraphCursors::MoveOnScreen(const GraphDraw& graph, CursorStep step, int direction,
                                State* state) const {
    double part = 1.0 / std::max(1, graph.PlotArea().width() - 1);
    if (step == CursorStep::kTenth) {
        part = kTenthOfWindow;
    } else if (step == CursorStep::kSample && IsOverTime(graph)) {
        part = graph.Recorder().CycleTime() / ShownTime(graph);
    }
    state->x = std::clamp(state->x + direction * part, 0.0, 1.0);
}

void GraphCursors::MoveByLines(const GraphDraw& graph, CursorStep step, int direction,
                               State* state) const {
    const GraphPlaces places = graph.Places();
    const std::int64_t from = *state->line;
    std::int64_t lines = 1;
    if (step == CursorStep::kTenth) {
        const double shown = IsOverTime(graph) ? ShownTime(graph) / graph.Recorder().CycleTime()
                                               : static_cast<double>(graph.Lines()[0]->ShownSize());
        lines = std::max<std::int64_t>(1, std::llround(shown * kTenthOfWindow));
    } else if (step == CursorStep::kPixel && IsOverTime(graph)) {
        const auto column = ColumnOf(places, from);
        const double there = column ? TimeInColumn(graph, *column + direction) : -1.0;
        const auto line = there >= 0.0 ? LineNearTime(graph, there) : std::nullopt;
        // Behind the place where a sweep overwrites itself is another time.
        lines = line ? std::max<std::int64_t>(1, (*line - from) * direction) : 1;
    }
    const LineRuns runs = LinesOfGraph(graph);
    state->line = NearestLine(runs, from + direction * lines, direction);
    if (state->line && ShowsOpenRecording(graph)) {
        state->line = LineWithValue(graph, *state->line, direction);
    }
    if (state->line) {
        TakePlace(graph, *state->line, state);
    }
}

}  // namespace wavo
