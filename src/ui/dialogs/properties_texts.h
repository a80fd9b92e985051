// What stands in the edits of the properties dialog, and what it means.
//
// Invariants:
// 1. Every text has a meaning: what cannot be read is the default, without a message.
// 2. Reading what was formatted gives the same again, as far as the edits can say it: an end of
//    line with a printable character among others cannot be said.
// 3. Separator and decimal point that were read differ.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "settings/export_settings.h"

namespace wavo {

/// The edits of the data export. One byte is one character, but for the path, which is UTF-8.
struct ExportTexts {
    std::string separator;
    std::string decimal_point;
    std::string end_of_line;
    std::string data_file;

    friend bool operator==(const ExportTexts&, const ExportTexts&) = default;
};

ExportTexts FormatExportSettings(const ExportSettings& settings);

/// The settings of the edits. A decimal point and a separator that come out the same both become
/// the default; the path is taken as it stands.
ExportSettings ParseExportTexts(const ExportTexts& texts);

/// A number of scale lines; `otherwise` for one below 1 and for a text without a number.
std::int32_t ParseScaleLines(std::string_view text, std::int32_t otherwise);

}  // namespace wavo
