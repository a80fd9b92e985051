// Tables of numbers that tests read.
#pragma once

#include <string>

#include "tables/column_table.h"

namespace wavo::measure {

using tables::ColumnTable;

/// A file of the tests' own data, or with "recordings/" before its name of data/recordings. Fails
/// the test and gives an empty table when it cannot be read.
ColumnTable LoadTable(const std::string& name);

/// The text of a file of the tests' own data.
std::string LoadText(const std::string& name);

}  // namespace wavo::measure
