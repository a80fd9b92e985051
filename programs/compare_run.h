// Comparing a run with good ones.
#pragma once

#include <string>

#include "programs/report_options.h"
#include "programs/table_file.h"

namespace wavo::programs {

/// Aligns the file and the other good runs with the first one by best match of the axis that fits
/// best, compares it with the band of all of them, and writes the files asked for. As RunReport.
int RunCompare(const ReportOptions& options, const TableFile& file, std::string* output,
               std::string* error);

}  // namespace wavo::programs
