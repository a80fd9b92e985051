// A curve that fills from the left and then scrolls, so that new values enter at the right.
//
// Invariant: times grow by addition of the step until the curve has scrolled once; from then on the
// time of a place is place x step.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "graph/draw/curve/time_curve.h"

namespace wavo {

class ScrollCurve final : public TimeCurve {
 public:
    using TimeCurve::TimeCurve;

    /// More than MaxPoints() samples at once are refused and reported.
    bool Add(std::span<const double> samples, bool at_start, double range,
             const SampleOrigin& origin = {}) override;

 private:
    // TimeCurve
    void Cleared() override { m_sums.clear(); }
    [[nodiscard]] double OwnTime(std::uint64_t place) const override;
    [[nodiscard]] std::vector<CurveRun> OwnRuns() const override { return {{0, Size(), 0, false}}; }
    [[nodiscard]] bool OwnTimesAreSums() const override { return Own().Appended() <= MaxPoints(); }

    std::vector<double> m_sums;  // times of every kSumDistance-th place, while times are sums
};

}  // namespace wavo
