#include "session/acquisition.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>
#include <utility>

#include "link/axis_capabilities.h"
#include "session/report_texts.h"
#include "support/diagnostics.h"
#include "support/flag_scope.h"

namespace wavo {

namespace {

using namespace session_texts;

/// The first axis named by exactly one of the characters x, y, z or c, else the first axis.
/// REQUIRES: `names` is not empty.
const std::string& ChooseDefaultAxis(const std::vector<std::string>& names) {
    const auto found = std::find_if(names.begin(), names.end(), [](const std::string& name) {
        return name.size() == 1 && std::string("xyzc").find(name[0]) != std::string::npos;
    });
    return found == names.end() ? names.front() : *found;
}

}  // namespace

Acquisition::Acquisition(ValueSource& source, GraphList& graphs, ValueStreams& streams,
                         SessionObserver& observer, OrderedMutex& value_lock,
                         const ColorRef& background)
    : m_source(source),
      m_graphs(graphs),
      m_streams(streams),
      m_observer(observer),
      m_value_lock(value_lock),
      m_background(background) {
    m_source.SetEvents(this);
}

LinkCounters Acquisition::Counters() const {
    LinkCounters counters = m_counters;
    const SourceCounters source = m_source.Counters();
    counters.lines_thrown_away = source.lines_thrown_away;
    counters.lines_left = source.lines_left;
    counters.links = source.links;
    counters.links_broken = source.links_broken;
    counters.overruns = source.overruns;
    return counters;
}

void Acquisition::ConnectByUser() {
    if (const MaybeFault fault = m_source.Start()) {
        m_observer.ShowError(fault->text);
    }
}

void Acquisition::InitialiseEditor() {
    const std::lock_guard guard(m_value_lock);
    m_edited = m_source.Description();
    m_observer.EditDocument(true);
}

void Acquisition::RebuildGraphs() {
    const std::lock_guard guard(m_value_lock);
    m_observer.GraphsChanged();
}

// ---- what the source tells ----

void Acquisition::SetRunning(bool running) {
    m_running = running;
    m_gap_waits = false;  // the graphs begin anew with the next start
}

void Acquisition::Described(bool by_itself) {
    const SourceDescription& description = m_source.Description();
    if (by_itself && description == m_edited) {
        return;  // all is known
    }
    m_is_new = true;
    m_streams.SetCycleTime(description.cycle_time);
    ShowCycleTime();
    InitialiseEditor();
}

void Acquisition::ShowCycleTime() {
    char text[64];
    std::snprintf(text, sizeof text, "cycl. time=%.5fs", CycleTime());
    m_observer.PaneTextChanged(StatusPane::kCycleTime, text);
}

void Acquisition::TakeUp() {
    ShowCycleTime();
    StateChanged();
    RebuildGraphs();
}

void Acquisition::StateChanged() {
    m_observer.PaneTextChanged(StatusPane::kMessage, m_source.StateText());
    m_observer.CommandsChanged();
}

void Acquisition::ShowHint(const std::string& text) {
    m_observer.PaneTextChanged(StatusPane::kMessage, text.empty() ? m_source.StateText() : text);
}

void Acquisition::ValuesBegin(bool by_itself) {
    const bool is_new = std::exchange(m_is_new, false);
    m_gap_waits = by_itself && !is_new;
    if (m_gap_waits) {
        m_streams.ListBuffers(AxisNames());
        return;
    }
    m_streams.Drop();
    RebuildGraphs();
}

void Acquisition::Closed() {
    if (std::exchange(m_next_announced, std::nullopt)) {  // with what was to be read
        ++m_counters.batches_failed;
    }
}

void Acquisition::Ended() {
    m_total_lines = 0;
    m_observer.PaneTextChanged(StatusPane::kTotalLines, "0");
}

void Acquisition::Quit() {
    m_observer.EndProcess();
}

void Acquisition::ShowBatchFault(const std::string& text) {
    // A batch that waited for the box would else bring it back at once, again and again.
    if (std::find(m_boxes_closed.begin(), m_boxes_closed.end(), text) == m_boxes_closed.end()) {
        m_boxes_closed.push_back(text);
        m_observer.ShowError(text);
    }
}

// ---- batches ----

bool Acquisition::BatchReady() {
    const Clock::time_point now = m_now();
    ++m_counters.batches_announced;
    if (m_observer.IsDrawing()) {
        return RefuseBatch();
    }
    if (m_batch == BatchState::kTaking) {  // the one before still waits for its message box
        m_counters.batches_refused += m_next_announced ? 1 : 0;  // the same, announced again
        m_next_announced = now;
        return false;
    }
    m_boxes_closed.clear();
    const bool is_taken = TakeBatch(now);
    while (m_next_announced) {
        TakeBatch(*std::exchange(m_next_announced, std::nullopt));
    }
    return is_taken;
}

bool Acquisition::RefuseBatch() {
    ++m_counters.batches_refused;
    if (!m_refusal_shown) {
        const FlagScope shown(m_refusal_shown);
        m_observer.ShowError(kBatchWhileDrawingBox);
    }
    return false;
}

bool Acquisition::TakeBatch(Clock::time_point announced) {
    m_batch_begin = announced;
    const BatchState before = std::exchange(m_batch, BatchState::kTaking);
    ValueBatch batch;
    const bool is_received = Receive(batch);
    m_batch = before;
    if (!is_received) {
        return false;
    }
    const auto fills_gap = std::exchange(m_gap_waits, false);
    if (!m_running) {
        m_last_values = announced;
        m_counters.lines_not_shown += batch.count;
        MTRACE(4, kReadyWhileStopped);
        Answer();
        return true;
    }
    if (fills_gap && m_last_values) {
        FillGap(batch);
    }
    m_last_values = announced;
    MTRACE(4, kSettingValues);
    m_streams.Distribute(batch);
    MTRACE(4, kValuesSet);
    m_counters.lines_shown += batch.count;
    // The answer to this one is then the only one of both.
    m_counters.batches_unanswered += m_batch == BatchState::kOwed ? 1 : 0;
    m_batch = BatchState::kOwed;
    m_draw_begin = Clock::now();
    m_observer.ValuesArrived();
    return true;
}

bool Acquisition::Receive(ValueBatch& batch) {
    switch (m_source.Take(batch)) {
        case BatchOutcome::kTaken:
            break;
        case BatchOutcome::kDrained:
            ++m_counters.batches_drained;
            return false;
        case BatchOutcome::kFailed:
            ++m_counters.batches_failed;
            return false;
    }
    m_total_lines += batch.count;
    m_counters.lines_read += batch.count;
    m_observer.PaneTextChanged(StatusPane::kTotalLines, std::to_string(m_total_lines));
    AddGraphIfNone();
    return true;
}

void Acquisition::AddGraphIfNone(DefaultScale scale) {
    if (!m_observer.HasEditedGraphs()) {
        TakeGraphs(scale);
    }
}

void Acquisition::TakeGraphs(DefaultScale scale) {
    AddDefaultGraph(scale);
    if (!m_observer.EditDocument(false)) {
        MERRLOG(kGraphsNotShown);
        ShowBatchFault(kGraphsNotShownBox);
    }
}

void Acquisition::AddDefaultGraph(DefaultScale scale) {
    if (!m_source.IsPresent()) {
        ShowBatchFault(kNoMasterDataBox);
        return;
    }
    if (AxisNames().empty()) {
        return;
    }
    WavoGraph graph;
    graph.InitGraph(m_graphs.FreeNumber(), ChooseDefaultAxis(AxisNames()).c_str(), m_background,
                    &m_source.Limits());
    if (scale == DefaultScale::kAutomatic &&
        !m_source.Limits().FindAxis(graph.YCoorAxName.front())) {
        graph.YScales.front().ScaleAx = ScaleAxCode::kAutomatic;
    }
    m_graphs.Add(graph);  // it gets its buffers before the values of this batch are handed out
}

void Acquisition::FillGap(const ValueBatch& batch) {
    const double since = std::chrono::duration<double>(m_batch_begin - *m_last_values).count();
    const double lines = std::round(since / CycleTime()) - static_cast<double>(batch.count);
    // One at least: the lines around it must not be joined.
    m_streams.Skip(std::max(lines, 1.0));
    // In a step of its own: no more new values at once than a buffer keeps.
    m_observer.ValuesArrived();
}

void Acquisition::AnswerDrawn() {
    if (m_batch != BatchState::kOwed) {
        return;
    }
    MTRACE(4, kReadyAfterDrawing);
    m_batch = BatchState::kAnswering;
    m_batch_times.drawing = Clock::now() - m_draw_begin;
    Answer();
    m_batch = BatchState::kNone;
}

void Acquisition::Answer() {
    ++(m_source.Answer() ? m_counters.batches_answered : m_counters.batches_unanswered);
    m_batch_times.to_ready = Clock::now() - m_batch_begin;
}

}  // namespace wavo
