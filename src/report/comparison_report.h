// A comparison with good runs as JSON, and as XML for programs that gather the results of tests.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "measure/reference_test.h"
#include "report/chart.h"

namespace wavo::report {

struct ComparisonReport {
    std::string file;                     ///< that was compared: a path, or "live"
    std::vector<std::string> references;  ///< the same of the good runs
    double cycle_time = 0.001;            ///< s
    measure::RunComparison comparison;
};

/// "pass", "FAIL", "not told".
std::string VerdictOf(const measure::RunComparison& comparison);

/// Of an axis: differences from the good run and the band about it, over the time of the good run.
/// `run`: the values that were compared.
Chart DifferenceChart(const measure::AxisComparison& axis, std::span<const double> run,
                      std::int64_t shift, double cycle_time);

/// Of the schema "wavo-compare/1".
std::string ComparisonJson(const ComparisonReport& report);
/// A test case per axis, in the form of JUnit.
std::string ComparisonJunit(const ComparisonReport& report);

}  // namespace wavo::report
