// Command line of wavo_report.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "measure/axis_test.h"
#include "measure/circle_test.h"

namespace wavo::programs {

enum class ReportKind { kCircle, kAxis, kCompare };

struct ReportOptions {
    ReportKind kind = ReportKind::kCircle;
    std::string file;               ///< with the values, UTF-8
    std::vector<std::string> axes;  ///< of the circle two; empty: those that suit
    double cycle_time = 0.0;        ///< s; 0: that of the recording, 0.001 of a table
    std::string out;                ///< PDF to write; empty: none
    std::string json;               ///< JSON to write; empty: none
    std::string limits;             ///< INI file; empty: none
    std::string machine;
    std::string program;
    std::string date;                  ///< empty: that of the file
    measure::CircleSetup circle;       ///< feed in mm/s
    std::optional<double> polar_step;  ///< um per grid circle
    measure::AxisSetup axis;
    std::vector<std::string> references;  ///< of a comparison: good runs
    std::optional<double> tolerance;      ///< of a comparison, units of the axes
    std::optional<double> spread;         ///< the same as a multiple of the spread of good runs
    std::string junit;                    ///< XML to write; empty: none
};

enum class ReportOutcome { kRun, kHelp, kVersion, kError };

/// Reads the arguments after the program's name. kError: `*error` tells what is wrong with them.
ReportOutcome ParseReportOptions(std::span<const std::string> arguments, ReportOptions* options,
                                 std::string* error);

/// The text of --help.
std::string ReportHelp();

}  // namespace wavo::programs
