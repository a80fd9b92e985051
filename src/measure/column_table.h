// Columns of numbers from comma-separated text: one line of names, then one line per cycle.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "measure/figure.h"

namespace wavo::measure {

struct ColumnTable {
    std::vector<std::string> names;
    std::vector<std::vector<double>> columns;

    [[nodiscard]] std::size_t Lines() const { return columns.empty() ? 0 : columns.front().size(); }
    /// Empty where there is no column of that name.
    [[nodiscard]] std::span<const double> Find(std::string_view name) const;
    [[nodiscard]] bool Has(std::string_view name) const;
};

/// Reads text whose fields are separated by commas, semicolons or tabs, whichever its first line
/// holds. "nan" and empty fields are missing values; lines end in LF or CR LF, blank ones are
/// skipped. A column "cycle" numbers the lines: cycles that are not there become lines of missing
/// values. Otherwise told which line is wrong, and why.
Told<ColumnTable> ParseColumns(std::string_view text);

}  // namespace wavo::measure
