// Numbers in the fields of a table.
#pragma once

#include <string_view>

namespace wavo::tables {

enum class NumberKind {
    kValue,
    kMissing,   ///< the field is empty, or "nan" in any case
    kNoNumber,  ///< anything else
};

/// Reads a field as the nearest double, whatever the locale. Forms are "1", "+.5", "-2e-3", "inf".
/// `decimal_point` is '.' or ','; when it is 0, either is taken, and becomes that of the next
/// fields. What is too large or too small for a double is no number.
NumberKind ReadNumber(std::string_view field, char& decimal_point, double& value);

}  // namespace wavo::tables
