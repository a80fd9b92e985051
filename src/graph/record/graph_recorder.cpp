#include "graph/record/graph_recorder.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "graph/record/report_texts.h"
#include "graph/values/missing_value.h"
#include "support/diagnostics.h"
#include "support/to_count.h"

namespace wavo {

namespace {

/// Times closer than this are one time.
constexpr double kSameTime = 1e-6;

/// Room for new values that is kept from step to step.
constexpr std::size_t kValuesKept = 4096;

constexpr std::uint64_t kAnyCount = std::numeric_limits<std::uint64_t>::max();

}  // namespace

void TakenValues::Discard() {
    if (values.capacity() > kValuesKept) {
        std::vector<double>().swap(values);  // a refill takes as many as the curve holds
    }
    values.clear();
    start_time = 0.0;
    underived.clear();
    origin = {};
}

void TakenValues::DropFront(std::uint64_t count) {
    const std::uint64_t dropped = std::min<std::uint64_t>(count, values.size());
    values.erase(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(dropped));
    origin.sequence += dropped;
    for (SampleStretch& stretch : underived) {
        const std::uint64_t end = stretch.position + stretch.count;
        stretch.position -= std::min(dropped, stretch.position);
        stretch.count = end - std::min(end, dropped + stretch.position);
    }
}

void TakenValues::DropBack(std::uint64_t count) {
    values.resize(values.size() - std::min<std::uint64_t>(count, values.size()));
}

void TakenValues::LeaveOutUnderived() {
    for (const SampleStretch& stretch : underived) {
        const auto begin = std::min<std::uint64_t>(stretch.position, values.size());
        const auto end = std::min<std::uint64_t>(stretch.position + stretch.count, values.size());
        if (begin < end) {
            origin = {};
        }
        std::fill(values.begin() + static_cast<std::ptrdiff_t>(begin),
                  values.begin() + static_cast<std::ptrdiff_t>(end), kNoValue);
    }
    underived.clear();
}

GraphRecorder::GraphRecorder(const WavoGraph& graph, double cycle_time, const GraphStreams& streams)
    : m_graph(graph), m_cycle_time(cycle_time), m_buffers_given(streams.y.size()) {
    const std::size_t axes = graph.YCoorAxName.size();
    m_taken.resize(axes + 1);
    for (std::size_t i = 0; i < std::min(axes, streams.y.size()); ++i) {
        m_taken[i].value = streams.y[i];
    }
    m_taken.back().value = streams.x;
    CreateTriggers();
}

void GraphRecorder::CreateTriggers() {
    for (std::size_t i = 0; i < Axes(); ++i) {
        const TriggerTypeCode type = m_graph.Triggers[i].TriggerType;
        if (type == TriggerTypeCode::kNone) {
            continue;
        }
        m_TriggerData.push_back({i, TestOfTrigger(type)});
        const std::optional<RunState> initial = InitialRunState(type);
        if (initial.has_value()) {
            m_state = *initial;
            m_restart_state = *initial;
        }
    }
}

std::vector<GraphValue*> GraphRecorder::Values() const {
    std::vector<GraphValue*> values;
    for (const TakenValues& taken : m_taken) {
        if (taken.value != nullptr) {
            values.push_back(taken.value);
        }
    }
    return values;
}

double LatestTime(const GraphRecorder& recorder) {
    double latest = 0.0;
    for (const GraphValue* value : recorder.Values()) {
        latest = std::max(latest, value->LatestTime());
    }
    return latest;
}

double LongestRange(const GraphRecorder& recorder) {
    double longest = 0.0;
    for (const GraphValue* value : recorder.Values()) {
        longest = std::max(longest, value->TimeRange());
    }
    return longest;
}

StreamRows GraphRecorder::Rows() const {
    std::vector<const GraphValue*> streams;
    streams.reserve(m_taken.size());
    for (const TakenValues& taken : m_taken) {
        streams.push_back(taken.value);
    }
    return StreamRows(streams);
}

SampleStretch RowsOfSpan(const GraphRecorder& recorder, const StreamRows& rows) {
    SampleStretch span;
    span.count = rows.CountOfSpan(GraphTimeRange(recorder.Graph()));
    span.position = rows.Count() - span.count;
    const bool is_over_axis = recorder.Graph().XCoorType == CoorType::kAxis;
    if (is_over_axis && recorder.Taken(recorder.Axes()).value != nullptr) {
        // A point has two values.
        const std::uint64_t first = std::max(span.position, rows.FirstOfAll());
        span.count -= first - span.position;
        span.position = first;
    }
    return span;
}

double TimeBeforeSpan(const GraphRecorder& recorder, const StreamRows& rows) {
    const double held = static_cast<double>(rows.Count()) * recorder.CycleTime();
    return std::max(0.0, held - GraphTimeRange(recorder.Graph()));
}

void CopyRows(const StreamRows& rows, std::size_t stream, const SampleStretch& wanted,
              std::vector<double>& out) {
    rows.Copy(stream, wanted.position, wanted.count, out);
    for (const SampleStretch& none : rows.Underived(stream, wanted.position, wanted.count)) {
        std::fill_n(out.begin() + static_cast<std::ptrdiff_t>(none.position), none.count, kNoValue);
    }
}

void GraphRecorder::Discard() {
    for (TakenValues& taken : m_taken) {
        taken.Discard();
    }
}

void GraphRecorder::LeaveOutUnderived() {
    for (TakenValues& taken : m_taken) {
        taken.LeaveOutUnderived();
    }
}

void GraphRecorder::TakeRows(const StreamRows& rows, const SampleStretch& taken) {
    m_new_lines = rows.LinesOf(taken.position, taken.count);
    for (std::size_t i = 0; i < m_taken.size(); ++i) {
        if (m_taken[i].value != nullptr) {
            rows.Copy(i, taken.position, taken.count, m_taken[i].values);
            m_taken[i].underived = rows.Underived(i, taken.position, taken.count);
            m_taken[i].origin = rows.OriginOf(i, taken.position, taken.count);
        }
    }
}

void GraphRecorder::TakeHeld() {
    const StreamRows rows = Rows();
    SampleStretch held = RowsOfSpan(*this, rows);
    held.count -= std::min(held.count, rows.Count() - rows.FirstNew());
    TakeRows(rows, held);
    KeepLines(0);
}

bool GraphRecorder::TakeNewest() {
    const StreamRows rows = Rows();
    const bool refill =
        m_refill && std::any_of(m_taken.begin(), m_taken.end() - 1,
                                [](const TakenValues& y) { return y.value != nullptr; });
    if (refill) {
        m_refill = false;
        BeginLines();
        TakeRows(rows, RowsOfSpan(*this, rows));
    } else {
        TakeNew(rows);
    }
    return refill;
}

void GraphRecorder::TakeNew(const StreamRows& rows) {
    const std::uint64_t first = rows.FirstNew();
    if (!rows.NewValuesAreEven()) {
        TakeRows(rows, {first, rows.Count() - first});
    } else {
        for (std::size_t i = 0; i < m_taken.size(); ++i) {
            TakenValues& taken = m_taken[i];
            if (taken.value != nullptr) {
                taken.value->GetNewValues(taken.values, taken.start_time);
                taken.underived = rows.Underived(i, first, taken.values.size());
                taken.origin = {&taken.value->Values(), taken.value->FirstNewSequence()};
            }
        }
        m_new_lines = rows.LinesOf(first, rows.Count() - first);
    }
    // A stream that is younger than others goes on where they do.
    const double start = rows.StartOfNew();
    for (TakenValues& taken : m_taken) {
        taken.start_time = start;
    }
}

void GraphRecorder::BeginLines() {
    m_lines.Clear();
    m_rows = 0;
}

void GraphRecorder::KeepLines(std::uint64_t dropped) {
    std::uint64_t kept = 0;
    for (const TakenValues& taken : m_taken) {
        kept = std::max<std::uint64_t>(kept, taken.values.size());
    }
    for (const LineLog::Run& run : m_new_lines) {
        const std::uint64_t begin = std::max(run.sequence, dropped);
        const std::uint64_t end = std::min(run.sequence + run.count, dropped + kept);
        if (begin < end) {
            m_lines.Expect(m_rows + begin - dropped,
                           run.line + static_cast<std::int64_t>(begin - run.sequence));
        }
    }
    m_new_lines.clear();
    m_rows += kept;
    // A curve holds a point more than there are steps in its range.
    const std::uint64_t held = ToCount(GraphTimeRange(m_graph) / m_cycle_time, kAnyCount - 2) + 2;
    if (m_rows > held) {
        m_lines.ForgetBefore(m_rows - held);
    }
}

bool GraphRecorder::IsTrigger(std::uint64_t& index) const {
    for (const TriggerData& trigger : m_TriggerData) {
        if (trigger.pTestTriggerEvent == nullptr) {
            MERRLOG(record_texts::kTriggerWithoutTest);
            continue;
        }
        const double limit = m_graph.Triggers[trigger.axis].TriggerValue;
        if (trigger.pTestTriggerEvent(m_taken[trigger.axis].values, index, limit)) {
            return true;
        }
    }
    return false;
}

TriggerEvent GraphRecorder::TestTriggers() {
    TriggerEvent event = TriggerEvent::kNone;
    std::uint64_t dropped = 0;
    switch (m_state) {
        case RunState::kRunning:
            break;
        case RunState::kWaitingForStart:
            event = WaitForStart(dropped);
            break;
        case RunState::kRunningAfterStart:
            event = RunAfterStart();
            break;
        case RunState::kWaitingForStop:
            WaitForStop();
            break;
        case RunState::kStoppedAfterStart:
        case RunState::kStoppedAfterStop:
            StopValues();
            Discard();
            break;
    }
    KeepLines(dropped);
    for (TakenValues& taken : m_taken) {
        taken.origin.all_follow = m_state == RunState::kRunning;
    }
    return event;
}

TriggerEvent GraphRecorder::WaitForStart(std::uint64_t& dropped) {
    std::uint64_t index = 0;
    if (!IsTrigger(index)) {
        Discard();
        return TriggerEvent::kNone;
    }
    dropped = index;
    BeginLines();
    for (std::size_t i = 0; i < m_taken.size(); ++i) {
        const bool is_used = i < Axes() || !IsOverTime();
        if (is_used && m_taken[i].values.size() > 1) {
            m_taken[i].DropFront(index);
            m_taken[i].start_time = 0.0;
        }
    }
    m_state = RunState::kRunningAfterStart;
    m_elapsed = 0.0;
    return TriggerEvent::kStarted;
}

TriggerEvent GraphRecorder::RunAfterStart() {
    if (Axes() == 0) {
        return TriggerEvent::kNone;
    }
    m_elapsed += static_cast<double>(m_taken.front().values.size()) * m_cycle_time;
    const bool over_time = m_graph.XScale.ScaleType == ScaleTypeCode::kTime;
    const double range = over_time ? m_graph.XScale.TimeRange : m_graph.FadeOutTime;
    if (m_elapsed < range - kSameTime) {
        return TriggerEvent::kNone;
    }
    if (over_time) {
        const std::uint64_t beyond = ToCount((m_elapsed - range) / m_cycle_time + 0.5, kAnyCount);
        for (TakenValues& taken : m_taken) {
            if (taken.values.size() >= beyond) {
                taken.DropBack(beyond);
            }
        }
    }
    m_state = RunState::kStoppedAfterStart;
    return TriggerEvent::kEnded;
}

void GraphRecorder::WaitForStop() {
    std::uint64_t index = 0;
    if (!IsTrigger(index)) {
        return;
    }
    m_state = RunState::kStoppedAfterStop;
    for (TakenValues& taken : m_taken) {
        const std::uint64_t size = taken.values.size();
        taken.DropBack(size > index ? size - index - 1 : 0);
    }
    StopValues();
}

void GraphRecorder::StopValues() {
    for (GraphValue* value : Values()) {
        value->SetEnabled(false);
    }
}

void GraphRecorder::Restart() {
    if (m_state != RunState::kRunning) {
        m_state = m_restart_state;
    }
    m_elapsed = 0.0;
    if (m_restart_asked) {
        for (GraphValue* value : Values()) {
            value->Reset();
        }
        m_restart_asked = false;
    }
    m_refill = true;
}

void GraphRecorder::RestartAfterTrigger() {
    if (!IsStopped(m_state)) {
        return;
    }
    m_restart_asked |= m_restart_state == RunState::kWaitingForStop;
    m_state = m_restart_state;
}

void GraphRecorder::LeaveTriggers() {
    m_refill = true;
    if (IsStopped(m_state)) {
        StopValues();
    }
    m_state = RunState::kRunning;
}

void GraphRecorder::Detach() {
    for (TakenValues& taken : m_taken) {
        taken.value = nullptr;
    }
}

}  // namespace wavo
