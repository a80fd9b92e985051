#include "measure/reference_test.h"

#include <algorithm>
#include <utility>

#include "measure/words.h"

namespace wavo::measure {

namespace {

constexpr double kLeastLikeness = 0.5;

}  // namespace

Steps<Told<Match>> MatchRunsInSteps(RunColumns reference, RunColumns run) {
    auto best = co_await BestMatchInSteps(std::move(reference), std::move(run));
    if (best && best->likeness < kLeastLikeness) {
        co_return Told<Match>::Not("nothing in it is like the reference");
    }
    co_return best;
}

bool IsAllTold(const RunComparison& comparison) {
    return std::ranges::all_of(comparison.axes, [](const AxisComparison& axis) {
        return axis.compared.value.has_value();
    });
}

bool HasPassed(const RunComparison& comparison) {
    return std::ranges::all_of(comparison.axes, [](const AxisComparison& axis) {
        return axis.compared && axis.compared->passed;
    });
}

namespace {

/// The band of an axis about runs that lie so in the first of them.
Steps<ToleranceBand> BandInSteps(std::vector<std::span<const double>> runs,
                                 std::span<const std::int64_t> shifts, Tolerance tolerance) {
    const std::size_t size = runs.front().size();
    if (runs.size() == 1) {
        co_return AbsoluteBand(runs.front(), tolerance.absolute);
    }
    const std::vector<double> zeros(size, 0.0);
    std::vector<std::vector<double>> moved(runs.size());
    for (std::size_t i = 1; i < runs.size(); ++i) {
        moved[i] = DifferenceFrom(zeros, runs[i], shifts[i]);
        runs[i] = moved[i];
        co_await Pause{};
    }
    const double times = tolerance.spread.value_or(0.0);
    ToleranceBand band = co_await SpreadBandInSteps(runs, times, tolerance.absolute);
    co_return band;
}

}  // namespace

Steps<Told<RunComparison>> CompareRunsInSteps(std::vector<std::string> axes,
                                              std::vector<RunColumns> references, RunColumns run,
                                              Tolerance tolerance,
                                              std::optional<std::int64_t> shift) {
    RunComparison comparison;
    if (shift) {
        comparison.shift = *shift;
    } else {
        const auto match = co_await MatchRunsInSteps(references.front(), run);
        if (!match) {
            co_return Told<RunComparison>::Not(match.reason);
        }
        comparison.shift = match->shift;
        comparison.likeness = match->likeness;
    }
    std::vector<std::int64_t> shifts{0};
    for (std::size_t i = 1; i < references.size(); ++i) {
        const auto match = co_await MatchRunsInSteps(references.front(), references[i]);
        if (!match) {
            co_return Told<RunComparison>::Not("good run " + std::to_string(i + 1) + ": " +
                                               match.reason);
        }
        shifts.push_back(match->shift);
    }
    for (std::size_t axis = 0; axis < axes.size(); ++axis) {
        std::vector<std::span<const double>> runs;
        for (std::size_t i = 0; i < shifts.size(); ++i) {
            runs.push_back(references[i][axis]);
        }
        AxisComparison& compared = comparison.axes.emplace_back();
        compared.axis = axes[axis];
        compared.band = co_await BandInSteps(runs, shifts, tolerance);
        compared.compared = co_await CompareInSteps(compared.band, run[axis], comparison.shift);
    }
    co_return comparison;
}

std::string CoverageOf(const RunComparison& comparison) {
    std::size_t compared = 0;
    std::size_t lines = 0;
    for (const AxisComparison& axis : comparison.axes) {
        compared = std::max(compared, axis.compared ? axis.compared->compared : 0);
        lines = std::max(lines, axis.band.middle.size());
    }
    return Words("%zu of %zu lines of the reference compared", compared, lines);
}

std::string TextOf(const AxisComparison& axis, double cycle_time) {
    if (!axis.compared) {
        return axis.axis + ": not compared: " + axis.compared.reason;
    }
    const Compared& c = *axis.compared;
    return axis.axis + Words(
                           ": %s; worst %s (tolerance %s) at %s s of the reference; %zu of %zu "
                           "lines outside",
                           c.passed ? "pass" : "FAIL", Decimals(c.worst, 6).c_str(),
                           Decimals(c.worst_width, 6).c_str(),
                           Decimals(static_cast<double>(c.worst_at) * cycle_time, 3).c_str(),
                           c.outside, c.compared);
}

}  // namespace wavo::measure
