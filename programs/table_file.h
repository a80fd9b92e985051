// Values from files: recordings, and tables as text, plain or compressed with gzip.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "measure/figure.h"
#include "tables/column_table.h"

namespace wavo::programs {

/// The lines of a file.
struct TableFile {
    tables::ColumnTable table;
    std::optional<double> cycle_time;  ///< seconds per line, where the file tells it
    std::vector<std::string> notes;    ///< what is wrong with a recording, for people
};

/// Reads a file; `path` is UTF-8. Lines that a recording misses are lines of missing values. Not
/// told: the file and what is wrong with it.
measure::Told<TableFile> ReadTable(const std::string& path);

/// The whole of a file; not told why it cannot be read.
measure::Told<std::string> ReadWholeFile(const std::string& path);

/// Writes a file anew; false when it cannot be written.
bool WriteWholeFile(const std::string& path, const std::string& text);

}  // namespace wavo::programs
