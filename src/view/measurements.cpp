#include "view/measurements.h"

#include <algorithm>
#include <array>
#include <utility>

#include "view/recorded_values.h"

namespace wavo {

namespace {

using measure::Figure;

constexpr double kProminence = 0.01;  // of what the scale shows
/// What a renewal may read: a few milliseconds.
constexpr std::uint64_t kRenewalBudget = 1000;
constexpr std::size_t kItself = static_cast<std::size_t>(-1);

/// A recording that the start or the stop trigger of its graph has made.
bool IsEndedByTrigger(const GraphDraw& graph) {
    return graph.Recorder().RestartState() == RunState::kWaitingForStop;
}

}  // namespace

std::string Measurements::LabelOf(const WavoGraph& graph, std::size_t axis) {
    const std::string label = AxisLabel(graph.YCoorAxName[axis], graph.YCoorAxDerivation[axis]);
    return graph.XCoorType == CoorType::kAxis ? label + " over " + graph.XCoorAxName : label;
}

std::vector<const GraphDraw*> Measurements::Graphs() const {
    std::vector<const GraphDraw*> graphs;
    const GraphDraw* const selected = m_board.Find(m_zooms.Selected());
    for (const auto& drawer : m_board.Drawers()) {
        if (m_all_graphs || drawer.get() == selected) {
            graphs.push_back(drawer.get());
        }
    }
    if (graphs.empty() && !m_board.Drawers().empty()) {
        graphs.push_back(m_board.Drawers().front().get());
    }
    return graphs;
}

CurveReader* Measurements::ReaderOf(const GraphDraw& graph, std::size_t stream) {
    const GraphRecorder& recorder = graph.Recorder();
    const GraphValue* const value = recorder.Taken(stream).value;
    const bool is_own = HoldsRecording(graph) && !graph.Past().has_value();
    History* history = nullptr;
    if (ShowsOpenRecording(graph)) {
        history = stream < recorder.Axes() ? graph.Past()->y[stream] : graph.Past()->x;
    }
    if (graph.Lines().empty() || (!is_own && value == nullptr && history == nullptr)) {
        return nullptr;
    }
    const auto key = is_own               ? std::pair<const void*, std::size_t>(&graph, stream)
                     : history != nullptr ? std::pair<const void*, std::size_t>(history, kItself)
                                          : std::pair<const void*, std::size_t>(value, kItself);
    const auto known = m_readers.find(key);
    if (known != m_readers.end()) {
        return &known->second;
    }
    std::unique_ptr<LineValues> values;
    if (is_own) {
        values = std::make_unique<RecordedValues>(graph, stream);
    } else if (history != nullptr) {
        values = std::make_unique<HistoryValues>(*history, [this] {
            OpenRecording* const recording = m_session.Recording();
            return recording == nullptr ? 0 : recording->Reader().BytesRead();
        });
    } else {
        values = std::make_unique<BufferValues>(*value);
    }
    const std::int32_t derivation =
        stream < recorder.Axes() ? graph.Graph().YCoorAxDerivation[stream] : 0;
    return &m_readers.emplace(key, CurveReader(std::move(values), recorder.CycleTime(), derivation))
                .first->second;
}

CurveReader* Measurements::ReaderOf(const CurveId& curve) {
    const GraphDraw* const graph = m_board.Find(curve.graph);
    return graph != nullptr && curve.axis < graph->Lines().size() ? ReaderOf(*graph, curve.axis)
                                                                  : nullptr;
}

std::optional<std::int64_t> Measurements::LineOf0() const {
    std::optional<std::int64_t> newest;
    for (const auto& drawer : m_board.Drawers()) {
        if (ShowsOpenRecording(*drawer)) {
            return drawer->Past()->origin;
        }
        const std::vector<LineLog::Run> runs = LinesOfGraph(*drawer);
        if (!runs.empty()) {
            const std::int64_t last =
                runs.back().line + static_cast<std::int64_t>(runs.back().count) - 1;
            newest = std::max(newest.value_or(last), last);
        }
    }
    return newest;
}

double Measurements::TimeOf(std::int64_t line) const {
    const double cycle_time =
        m_board.Drawers().empty() ? 0.0 : m_board.Drawers().front()->Recorder().CycleTime();
    return static_cast<double>(line - LineOf0().value_or(line)) * cycle_time;
}

void Measurements::MeasureTimes() {
    m_table.line_of_0 = LineOf0().value_or(0);
    m_table.cycle_time =
        m_board.Drawers().empty() ? 0.0 : m_board.Drawers().front()->Recorder().CycleTime();
    m_table.time_decimals = measure::DecimalsOf(std::array{m_table.cycle_time});
    const auto time = [this](CursorName name) {
        const auto line = m_cursors.LineOf(name);
        return line ? std::optional(m_table.TimeOf(*line)) : std::nullopt;
    };
    m_table.a = time(CursorName::kA);
    m_table.b = time(CursorName::kB);
    if (m_table.a && m_table.b) {
        const measure::CursorTimes times = measure::TimesOf(*m_table.a, *m_table.b);
        m_table.difference = times.difference;
        m_table.frequency = times.frequency;
    } else {
        m_table.difference = m_table.frequency = Figure::Not("a cursor is not on the data");
    }
}

void Measurements::MeasureCurve(const GraphDraw& graph, std::size_t axis) {
    MeasuredCurve curve;
    curve.id = {graph.Graph().GraphNumber, axis};
    curve.label = LabelOf(graph.Graph(), axis);
    curve.color = graph.Lines()[axis]->ShownColor();
    const bool is_over_axis = graph.Graph().XCoorType == CoorType::kAxis;
    curve.x_name = is_over_axis ? graph.Graph().XCoorAxName : std::string();
    const auto a = m_cursors.LineOf(CursorName::kA);
    const auto b = m_cursors.LineOf(CursorName::kB);
    curve.x_at_a = curve.x_at_b = Figure::Not("no values");
    if (CurveReader* const reader = ReaderOf(graph, axis)) {
        curve.figures = reader->Between(a, b, &m_budget);
        m_table.is_whole = m_table.is_whole && curve.figures.is_whole;
        curve.decimals = reader->Decimals();
    } else {
        const Figure none = Figure::Not("no values");
        curve.figures.a = curve.figures.b = none;
        curve.figures.difference = curve.figures.per_second = none;
        curve.figures.between = measure::StatisticsOf({}, 1.0);
    }
    CurveReader* const x = is_over_axis ? ReaderOf(graph, graph.Recorder().Axes()) : nullptr;
    if (x != nullptr) {
        curve.x_at_a = x->ValueAt(a);
        curve.x_at_b = x->ValueAt(b);
        curve.decimals = std::max(curve.decimals, x->Decimals());
    }
    m_table.curves.push_back(std::move(curve));
}

const MeasuredTable& Measurements::Renew() {
    m_cursors.Renew();
    m_budget.Renew(kRenewalBudget);
    m_table = {};
    MeasureTimes();
    for (const GraphDraw* const graph : Graphs()) {
        for (std::size_t axis = 0; axis < graph->Lines().size(); ++axis) {
            MeasureCurve(*graph, axis);
        }
    }
    return m_table;
}

std::optional<CurveId> Measurements::SelectedCurve() const {
    const std::vector<const GraphDraw*> graphs = Graphs();
    const auto has = [](const GraphDraw& graph, const CurveId& curve) {
        return graph.Graph().GraphNumber == curve.graph && curve.axis < graph.Lines().size();
    };
    for (const GraphDraw* const graph : graphs) {
        if (m_selected && has(*graph, *m_selected)) {
            return m_selected;
        }
    }
    for (const GraphDraw* const graph : graphs) {
        if (!graph->Lines().empty()) {
            return CurveId{graph->Graph().GraphNumber, 0};
        }
    }
    return std::nullopt;
}

LineFound Measurements::Next(Landmark landmark, std::int64_t line, measure::Search search) {
    const auto curve = SelectedCurve();
    const GraphDraw* const graph = curve ? m_board.Find(curve->graph) : nullptr;
    CurveReader* const reader = graph == nullptr ? nullptr : ReaderOf(*graph, curve->axis);
    if (reader == nullptr) {
        return {};
    }
    const ScaleLines& scale = graph->Lines()[curve->axis]->YLines();
    const double shown = scale.empty() ? 0.0 : scale.back().value - scale.front().value;
    m_budget.Renew(kRenewalBudget);
    return reader->Next(landmark, line, search, std::abs(shown) * kProminence, &m_budget);
}

std::optional<std::int64_t> Measurements::TriggerLine(const GraphDraw& graph) {
    const auto& triggers = graph.Graph().Triggers;
    const bool has_trigger =
        std::any_of(triggers.begin(), triggers.end(),
                    [](const TriggerEntry& trigger) { return IsTrigger(trigger.TriggerType); });
    const std::vector<LineLog::Run> runs =
        has_trigger && HoldsRecording(graph) ? LinesOfCurves(graph) : std::vector<LineLog::Run>();
    if (runs.empty()) {
        return std::nullopt;
    }
    return IsEndedByTrigger(graph)
               ? runs.back().line + static_cast<std::int64_t>(runs.back().count) - 1
               : runs.front().line;
}

}  // namespace wavo
