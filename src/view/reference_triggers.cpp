#include "view/reference_triggers.h"

#include <algorithm>
#include <utility>

#include "graph/values/condition_search.h"
#include "session/trigger_terms.h"

namespace wavo {

namespace {

/// Lines of one question when the place of a trigger is looked for.
constexpr std::int64_t kTriggerPiece = std::int64_t{1} << 16;
/// A trigger that has fired before what is looked at is not looked for further away.
constexpr std::int64_t kFarthestBefore = 1'000'000;

bool HasStartTrigger(const WavoGraph& graph) {
    return std::ranges::any_of(graph.Triggers, [](const TriggerEntry& trigger) {
        return trigger.TriggerType == TriggerTypeCode::kStartAbove ||
               trigger.TriggerType == TriggerTypeCode::kStartBelow;
    });
}

/// The line with which a recording of a graph began that its start trigger has begun.
std::optional<std::int64_t> StartLineOf(const GraphDraw& graph) {
    const GraphRecorder& recorder = graph.Recorder();
    if (recorder.State() != RunState::kRunningAfterStart &&
        recorder.State() != RunState::kStoppedAfterStart) {
        return std::nullopt;
    }
    const std::vector<LineLog::Run> lines = recorder.TakenLines().Runs(0, recorder.TakenRows());
    return lines.empty() ? std::nullopt : std::optional(lines.front().line);
}

std::optional<std::int64_t> Found(const std::map<std::uint32_t, std::int64_t>& lines,
                                  std::uint32_t graph) {
    const auto found = lines.find(graph);
    return found == lines.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

void ReferenceTriggers::Renew(ReferenceRun& run) {
    m_places.clear();
    for (const WavoGraph& graph : m_session.Graphs().Graphs()) {
        std::vector<ConditionTerm> terms;
        if (HasStartTrigger(graph)) {
            terms = TriggerTerms(graph, [&run](const std::string& axis, int order) {
                return run.StreamOf(axis, order);
            });
        }
        if (terms.empty()) {
            continue;
        }
        ConditionSearch search(std::move(terms), {0, run.Lines()}, kTriggerPiece,
                               [](std::int64_t) { return true; });
        if (const auto place = search.Next(0)) {
            m_places[graph.GraphNumber] = *place;
        }
    }
    for (const auto& drawer : m_board.Drawers()) {
        if (const auto start = StartLineOf(*drawer)) {
            m_starts[drawer->Graph().GraphNumber] = *start;
        }
    }
}

const WavoGraph* ReferenceTriggers::TriggeredGraph() const {
    const WavoGraph* found = nullptr;
    for (const WavoGraph& graph : m_session.Graphs().Graphs()) {
        if (HasStartTrigger(graph) && (found == nullptr || graph.GraphNumber == m_selected())) {
            found = &graph;
        }
    }
    return found;
}

std::optional<std::int64_t> ReferenceTriggers::LineIn(const WavoGraph& graph,
                                                      const LineRange& lines) const {
    if (OpenRecording* const recording = m_session.Recording()) {
        auto terms = TriggerTerms(graph, [recording](const std::string& axis, int order) {
            return recording->StreamOf(axis, order);
        });
        if (terms.empty()) {
            return std::nullopt;
        }
        // With the lines before: what is true at the first line may have become so earlier.
        ConditionSearch search(
            std::move(terms), {recording->Lines().begin, lines.end}, kTriggerPiece,
            [&lines](std::int64_t line) { return line >= lines.begin - kFarthestBefore; });
        const auto next = search.Next(lines.begin);
        return next ? next : search.Previous(lines.begin);
    }
    const GraphDraw* const drawer = m_board.Find(graph.GraphNumber);
    const auto now = drawer == nullptr ? std::nullopt : StartLineOf(*drawer);
    const auto before = Found(m_starts, graph.GraphNumber);
    const bool is_seen = before && *before >= lines.begin && *before < lines.end;
    return now || !is_seen ? now : before;
}

measure::Told<std::int64_t> ReferenceTriggers::ShiftOf(const LineRange& lines) const {
    using Shift = measure::Told<std::int64_t>;
    const WavoGraph* const graph = TriggeredGraph();
    if (graph == nullptr) {
        return Shift::Not("No graph has a start trigger to align by");
    }
    const auto place = Found(m_places, graph->GraphNumber);
    if (!place) {
        return Shift::Not("The trigger does not fire in the good run");
    }
    const auto line = LineIn(*graph, lines);
    return line ? Shift(*line - *place)
                : Shift::Not("The trigger does not fire in what is compared");
}

std::optional<std::int64_t> ReferenceTriggers::ShiftIn(const GraphDraw& graph) const {
    const auto place = Found(m_places, graph.Graph().GraphNumber);
    const auto start = StartLineOf(graph);
    return place && start ? std::optional(*start - *place) : std::nullopt;
}

}  // namespace wavo
