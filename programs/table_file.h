// Tables of numbers as files: comma-separated text, plain or compressed with gzip.
#pragma once

#include <string>

#include "measure/column_table.h"

namespace wavo::programs {

/// Reads a file; `path` is UTF-8. Not told: the file and what is wrong with it.
measure::Told<measure::ColumnTable> ReadTable(const std::string& path);

/// The whole of a file; not told why it cannot be read.
measure::Told<std::string> ReadWholeFile(const std::string& path);

/// Writes a file anew; false when it cannot be written.
bool WriteWholeFile(const std::string& path, const std::string& text);

}  // namespace wavo::programs
