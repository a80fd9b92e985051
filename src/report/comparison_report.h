// A comparison with good runs as JSON, and as XML for programs that gather the results of tests.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "measure/reference_test.h"
#include "report/chart.h"
#include "report/circle_report.h"

namespace wavo::report {

struct ComparisonReport {
    ReportHeader header;                  ///< its file: that was compared
    std::vector<std::string> references;  ///< paths of the good runs
    std::size_t lines = 0;                ///< that were compared with them
    double cycle_time = 0.001;            ///< s
    std::vector<std::string> notes;       ///< sentences for people
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
