#include "view/past_search.h"

#include <QCoreApplication>
#include <algorithm>
#include <ranges>
#include <utility>

#include "session/trigger_terms.h"
#include "ui/dialogs/export_progress.h"

namespace wavo {

namespace {

/// A search that takes longer shows how far it has come.
constexpr std::chrono::milliseconds kSearchPatience{500};
constexpr std::chrono::milliseconds kSearchPause{20};

/// Lines of one question: with levels, and of orders that have none.
constexpr std::int64_t kSearchPiece = std::int64_t{1} << 22;
constexpr std::int64_t kSearchPieceOfLines = std::int64_t{1} << 14;

ProgressTexts TextsOfSearch() {
    return {"Search",
            "The condition that is looked for",
            "How much of the recording was looked at",
            "How many lines were looked at",
            "Stop searching; nothing moves",
            "lines"};
}

bool IsBackward(CommandId id) {
    return id == CommandId::kPreviousTrigger || id == CommandId::kPreviousEvent;
}

/// More events of one line are told by their number.
constexpr int kMostEventsTold = 5;

/// What happened before a line: its events, else the gap that ends there.
std::string TextOfPlace(const std::vector<recording::Event>& events,
                        const std::vector<recording::LineSpan>& gaps, std::uint64_t line) {
    std::string text;
    const auto here = std::ranges::equal_range(events, line, {}, &recording::Event::line);
    for (const recording::Event& event : here | std::views::take(kMostEventsTold)) {
        text += (text.empty() ? "" : "; ") + (event.text.empty() ? event.kind : event.text);
    }
    if (const auto left = std::ranges::ssize(here) - kMostEventsTold; left > 0) {
        text += " and " + std::to_string(left) + " more";
    }
    const auto gap = std::ranges::lower_bound(gaps, line, {}, &recording::LineSpan::end);
    if (text.empty() && gap != gaps.end() && gap->end == line) {
        text = std::to_string(gap->end - gap->first) + " lines are missing before this place";
    }
    return text;
}

}  // namespace

PastSearch::PastSearch(Session& session, PastView& past, std::function<std::uint32_t()> selected,
                       QWidget& parent, Clock clock)
    : m_session(session),
      m_past(past),
      m_selected(std::move(selected)),
      m_parent(parent),
      m_clock(std::move(clock)) {}

PastSearch::~PastSearch() = default;

const WavoGraph* PastSearch::Graph() const {
    const std::vector<WavoGraph>& graphs = m_session.Graphs().Graphs();
    const auto found = std::ranges::find(graphs, m_selected(), &WavoGraph::GraphNumber);
    return found != graphs.end() ? &*found : graphs.empty() ? nullptr : &graphs.front();
}

std::vector<ConditionTerm> PastSearch::Terms() const {
    const WavoGraph* const graph = Graph();
    return graph == nullptr ? std::vector<ConditionTerm>()
                            : TriggerTerms(*graph, [this](const std::string& axis, int order) {
                                  return m_session.Recording()->StreamOf(axis, order);
                              });
}

bool PastSearch::IsEnabled(CommandId id) const {
    if (m_session.Recording() == nullptr) {
        return false;
    }
    if (id == CommandId::kNextTrigger || id == CommandId::kPreviousTrigger) {
        return !Terms().empty();
    }
    return id == CommandId::kNextEvent || id == CommandId::kPreviousEvent;
}

void PastSearch::Execute(CommandId id) {
    if (!IsEnabled(id) || m_is_under_way) {
        return;
    }
    m_past.Refresh(false);
    if (id == CommandId::kNextTrigger || id == CommandId::kPreviousTrigger) {
        GoToTrigger(!IsBackward(id));
    } else {
        GoToEvent(!IsBackward(id));
    }
}

std::int64_t PastSearch::Begin(bool forward) const {
    const LineRange& seen = m_past.Window().Seen();
    // What ended the recording stands behind its last line.
    const bool is_end_seen = seen.end == m_past.Window().Held().end;
    const std::int64_t end = is_end_seen ? seen.end + 1 : seen.end;
    const std::optional<std::int64_t> mark = m_past.Mark();
    if (mark && *mark >= seen.begin && *mark < end) {
        return forward ? *mark + 1 : *mark;
    }
    return forward ? seen.begin : end;
}

void PastSearch::GoToTrigger(bool forward) {
    m_is_under_way = true;
    m_is_cancelled = false;
    m_begin = m_events_handled = m_clock();
    m_recording = m_session.Recording()->Number();
    const LineRange lines = m_session.Recording()->Lines();
    const std::int64_t from = Begin(forward);
    const std::int64_t last = forward ? lines.end : lines.begin;
    const WavoGraph& graph = *Graph();
    bool has_levels = true;
    for (std::size_t i = 0; i < graph.YCoorAxDerivation.size(); ++i) {
        has_levels &=
            m_session.Recording()->HasLevels(graph.YCoorAxName[i], graph.YCoorAxDerivation[i]);
    }
    ConditionSearch search(
        Terms(), lines, has_levels ? kSearchPiece : kSearchPieceOfLines,
        [this, from, last](std::int64_t line) { return GoOn(from, line, last); });
    const std::optional<std::int64_t> found = forward ? search.Next(from) : search.Previous(from);
    m_progress.reset();
    m_is_under_way = false;
    if (search.WasEnded()) {
        return;
    }
    if (found) {
        m_past.GoTo(*found);
        m_past.Status().Tell();
    } else {
        m_past.Status().TellOfPlace(forward ? "No trigger fires behind this place"
                                            : "No trigger fires before this place");
    }
}

bool PastSearch::GoOn(std::int64_t from, std::int64_t line, std::int64_t last) {
    const std::chrono::milliseconds now = m_clock();
    if (now - m_events_handled < kSearchPause) {
        return true;
    }
    if (m_progress == nullptr && now - m_begin > kSearchPatience) {
        m_progress = std::make_unique<ExportProgress>(
            TextsOfSearch(), "Looking for where a trigger fires", m_parent.window());
        m_progress->show();
    }
    if (m_progress != nullptr) {
        m_progress->SetRows(static_cast<std::uint64_t>(std::abs(line - from)),
                            static_cast<std::uint64_t>(std::abs(last - from)));
    }
    QCoreApplication::processEvents();
    m_events_handled = m_clock();
    // An event may have closed the recording, and its streams with it.
    const OpenRecording* const recording = m_session.Recording();
    const bool is_there = recording != nullptr && recording->Number() == m_recording;
    return is_there && !m_is_cancelled && (m_progress == nullptr || !m_progress->WasCancelled());
}

void PastSearch::GoToEvent(bool forward) {
    recording::RecordingReader& reader = m_session.Recording()->Reader();
    const std::vector<recording::Event>& events = reader.Events();
    const std::vector<recording::LineSpan> gaps = reader.Gaps();
    const auto from = static_cast<std::uint64_t>(std::max<std::int64_t>(0, Begin(forward)));
    const auto event = std::ranges::lower_bound(events, from, {}, &recording::Event::line);
    const auto gap = std::ranges::lower_bound(gaps, from, {}, &recording::LineSpan::end);
    std::optional<std::uint64_t> line;
    if (forward) {
        if (event != events.end()) {
            line = event->line;
        }
        if (gap != gaps.end()) {
            line = std::min(line.value_or(gap->end), gap->end);
        }
    } else {
        if (event != events.begin()) {
            line = std::prev(event)->line;
        }
        if (gap != gaps.begin()) {
            line = std::max(line.value_or(0), std::prev(gap)->end);
        }
    }
    if (!line) {
        m_past.Status().TellOfPlace(forward ? "No event behind this place"
                                            : "No event before this place");
        return;
    }
    const std::string text = TextOfPlace(events, gaps, *line);
    m_past.GoTo(static_cast<std::int64_t>(*line));
    m_past.Status().TellOfPlace(text);
}

}  // namespace wavo
