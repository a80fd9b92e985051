#include "view/axis_watch.h"

#include <algorithm>
#include <utility>

namespace wavo {

namespace {

constexpr double kFarthestReach = 1.0;  // s
constexpr std::size_t kContourLinesPerStep = 1024;

/// The contour error of the axes together.
measure::Steps<bool> TakeContour(AxisOutcome* outcome) {
    double lag = 0.0;  // s
    std::vector<measure::ContourAxis> path;
    for (const AxisOutcome::Axis& axis : outcome->axes) {
        lag = std::max(lag, axis.result.following.lag.value.value_or(0.0) / 1000.0);
        path.push_back({axis.commanded, axis.actual});
    }
    const std::size_t lines = path.front().actual.size();
    outcome->contour_reach =
        measure::ContourReach(std::min(lag, kFarthestReach), outcome->cycle_time);
    const measure::ContourSetup setup{.reach = outcome->contour_reach};
    for (std::size_t first = 0; first < lines; first += kContourLinesPerStep) {
        const std::vector<double> errors = measure::ContourErrors(
            path, {first, std::min(first + kContourLinesPerStep, lines)}, setup);
        outcome->contour.insert(outcome->contour.end(), errors.begin(), errors.end());
        co_await measure::Pause{};
    }
    outcome->contour_figures = measure::ContourFiguresOf(path, outcome->contour);
    co_return true;
}

measure::Steps<bool> TestAxes(AxisOutcome* outcome) {
    for (AxisOutcome::Axis& axis : outcome->axes) {
        axis.result = co_await measure::TestAxisInSteps(axis.commanded, axis.actual,
                                                        outcome->cycle_time, outcome->setup);
    }
    if (outcome->axes.size() == 2 || outcome->axes.size() == 3) {
        co_await TakeContour(outcome);
    }
    co_return true;
}

}  // namespace

AxisWatch::AxisWatch(Session& session, const PastView& past)
    : m_session(session), m_gatherer(session, past), m_work([this] { return Work(); }) {}

void AxisWatch::SetActive(bool active) {
    if (std::exchange(m_is_active, active) == active) {
        return;
    }
    if (active) {
        OnChanged();
        return;
    }
    m_steps.reset();
    m_next.reset();
    m_gatherer.Forget();
    m_lines.reset();
    m_outcome.reset();
}

void AxisWatch::Ask(const AxisQuestion& question) {
    m_question = question;
    m_lines.reset();
    OnChanged();
}

void AxisWatch::TakePairs() {
    std::vector<measure::AxisPair> pairs = measure::FindAxisPairs(m_session.Values().AxisNames());
    const bool is_same = std::ranges::equal(pairs, m_pairs, [](const auto& a, const auto& b) {
        return a.commanded == b.commanded && a.actual == b.actual;
    });
    std::vector<std::string> columns;
    for (const measure::AxisPair& pair : pairs) {
        columns.insert(columns.end(), {pair.commanded, pair.actual});
    }
    if (is_same && (m_gatherer.IsTaking() || columns.empty())) {
        if (!columns.empty()) {
            m_gatherer.Take(columns);  // behind a recording the live ones
        }
        return;
    }
    m_pairs = std::move(pairs);
    m_gatherer.Leave();
    m_lines.reset();
    m_outcome.reset();
    if (!columns.empty()) {
        m_gatherer.Take(columns);
    }
    Q_EMIT Changed();
}

void AxisWatch::OnChanged() {
    if (!m_is_active) {
        return;
    }
    TakePairs();
    const GatheredLines now = m_gatherer.Now();
    if (m_lines == now) {
        return;
    }
    m_steps.reset();
    m_next.reset();
    m_lines.reset();
    if (m_outcome != nullptr && m_outcome->recording != now.recording) {
        m_outcome.reset();
        Q_EMIT Changed();
    }
    if (m_pairs.empty()) {
        SetState(State::kNoPairs);
    } else if (m_gatherer.IsLive()) {
        SetState(State::kFlowing);
    } else if (now.lines.Count() == 0) {
        SetState(State::kNoValues);
    } else if (now.lines.Count() > kMostLines) {
        m_outcome.reset();
        SetState(State::kTooMany);
    } else {
        Begin(now);
    }
}

void AxisWatch::Begin(const GatheredLines& lines) {
    m_lines = lines;
    m_next = std::make_unique<AxisOutcome>();
    for (const measure::AxisPair& pair : m_pairs) {
        m_next->axes.push_back({pair, {}, {}, {}});
    }
    m_next->setup = m_question.setup;
    m_next->first_line = lines.lines.begin;
    m_next->cycle_time = lines.cycle_time;
    m_next->recording = lines.recording;
    m_next->data = m_gatherer.Name();
    m_copied = 0;
    SetState(State::kWorking);
    m_work.Begin();
}

void AxisWatch::SetState(State state) {
    if (std::exchange(m_state, state) != state) {
        Q_EMIT Changed();
    }
}

bool AxisWatch::Work() {
    if (m_next == nullptr) {
        return false;
    }
    if (!m_steps) {
        if (CopySome()) {
            return true;
        }
        if (m_next == nullptr) {
            return false;
        }
        std::erase_if(m_next->axes, [&](const AxisOutcome::Axis& axis) {
            return !m_question.axis.empty() && axis.names.axis != m_question.axis;
        });
        m_steps.emplace(TestAxes(m_next.get()));
        return true;
    }
    if (m_steps->Step()) {
        return true;
    }
    m_steps.reset();
    m_outcome = std::move(m_next);
    m_state = State::kDone;
    Q_EMIT Changed();
    return m_next != nullptr;
}

/// True when there is more to copy. Gives up when what was to be copied has gone.
bool AxisWatch::CopySome() {
    const std::int64_t left = m_lines->lines.Count() - m_copied;
    const auto count = static_cast<std::size_t>(std::min(left, LineGatherer::kLinesPerCopy));
    std::vector<std::span<double>> columns;
    for (AxisOutcome::Axis& axis : m_next->axes) {
        for (std::vector<double>* const column : {&axis.commanded, &axis.actual}) {
            column->resize(column->size() + count);
            columns.push_back(std::span(*column).last(count));
        }
    }
    if (!m_gatherer.Copy(*m_lines, m_lines->lines.begin + m_copied, columns)) {
        m_next.reset();
        return false;
    }
    m_copied += static_cast<std::int64_t>(count);
    return m_copied < m_lines->lines.Count();
}

}  // namespace wavo
