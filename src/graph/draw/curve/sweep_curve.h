// A curve that sweeps from left to right and, when it has reached the right border, goes on from
// the left and overwrites its oldest samples. Places are the steps of the sweep.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "graph/draw/curve/time_curve.h"

namespace wavo {

class SweepCurve final : public TimeCurve {
 public:
    using TimeCurve::TimeCurve;

    /// The sweep goes on by one step, or begins at 0 when `at_start` is set or the step would lead
    /// beyond `range` seconds.
    bool Add(std::span<const double> samples, bool at_start, double range,
             const SampleOrigin& origin = {}) override;

    /// Time of the newest sample of the sweep, seconds.
    [[nodiscard]] double SweepPosition() const { return static_cast<double>(m_sweep) * Step(); }

 private:
    /// A sample whose step is not the one after that of the sample before.
    struct Anchor {
        std::uint64_t sequence;
        std::uint64_t step;
    };

    // TimeCurve
    void Cleared() override;
    [[nodiscard]] double OwnTime(std::uint64_t place) const override;
    [[nodiscard]] std::uint64_t OwnWriteIndex() const override;
    [[nodiscard]] std::vector<CurveRun> OwnRuns() const override;

    void ForgetOldAnchors();

    std::int64_t m_sweep = -1;        // step that the next sample follows; -1: it begins at 0
    std::uint64_t m_newest_step = 0;  // of a sweep
    std::deque<Anchor> m_anchors;
};

}  // namespace wavo
