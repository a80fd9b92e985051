// The beginning of a table, and what can be told from it: what a user is asked before it is
// imported.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/fault.h"
#include "tables/table_layout.h"

namespace wavo::tables {

/// Most columns of a table that is imported.
inline constexpr std::size_t kMostImportedColumns = 10'000;

/// When the lines of a table are.
struct TimeChoice {
    /// The column with the time; without one, the lines are cycle_time apart.
    std::optional<std::size_t> column;
    double unit = 1.0;          ///< seconds per unit of the column
    double cycle_time = 0.001;  ///< seconds per line, without a column

    friend bool operator==(const TimeChoice&, const TimeChoice&) = default;
};

/// Whether lines can be so many seconds apart.
bool IsCycleTime(double seconds);

struct TablePreview {
    /// Rows and columns that are kept as texts.
    static constexpr std::size_t kRows = 20;
    static constexpr std::size_t kColumns = 100;

    std::string path;
    TableLayout layout;
    std::vector<std::string> names;  ///< of all columns, each but once, not empty, without commas
    /// Per column: the rows hold texts there, no numbers. Such columns are not imported.
    std::vector<bool> is_text;
    std::vector<std::vector<std::string>> rows;  ///< as they stand in the text
    /// What the table itself tells of its time, or what its names and numbers let expect; nothing
    /// when it has to be asked.
    std::optional<TimeChoice> guess;

    /// The same for tables with the same columns.
    [[nodiscard]] std::string Key() const;
};

/// Reads the beginning of a table. The fault names the file and says why it is none.
Expected<TablePreview> PreviewTable(const std::string& path);

}  // namespace wavo::tables
