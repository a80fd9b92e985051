// What wavo_report does with its options.
#pragma once

#include <string>
#include <vector>

#include "programs/report_options.h"

namespace wavo::programs {

inline constexpr int kWrongUse = 2;
inline constexpr int kNotEvaluated = 3;
/// Seconds per line where nobody tells it.
inline constexpr double kUsualCycleTime = 0.001;

/// A line for each of them.
std::string NotesText(const std::vector<std::string>& notes);

/// Reads, evaluates, writes the files; `*output` gets what the user reads, `*error` what is wrong.
/// Returns the exit code. `made_by`: name and version of the program. REQUIRES: a QGuiApplication
/// where a PDF is asked for.
int RunReport(const ReportOptions& options, const std::string& made_by, std::string* output,
              std::string* error);

}  // namespace wavo::programs
