// Comparing curves with those of a good run: alignment, difference, tolerance band. Those that take
// long there are in steps, too.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "measure/figure.h"
#include "measure/series.h"
#include "measure/steps.h"

namespace wavo::measure {

/// The columns of a run, one per axis, equally long.
using RunColumns = std::vector<std::span<const double>>;

/// How far values lie behind a reference.
struct Match {
    std::int64_t shift = 0;  ///< values[i + shift] belongs to reference[i]
    /// Twice the covariance over the sum of the variances in the overlap, of all axes: 1 for the
    /// same motion wherever it lies, 0 for nothing in common, -1 for the opposite.
    double likeness = 0.0;
    std::size_t overlap = 0;  ///< places in which both have values
};

/// The shift at which the axes together move most alike; each counts the same. Where several are as
/// good, the one in which the values lie on each other, then the one of the longest overlap.
/// Overlaps shorter than `least` of the shorter run do not count. Missing values are taken as the
/// mean. Not told for runs that are too short or do not move.
Told<Match> BestMatch(std::span<const double> reference, std::span<const double> values,
                      double least = 0.5);
Steps<Told<Match>> BestMatchInSteps(std::span<const double> reference,
                                    std::span<const double> values, double least = 0.5);
/// REQUIRES: as many axes in both.
Steps<Told<Match>> BestMatchInSteps(RunColumns reference, RunColumns values, double least = 0.5);

/// Values less the reference, place by place of the reference; NaN where either is missing.
std::vector<double> DifferenceFrom(std::span<const double> reference,
                                   std::span<const double> values, std::int64_t shift);

/// A band about a reference.
struct ToleranceBand {
    std::vector<double> middle;
    std::vector<double> width;  ///< to either side; NaN where nothing is asked
};

/// A band of the same width everywhere.
ToleranceBand AbsoluteBand(std::span<const double> reference, double width);

/// The mean of several good runs, and `times` their standard deviation, at least `least`. Places
/// that one run alone has have no deviation: NaN, unless `times` is 0. REQUIRES: two runs or more,
/// aligned.
ToleranceBand SpreadBand(std::span<const std::span<const double>> runs, double times, double least);
Steps<ToleranceBand> SpreadBandInSteps(std::vector<std::span<const double>> runs, double times,
                                       double least);

struct Compared {
    bool passed = false;
    std::size_t compared = 0;  ///< places that both have
    std::size_t outside = 0;   ///< of them out of the band
    std::size_t worst_at = 0;  ///< place in the reference where the values stand out furthest
    double worst = 0.0;        ///< difference there
    double worst_width = 0.0;  ///< of the band there
};

/// Not told where nothing could be compared.
Told<Compared> CompareWith(const ToleranceBand& band, std::span<const double> values,
                           std::int64_t shift);
Steps<Told<Compared>> CompareInSteps(const ToleranceBand& band, std::span<const double> values,
                                     std::int64_t shift);

}  // namespace wavo::measure
