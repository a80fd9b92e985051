#include "view/circle_watch.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "view/recorded_values.h"

namespace wavo {

namespace {

/// Lines from one attempt to the next while no turn was found yet, seconds.
constexpr double kFirstAttempts = 1.0;

/// The first y axis that shows values themselves; nothing when there is none.
std::optional<std::size_t> ValueAxis(const WavoGraph& graph) {
    for (std::size_t i = 0; i < graph.YCoorAxName.size(); ++i) {
        if (graph.YCoorAxDerivation[i] == 0 && graph.YCoorAxName[i] != graph.XCoorAxName) {
            return i;
        }
    }
    return std::nullopt;
}

/// The line behind the last turn that was evaluated, from the first line on; 0: there is none.
std::int64_t EndOfTurns(const CircleOutcome& outcome) {
    std::int64_t end = 0;
    for (const measure::CircleTurn& turn : outcome.result.turns) {
        end = std::max(end, outcome.first_line + static_cast<std::int64_t>(turn.stretch.end));
    }
    return end;
}

/// The evaluation that is kept of several that came one behind the other: the last pair, else the
/// last turn.
const measure::CircleEvaluation& LastOf(const measure::CircleResult& result) {
    const auto pair = std::find_if(result.evaluations.rbegin(), result.evaluations.rend(),
                                   [](const auto& e) { return e.turns.size() > 1; });
    return pair != result.evaluations.rend() ? *pair : result.evaluations.back();
}

bool HasValues(const std::vector<double>& column) {
    return std::ranges::any_of(column, [](double value) { return std::isfinite(value); });
}

/// Columns of which nothing is known: graphs that were stopped before hold what they show.
void LeaveOutUnknown(CircleOutcome* outcome) {
    PlaneAxes& axes = outcome->axes;
    if (axes.has_commanded && !(HasValues(outcome->columns[2]) && HasValues(outcome->columns[3]))) {
        outcome->columns.erase(outcome->columns.begin() + 2, outcome->columns.begin() + 4);
        axes.columns.erase(axes.columns.begin() + 2, axes.columns.begin() + 4);
        axes.has_commanded = false;
    }
}

}  // namespace

CircleWatch::CircleWatch(Session& session, GraphBoard& board, PastView& past,
                         std::function<std::uint32_t()> selected)
    : m_session(session),
      m_board(board),
      m_selected(std::move(selected)),
      m_gatherer(session, past),
      m_work([this] { return Work(); }) {}

bool CircleWatch::IsPlane(const WavoGraph& graph) {
    return graph.XCoorType == CoorType::kAxis && ValueAxis(graph).has_value();
}

const GraphDraw* CircleWatch::Graph() const {
    const GraphDraw* const selected = m_board.Find(m_selected());
    if (selected != nullptr && IsPlane(selected->Graph())) {
        return selected;
    }
    const auto plane = std::ranges::find_if(
        m_board.Drawers(), [](const auto& drawer) { return IsPlane(drawer->Graph()); });
    return plane == m_board.Drawers().end() ? nullptr : plane->get();
}

void CircleWatch::SetActive(bool active) {
    if (m_is_active == active) {
        return;
    }
    m_is_active = active;
    if (active) {
        OnChanged();
    } else {
        GiveUp();
        Forget();
        m_gatherer.Forget();
    }
}

void CircleWatch::SetQuestion(const CircleQuestion& question) {
    if (question == m_question) {
        return;
    }
    m_question = question;
    GiveUp();
    m_subject.reset();
    OnChanged();
}

void CircleWatch::Forget() {
    m_gatherer.Leave();
    m_plane.reset();
    m_outcome.reset();
    m_subject.reset();
    m_turn_lines = 0;
}

bool CircleWatch::TakePlane() {
    const GraphDraw* const graph = Graph();
    if (graph == nullptr) {
        return false;
    }
    const WavoGraph& shown = graph->Graph();
    const PlaneAxes plane = PlaneOf(shown.XCoorAxName, shown.YCoorAxName[*ValueAxis(shown)],
                                    m_session.Values().AxisNames());
    m_graph = shown.GraphNumber;
    if (m_plane != plane) {
        GiveUp();
        Forget();
        m_plane = plane;
    }
    m_gatherer.Take(plane.columns);
    return true;
}

CircleWatch::Subject CircleWatch::SubjectNow() const {
    Subject subject{m_graph, false, m_gatherer.Now()};
    const GraphDraw* const graph = m_board.Find(m_graph);
    if (graph != nullptr && m_session.Recording() == nullptr && HoldsRecording(*graph)) {
        const std::vector<LineLog::Run> runs = LinesOfGraph(*graph);
        subject.is_of_trigger = true;
        subject.gathered = {};
        if (!runs.empty()) {
            subject.gathered.lines = {
                runs.front().line, runs.back().line + static_cast<std::int64_t>(runs.back().count)};
        }
    }
    return subject;
}

void CircleWatch::OnBatch() {
    if (m_is_active && m_plane && m_next == nullptr && IsDue()) {
        Begin(SubjectNow());
    }
}

/// Values flow, and there are enough new ones for another turn.
bool CircleWatch::IsDue() const {
    const Subject subject = SubjectNow();
    const LineRange& lines = subject.Lines();
    if (!m_gatherer.IsLive() || !subject.gathered.is_tapped) {
        return false;
    }
    const bool goes_on = m_subject && m_subject->gathered.is_tapped &&
                         m_subject->graph == subject.graph && m_subject->Lines().end <= lines.end;
    const std::int64_t since = lines.end - (goes_on ? m_subject->Lines().end : lines.begin);
    const auto first =
        static_cast<std::int64_t>(kFirstAttempts / std::max(m_session.Values().CycleTime(), 1e-9));
    // A stretch without turns becomes longer and longer: it is not looked at again and again.
    return since >= std::max(m_turn_lines > 0 ? m_turn_lines : first, lines.Count() / 4);
}

void CircleWatch::OnChanged() {
    if (!m_is_active) {
        return;
    }
    if (!TakePlane()) {
        GiveUp();
        Forget();
        SetState(State::kNoPlane);
        return;
    }
    const Subject subject = SubjectNow();
    const auto same_source = [&](const Subject& before) {
        return before.graph == subject.graph &&
               before.gathered.recording == subject.gathered.recording;
    };
    if (m_subject && !same_source(*m_subject)) {
        GiveUp();
        m_outcome.reset();
        m_subject.reset();
    }
    if (m_gatherer.IsLive() && !subject.is_of_trigger) {
        if (m_next == nullptr) {
            SetState(m_outcome != nullptr ? State::kDone : State::kNoValues);
        }
        return;
    }
    if (subject.Lines().Count() == 0) {
        GiveUp();
        SetState(State::kNoValues);
    } else if (subject.Lines().Count() > kMostLines) {
        GiveUp();
        m_outcome.reset();
        m_subject = subject;
        SetState(State::kTooMany);
    } else if (m_subject != subject) {
        Begin(subject);
    }
}

void CircleWatch::Begin(const Subject& subject) {
    GiveUp();
    m_subject = subject;
    m_next = std::make_unique<CircleOutcome>();
    m_next->graph = subject.graph;
    m_next->axes = *m_plane;
    if (subject.is_of_trigger) {
        // The curves of the graph are those of its two axes.
        m_next->axes.columns.resize(2);
        m_next->axes.has_commanded = false;
    }
    m_next->data = m_gatherer.Name();
    m_next->first_line = subject.Lines().begin;
    m_next->columns.resize(m_next->axes.columns.size());
    for (std::vector<double>& column : m_next->columns) {
        column.reserve(static_cast<std::size_t>(subject.Lines().Count()));
    }
    m_copied = 0;
    SetState(State::kWorking);
    m_work.Begin();
}

void CircleWatch::GiveUp() {
    m_steps.reset();
    m_next.reset();
}

void CircleWatch::SetState(State state) {
    if (std::exchange(m_state, state) != state) {
        Q_EMIT Changed();
    }
}

bool CircleWatch::Work() {
    if (m_next == nullptr) {
        return false;
    }
    if (!m_steps) {
        if (CopySome()) {
            return true;
        }
        if (m_next != nullptr) {
            Evaluate();
        }
        return m_next != nullptr;
    }
    if (m_steps->Step()) {
        return true;
    }
    TakeResult();
    return m_next != nullptr;
}

/// True when there is more to copy. Gives up when what was to be copied has gone.
bool CircleWatch::CopySome() {
    const std::int64_t left = m_subject->Lines().Count() - m_copied;
    const auto count = static_cast<std::size_t>(std::min(left, LineGatherer::kLinesPerCopy));
    std::vector<std::span<double>> columns;
    for (std::vector<double>& column : m_next->columns) {
        column.resize(column.size() + count, std::numeric_limits<double>::quiet_NaN());
        columns.push_back(std::span(column).last(count));
    }
    if (!Copy(m_subject->Lines().begin + m_copied, columns)) {
        GiveUp();
        return false;
    }
    m_copied += static_cast<std::int64_t>(count);
    return m_copied < m_subject->Lines().Count();
}

bool CircleWatch::Copy(std::int64_t first, std::span<const std::span<double>> columns) const {
    if (!m_subject->is_of_trigger) {
        return m_gatherer.Copy(m_subject->gathered, first, columns);
    }
    const GraphDraw* const graph = m_board.Find(m_subject->graph);
    if (graph == nullptr || graph->Lines().empty() || !HoldsRecording(*graph)) {
        return false;
    }
    RecordedValues(*graph, graph->Recorder().Axes()).Read(first, columns[0]);
    RecordedValues(*graph, *ValueAxis(graph->Graph())).Read(first, columns[1]);
    return true;
}

void CircleWatch::Evaluate() {
    CircleOutcome& next = *m_next;
    LeaveOutUnknown(&next);
    next.path.cycle_time = m_session.Values().CycleTime();
    next.path.x = next.columns[0];
    next.path.y = next.columns[1];
    if (next.axes.has_commanded) {
        next.path.x_cmd = next.columns[2];
        next.path.y_cmd = next.columns[3];
    }
    next.setup.radius = m_question.radius;
    next.setup.feed = m_question.feed;
    next.setup.minimum_zone = m_question.minimum_zone;
    for (std::size_t i = next.axes.FirstOther(); i < next.columns.size(); ++i) {
        next.setup.others.push_back({next.axes.columns[i], next.columns[i]});
    }
    m_steps.emplace(measure::TestCircleInSteps(next.path, next.setup));
}

void CircleWatch::TakeResult() {
    m_next->result = std::move(m_steps->Result());
    m_steps.reset();
    std::unique_ptr<CircleOutcome> next = std::move(m_next);
    const measure::CircleResult& result = next->result;
    if (m_subject->gathered.is_tapped && !result.evaluations.empty()) {
        m_turn_lines = static_cast<std::int64_t>(result.turns.back().stretch.Size());
        std::int64_t from = m_subject->Lines().end;
        for (const std::size_t turn : LastOf(result).turns) {
            const measure::CircleRun& run = result.runs[result.turns[turn].run];
            // Of an endless run the half behind its turn is enough for the next one.
            const auto first = static_cast<std::int64_t>(std::max(
                run.stretch.first,
                result.turns[turn].stretch.first -
                    std::min(result.turns[turn].stretch.first, result.turns[turn].stretch.Size())));
            from = std::min(from, next->first_line + first);
        }
        m_gatherer.KeepFrom(from - static_cast<std::int64_t>(m_turn_lines / 4));
        if (result.evaluations.size() > 1 && &LastOf(result) != &result.evaluations.front() &&
            m_gatherer.Now().lines.begin > m_subject->Lines().begin) {
            Begin(SubjectNow());  // the last one alone
            return;
        }
    }
    const bool is_newer = m_outcome == nullptr || !m_subject->gathered.is_tapped ||
                          EndOfTurns(*next) > EndOfTurns(*m_outcome);
    if (is_newer) {
        m_outcome = std::move(next);
    }
    m_state = State::kDone;
    Q_EMIT Changed();
}

}  // namespace wavo
