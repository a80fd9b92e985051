// Columns of numbers from a table: one line of names, then one line per cycle.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/fault.h"
#include "tables/table_bytes.h"

namespace wavo::tables {

struct ColumnTable {
    std::vector<std::string> names;
    std::vector<std::vector<double>> columns;

    [[nodiscard]] std::size_t Lines() const { return columns.empty() ? 0 : columns.front().size(); }
    /// Empty where there is no column of that name.
    [[nodiscard]] std::span<const double> Find(std::string_view name) const;
    [[nodiscard]] bool Has(std::string_view name) const;
};

/// Reads a table whole. "nan" and empty fields are missing values. A column "cycle" numbers the
/// lines: cycles that are not there become lines of missing values. The fault says which line is
/// wrong, and why, or that the gzip data is damaged or cut off.
Expected<ColumnTable> ReadColumns(std::unique_ptr<TableBytes> bytes);

/// The same from text in memory.
Expected<ColumnTable> ParseColumns(std::string_view text);

}  // namespace wavo::tables
