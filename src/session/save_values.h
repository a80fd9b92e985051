// The values of a graph as columns, and the text file that they are written to: a header with the
// names, then one line per row, numbers as "%.6f".
//
// Invariants:
// 1. The columns are copies: what happens to the graph while the file is written does not matter.
// 2. There are as many rows as the shortest column has values.
// 3. Whatever ends the writing early, the file begins with whole rows; after a cancel it holds
//    nothing else.
// 4. Names and numbers are written as they are, also where they contain the separator.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "settings/export_settings.h"
#include "support/fault.h"

namespace wavo {

class SaveValues {
 public:
    /// Told after each piece of the file how many of `total` rows are written; false ends the
    /// writing. Not asked again when all rows are.
    using Progress = std::function<bool(std::uint64_t written, std::uint64_t total)>;

    enum class Ending {
        kWritten,
        kCancelled,  ///< the rows written so far are in the file
    };

    /// The values of the column with this name, emptied; a new column at the end when there is
    /// none. They belong to this object and stay where they are until Clear.
    std::vector<double>& FindOrAddColumn(const std::string& axis_name);

    /// Removes all columns.
    void Clear();

    void SetSettings(const ExportSettings& settings) { m_settings = settings; }

    /// Writes the data file of the settings, over one that is there. `progress` may be empty. After
    /// a fault, whose cause is in the error trace, what was written stays.
    [[nodiscard]] Expected<Ending> CreateDataFile(const Progress& progress = {}) const;

 private:
    struct Column {
        std::string name;
        std::vector<double> values;
    };

    [[nodiscard]] std::string Header() const;
    [[nodiscard]] std::uint64_t RowCount() const;

    ExportSettings m_settings;
    std::deque<Column> m_columns;
};

}  // namespace wavo
