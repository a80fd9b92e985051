// Comparing a run with good ones.
#pragma once

#include <string>

#include "programs/report_options.h"
#include "programs/table_file.h"

namespace wavo::programs {

/// Aligns each axis of the file with the first good run by best match of the first axis, compares
/// it with the band of all of them, and writes the files asked for. As RunReport.
int RunCompare(const ReportOptions& options, const TableFile& file, std::string* output,
               std::string* error);

}  // namespace wavo::programs
