// Comparing a run with good ones.
#pragma once

#include <string>

#include "programs/report_options.h"
#include "programs/table_file.h"
#include "report/circle_report.h"

namespace wavo::programs {

/// Aligns the file and the other good runs with the first one by best match, compares it with the
/// band of all of them, and writes the files asked for, also when it could not be compared. As
/// RunReport.
int RunCompare(const ReportOptions& options, const TableFile& file,
               const report::ReportHeader& header, std::string* output, std::string* error);

}  // namespace wavo::programs
