// Comparing a run with good ones.
#pragma once

#include <string>

#include "measure/column_table.h"
#include "programs/report_options.h"

namespace wavo::programs {

/// Aligns each axis of the table with the first good run by best match of the first axis, compares
/// it with the band of all of them, and writes the files asked for. As RunReport.
int RunCompare(const ReportOptions& options, const measure::ColumnTable& table, std::string* output,
               std::string* error);

}  // namespace wavo::programs
