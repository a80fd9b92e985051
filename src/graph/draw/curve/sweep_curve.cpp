#include "graph/draw/curve/sweep_curve.h"

#include <algorithm>

namespace wavo {

namespace {

/// Sweep times beyond the range by less than this still belong to the sweep.
constexpr double kTimeTolerance = 1e-6;

}  // namespace

void SweepCurve::Cleared() {
    m_sweep = -1;
    m_anchors.clear();
}

bool SweepCurve::Add(std::span<const double> samples, bool at_start, double range,
                     const SampleOrigin& origin) {
    const double end = range + kTimeTolerance;
    const double next = static_cast<double>(m_sweep + 1) * Step();
    m_sweep = at_start || next > end ? 0 : m_sweep + 1;
    const std::uint64_t first = Own().Appended();
    auto step = static_cast<std::uint64_t>(m_sweep);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (m_anchors.empty() || step != m_newest_step + 1) {
            m_anchors.push_back({first + i, step});
        }
        m_newest_step = step;
        m_sweep = static_cast<std::int64_t>(step);
        ++step;
        if (static_cast<double>(step) * Step() > end) {
            // The sweep has arrived at the right border, which is the left one of the next sweep:
            // the next sample stands one step from it.
            m_sweep = 0;
            step = 1;
        }
    }
    Push(samples, origin);
    ForgetOldAnchors();
    return true;
}

void SweepCurve::ForgetOldAnchors() {
    if (Own().Size() == 0) {
        m_anchors.clear();
    }
    while (m_anchors.size() > 1 && m_anchors[1].sequence <= Own().FirstSequence()) {
        m_anchors.pop_front();
    }
}

double SweepCurve::OwnTime(std::uint64_t place) const {
    const std::uint64_t sequence = Own().FirstSequence() + PositionOf(place);
    auto anchor = m_anchors.rbegin();
    while (anchor->sequence > sequence) {
        ++anchor;
    }
    return static_cast<double>(anchor->step + (sequence - anchor->sequence)) * Step();
}

std::uint64_t SweepCurve::OwnWriteIndex() const {
    const std::uint64_t appended = Own().Appended();
    return appended <= MaxPoints() ? 0 : (appended - MaxPoints() - 1) % MaxPoints() + 1;
}

std::vector<CurveRun> SweepCurve::OwnRuns() const {
    std::vector<CurveRun> runs;
    const std::uint64_t oldest = Own().FirstSequence();
    std::uint64_t last_step = 0;
    for (std::size_t i = 0; i < m_anchors.size(); ++i) {
        const Anchor& anchor = m_anchors[i];
        const std::uint64_t begin = std::max(anchor.sequence, oldest);
        const std::uint64_t end =
            i + 1 < m_anchors.size() ? m_anchors[i + 1].sequence : Own().Appended();
        const std::uint64_t step = anchor.step + (begin - anchor.sequence);
        runs.push_back({begin - oldest, end - begin, step, i > 0 && last_step <= step});
        last_step = step + (end - begin) - 1;
    }
    return runs;
}

}  // namespace wavo
