#include "view/reference_watch.h"

#include <algorithm>
#include <utility>

namespace wavo {

namespace {

/// More lines are not evaluated at once, nor more values.
constexpr std::int64_t kMostComparedLines = 1'000'000;
constexpr std::int64_t kMostComparedValues = ReferenceRun::kMostValues;
/// Of more axes only those are kept that are asked for.
constexpr std::size_t kMostGathered = 16;

}  // namespace

ReferenceWatch::ReferenceWatch(Session& session, const GraphBoard& board, const PastView& past,
                               const GraphCursors& cursors, std::function<std::uint32_t()> selected)
    : m_session(session),
      m_past(past),
      m_cursors(cursors),
      m_triggers(session, board, std::move(selected)),
      m_gatherer(session, past),
      m_work([this] { return Work(); }) {}

void ReferenceWatch::SetActive(bool active) {
    if (std::exchange(m_is_active, active) == active) {
        return;
    }
    if (active) {
        if (!m_readings.empty()) {
            m_work.Begin();
        }
        OnChanged();
        return;
    }
    m_gatherer.Forget();
    m_gathered.clear();
    m_axes.clear();
    DropOutcome();
    Q_EMIT BehindChanged();
}

void ReferenceWatch::DropOutcome() {
    m_steps.reset();
    m_next.reset();
    m_outcome.reset();
    m_begun.reset();
    if (m_state == State::kDone) {
        m_state = State::kNoValues;  // until it is said anew
    }
}

void ReferenceWatch::Ask(const ReferenceQuestion& question) {
    m_question = question;
    m_begun.reset();
    OnChanged();
    Q_EMIT BehindChanged();
}

MaybeFault ReferenceWatch::Choose(const std::vector<ReferencePart>& parts) {
    std::vector<std::unique_ptr<ReferenceReading>> readings;
    for (const ReferencePart& part : parts) {
        auto reading = ReferenceReading::Begin(part);
        if (!reading) {
            return reading.Why();
        }
        readings.push_back(std::move(*reading));
    }
    const double cycle_time = readings.front()->Run()->CycleTime();
    for (const auto& reading : readings) {
        if (reading->Run()->CycleTime() != cycle_time) {
            return Fault{reading->Run()->Path() +
                         ": its lines are another time apart than those of " +
                         readings.front()->Run()->Path()};
        }
    }
    std::vector<ReferencePart> kept = parts;  // they may be those that are forgotten
    ForgetRuns();
    m_parts = std::move(kept);
    m_readings = std::move(readings);
    SetState(State::kReading);
    m_work.Begin();
    return std::nullopt;
}

MaybeFault ReferenceWatch::Add(const ReferencePart& part) {
    std::vector<ReferencePart> parts = m_parts;
    parts.push_back(part);
    return Choose(parts);
}

void ReferenceWatch::ForgetRuns() {
    m_parts.clear();
    m_readings.clear();
    m_runs.clear();
    DropOutcome();
}

void ReferenceWatch::Forget() {
    ForgetRuns();
    SetState(State::kNoReference);
    Q_EMIT Changed();
    Q_EMIT BehindChanged();
}

std::optional<ReferencePart> ReferenceWatch::Seen() const {
    const OpenRecording* const recording = m_session.Recording();
    if (recording == nullptr) {
        return std::nullopt;
    }
    ReferencePart part;
    part.recording = recording->Opened();
    part.lines = m_past.IsShown() ? m_past.Window().Seen() : recording->Lines();
    const std::optional<std::int64_t> cursor =
        m_cursors.IsShown() ? m_cursors.LineOf(CursorName::kA) : std::nullopt;
    if (cursor && *cursor >= part.lines.begin && *cursor < part.lines.end) {
        part.mark = *cursor - part.lines.begin;
    }
    return part;
}

std::vector<std::string> ReferenceWatch::CommonAxes() const {
    std::vector<std::string> common;
    if (m_runs.empty()) {
        return common;
    }
    for (const std::string& axis : m_session.Values().AxisNames()) {
        const bool is_in_all = std::ranges::all_of(m_runs, [&](const auto& run) {
            return std::ranges::find(run->Axes(), axis) != run->Axes().end();
        });
        if (is_in_all && std::ranges::find(common, axis) == common.end()) {
            common.push_back(axis);
        }
    }
    return common;
}

std::vector<std::string> ReferenceWatch::AskedAxes() const {
    std::vector<std::string> axes = CommonAxes();
    std::erase_if(axes, [&](const std::string& axis) {
        if (!m_question.axis.empty()) {
            return axis != m_question.axis;
        }
        return !m_question.all &&
               std::ranges::none_of(m_session.Graphs().Graphs(), [&](const WavoGraph& graph) {
                   const auto& y = graph.YCoorAxName;
                   return std::ranges::find(y, axis) != y.end() ||
                          (graph.XCoorType == CoorType::kAxis && graph.XCoorAxName == axis);
               });
    });
    return axes;
}

std::vector<std::string> ReferenceWatch::GatheredAxes() const {
    std::vector<std::string> axes = CommonAxes();
    return axes.size() > kMostGathered ? AskedAxes() : axes;
}

measure::Told<std::optional<std::int64_t>> ReferenceWatch::AskedShift(
    const LineRange& lines) const {
    using Shift = measure::Told<std::optional<std::int64_t>>;
    switch (m_question.alignment) {
        case ReferenceAlignment::kBestMatch:
            break;
        case ReferenceAlignment::kCursor: {
            const auto line = m_cursors.IsShown() ? m_cursors.LineOf(CursorName::kA) : std::nullopt;
            return line ? Shift(std::optional(*line - m_parts.front().mark))
                        : Shift::Not("Put cursor A to where the good run begins");
        }
        case ReferenceAlignment::kTrigger: {
            const auto shift = m_triggers.ShiftOf(lines);
            return shift ? Shift(shift.value) : Shift::Not(shift.reason);
        }
    }
    return Shift(std::nullopt);
}

ReferenceWatch::State ReferenceWatch::WhatKeeps(const GatheredLines& now) const {
    if (!m_readings.empty()) {
        return State::kReading;
    }
    if (m_runs.empty()) {
        return State::kNoReference;
    }
    if (m_axes.empty()) {
        return State::kNoAxes;
    }
    const measure::Tolerance& tolerance = m_question.tolerance;
    if (tolerance.absolute <= 0.0 && (!tolerance.spread || m_runs.size() < 2)) {
        return State::kNoTolerance;
    }
    if (m_session.Values().CycleTime() != m_runs.front()->CycleTime()) {
        return State::kOtherTime;
    }
    if (m_gatherer.IsLive()) {
        return State::kFlowing;
    }
    if (now.lines.Count() == 0) {
        return State::kNoValues;
    }
    const auto axes = static_cast<std::int64_t>(m_axes.size());
    return now.lines.Count() > std::min(kMostComparedLines, kMostComparedValues / axes)
               ? State::kTooMany
               : State::kDone;
}

GatheredLines ReferenceWatch::LinesToCompare() {
    GatheredLines now = m_gatherer.Now();
    if (std::exchange(m_keeps_compared, false)) {
        m_kept_window = m_past.Window().Seen();
    }
    const bool is_kept = m_kept_window && m_begun && m_session.Recording() != nullptr &&
                         m_begun->lines.recording == now.recording && m_past.IsShown() &&
                         m_past.Window().Seen() == *m_kept_window;
    if (is_kept) {
        now.lines = m_begun->lines.lines;
    } else {
        m_kept_window.reset();
    }
    return now;
}

void ReferenceWatch::OnChanged() {
    if (!m_is_active) {
        return;
    }
    const bool had_outcome = m_outcome != nullptr;
    std::vector<std::string> gathered = GatheredAxes();
    std::vector<std::string> axes = AskedAxes();
    if (gathered != m_gathered || axes != m_axes) {
        m_gathered = std::move(gathered);
        m_axes = std::move(axes);
        DropOutcome();
    }
    if (m_gathered.empty()) {
        m_gatherer.Forget();
    } else {
        m_gatherer.Take(m_gathered);
    }
    if (m_question.alignment == ReferenceAlignment::kTrigger && !m_runs.empty()) {
        m_triggers.Renew(*m_runs.front());
    }
    const GatheredLines now = LinesToCompare();
    State kept = WhatKeeps(now);
    measure::Told<std::optional<std::int64_t>> shift;
    if (kept == State::kDone) {
        shift = AskedShift(now.lines);
        kept = shift ? kept : State::kNotTold;
    }
    if (kept != State::kDone) {
        DropOutcome();
        SetState(kept, shift.reason);
        if (had_outcome) {
            Q_EMIT BehindChanged();
        }
        return;
    }
    const Begun begun{now, *shift};
    if (m_begun != begun) {
        Begin(begun);
    }
}

void ReferenceWatch::Begin(const Begun& begun) {
    m_steps.reset();
    if (m_outcome != nullptr && m_outcome->recording != begun.lines.recording) {
        DropOutcome();
    }
    m_begun = begun;
    m_next = std::make_unique<ReferenceOutcome>();
    m_next->axes = m_axes;
    m_next->run.resize(m_axes.size());
    m_next->first_line = begun.lines.lines.begin;
    m_next->cycle_time = begun.lines.cycle_time;
    m_next->recording = begun.lines.recording;
    m_next->data = m_gatherer.Name();
    for (const auto& run : m_runs) {
        m_next->references.push_back(run->Path());
    }
    m_copied = 0;
    SetState(State::kWorking);
    m_work.Begin();
}

void ReferenceWatch::SetState(State state, const std::string& reason) {
    const bool is_other = state != m_state || reason != m_reason;
    m_state = state;
    m_reason = reason;
    if (is_other) {
        Q_EMIT Changed();
    }
}

bool ReferenceWatch::Work() {
    if (!m_is_active) {
        return false;
    }
    if (!m_readings.empty()) {
        return Read();
    }
    if (m_next == nullptr) {
        return false;
    }
    if (!m_steps) {
        return CopySome();
    }
    if (m_steps->Step()) {
        return true;
    }
    TakeResult();
    return m_next != nullptr;
}

bool ReferenceWatch::Read() {
    for (const auto& reading : m_readings) {
        if (reading->Step()) {
            return true;
        }
    }
    for (const auto& reading : m_readings) {
        m_runs.push_back(reading->Run());
    }
    m_readings.clear();
    OnChanged();
    Q_EMIT Changed();
    Q_EMIT BehindChanged();
    return m_next != nullptr;
}

/// Gives up when what was to be copied has gone.
bool ReferenceWatch::CopySome() {
    const std::int64_t left = m_begun->lines.lines.Count() - m_copied;
    const auto count = static_cast<std::size_t>(std::min(left, LineGatherer::kLinesPerCopy));
    std::vector<std::span<double>> columns;
    for (const std::string& axis : m_gathered) {
        const auto asked = std::ranges::find(m_axes, axis);
        if (asked == m_axes.end()) {
            columns.emplace_back();
            continue;
        }
        std::vector<double>& column = m_next->run[static_cast<std::size_t>(asked - m_axes.begin())];
        column.resize(column.size() + count);
        columns.push_back(std::span(column).last(count));
    }
    if (!m_gatherer.Copy(m_begun->lines, m_begun->lines.lines.begin + m_copied, columns)) {
        m_next.reset();
        return false;
    }
    m_copied += static_cast<std::int64_t>(count);
    if (m_copied < m_begun->lines.lines.Count()) {
        return true;
    }
    std::vector<measure::RunColumns> references;
    for (const auto& run : m_runs) {
        measure::RunColumns good;
        for (const std::string& axis : m_axes) {
            good.emplace_back(run->ValuesOf(axis));
        }
        references.push_back(std::move(good));
    }
    std::optional<std::int64_t> shift = m_begun->shift;
    if (shift) {
        *shift -= m_next->first_line;
    }
    measure::Tolerance tolerance = m_question.tolerance;
    if (m_runs.size() < 2) {
        tolerance.spread.reset();
    }
    m_steps.emplace(measure::CompareRunsInSteps(
        m_axes, std::move(references), {m_next->run.begin(), m_next->run.end()}, tolerance, shift));
    return true;
}

void ReferenceWatch::TakeResult() {
    measure::Told<measure::RunComparison> told = std::move(m_steps->Result());
    m_steps.reset();
    std::unique_ptr<ReferenceOutcome> outcome = std::move(m_next);
    m_outcome.reset();
    if (told) {
        outcome->comparison = std::move(*told.value);
        m_outcome = std::move(outcome);
    }
    m_state = m_outcome != nullptr ? State::kDone : State::kNotTold;
    m_reason = told.reason;
    Q_EMIT Changed();
    Q_EMIT BehindChanged();
}

std::optional<std::int64_t> ReferenceWatch::ShiftIn(const GraphDraw& graph) const {
    const OpenRecording* const recording = m_session.Recording();
    const std::uint64_t number = recording == nullptr ? 0 : recording->Number();
    if (m_question.alignment == ReferenceAlignment::kCursor) {
        const auto shift = AskedShift({});
        return shift ? *shift : std::nullopt;
    }
    if (m_outcome != nullptr && m_outcome->recording == number) {
        return m_outcome->first_line + m_outcome->comparison.shift;
    }
    return m_question.alignment == ReferenceAlignment::kTrigger && recording == nullptr
               ? m_triggers.ShiftIn(graph)
               : std::nullopt;
}

std::optional<BackRun> ReferenceWatch::BehindOf(const GraphDraw& graph) const {
    if (!m_is_active || m_runs.empty() ||
        graph.Recorder().CycleTime() != m_runs.front()->CycleTime()) {
        return std::nullopt;
    }
    ReferenceRun& run = *m_runs.front();
    const WavoGraph& shown = graph.Graph();
    BackRun behind;
    behind.shift = ShiftIn(graph);
    behind.lines = run.Lines();
    behind.keeper = m_runs.front();
    for (std::size_t i = 0; i < shown.YCoorAxName.size(); ++i) {
        behind.y.push_back(run.StreamOf(shown.YCoorAxName[i], shown.YCoorAxDerivation[i]));
    }
    if (shown.XCoorType == CoorType::kAxis) {
        behind.x = run.StreamOf(shown.XCoorAxName, 0);
    }
    return behind;
}

}  // namespace wavo
