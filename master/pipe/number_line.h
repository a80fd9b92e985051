// One line of text with numbers in it.
//
// Fields stand between separators: a tab, a comma or a semicolon separates two fields wherever it
// stands, blanks around a field do not count. Where blanks separate, any number of blanks and tabs
// is one separator, and those at the ends of the line separate nothing.
//
// An empty field and "nan" are missing values. The decimal point is a point, or a comma where
// commas do not separate, whatever the locale.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wavo::master {

enum class Separator : char { kBlank = ' ', kTab = '\t', kComma = ',', kSemicolon = ';' };

/// The separator of a line: the first of semicolon, tab and comma that stands in it, else blanks.
Separator FindSeparator(std::string_view line);

/// The fields of a line.
std::vector<std::string_view> SplitFields(std::string_view line, Separator separator);

/// Whether a field is a number or a missing value.
bool IsValue(std::string_view field, Separator separator);

enum class LineFault {
    kNone,
    kTooFewFields,
    kTooManyFields,
    kNoNumber,  ///< a field is neither a finite number nor a missing value
};

struct ParsedLine {
    LineFault fault = LineFault::kNone;
    std::size_t fields = 0;      ///< of the first two faults: how many there are
    std::string_view bad_field;  ///< of kNoNumber; a part of the line
};

/// Reads one value from each field. After a fault the values are not determined.
ParsedLine ParseLine(std::string_view line, Separator separator, std::span<double> values);

}  // namespace wavo::master
