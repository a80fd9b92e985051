// How a table is laid out, found from its beginning.
#pragma once

#include <string>
#include <string_view>

#include "support/fault.h"

namespace wavo::tables {

struct TableLayout {
    char separator = ',';   ///< or kNoSeparator
    bool has_names = true;  ///< the first line has the names of the columns
    /// Before each number stands the name of its column, as older versions of LinuxCNC's halscope
    /// write it. Then has_names is false.
    bool has_labels = false;
    /// Seconds per line, where the text tells it before the table; else 0.
    double cycle_time = 0.0;
    std::size_t lines_before = 0;  ///< lines of text before the table, without blank ones

    friend bool operator==(const TableLayout&, const TableLayout&) = default;
};

/// Looks at the beginning of a text, some lines of it. Of semicolon, tab and comma the first
/// separates that makes as many fields of the first line as of the second, else the first that
/// makes any; where none does, blanks do if they separate as many fields as numbers in the second
/// line. A line of names has a field that is no number. The fault says, without the file, why this
/// is no table.
Expected<TableLayout> FindLayout(std::string_view beginning);

}  // namespace wavo::tables
