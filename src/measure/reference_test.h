// Several axes of a run compared with those of good runs: aligned together, each within a tolerance
// band about the good ones.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "measure/comparison.h"
#include "measure/figure.h"
#include "measure/steps.h"

namespace wavo::measure {

/// What is allowed beside a good run.
struct Tolerance {
    /// To either side of the good run, of several of their mean, in the unit of the axis; of a
    /// spread the least.
    double absolute = 0.0;
    /// Times the standard deviation of several good runs; nothing: `absolute` alone.
    std::optional<double> spread = {};
};

/// Where a run lies in the first of the good ones. Not told when nothing in it is like that.
Steps<Told<Match>> MatchRunsInSteps(RunColumns reference, RunColumns run);

/// One axis against its band.
struct AxisComparison {
    std::string axis;
    ToleranceBand band;  ///< by place of the first good run
    Told<Compared> compared;
};

struct RunComparison {
    std::int64_t shift = 0;          ///< place i + shift of the run belongs to place i
    std::optional<double> likeness;  ///< of what was aligned by best match
    std::vector<AxisComparison> axes;
};

/// True when every axis was compared, and none is outside.
bool HasPassed(const RunComparison& comparison);
/// True when every axis could be compared.
bool IsAllTold(const RunComparison& comparison);

/// Compares a run; what the spans refer to has to stay until the end. The other good runs are
/// aligned with the first by best match. Without `shift` the run is, too; not told when nothing in
/// it is like the reference. REQUIRES: as many axes in all; one good run, with a spread two.
Steps<Told<RunComparison>> CompareRunsInSteps(std::vector<std::string> axes,
                                              std::vector<RunColumns> references, RunColumns run,
                                              Tolerance tolerance,
                                              std::optional<std::int64_t> shift);

/// "1199 of 2000 lines of the reference compared", of the axis that has the most.
std::string CoverageOf(const RunComparison& comparison);

/// "X: pass; worst 0.001250 (tolerance 0.002000) at 1.250 s of the reference; 0 of 4000 lines
/// outside", or why it was not compared. `cycle_time` in seconds.
std::string TextOf(const AxisComparison& axis, double cycle_time);

}  // namespace wavo::measure
