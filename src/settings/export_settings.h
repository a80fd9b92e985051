// How the values of a graph are written to a text file; part of the view's settings.
#pragma once

#include <string>

namespace wavo {

struct ExportSettings {
    std::string end_of_line = "\r\n";  ///< after the header and after each row
    char separator = ',';              ///< between columns
    char decimal_point = '.';
    std::string data_file;  ///< path, UTF-8

    friend bool operator==(const ExportSettings&, const ExportSettings&) = default;
};

/// The defaults, with the file "wavo_values.txt" in the data folder as data file (in the current
/// folder when there is no data folder).
ExportSettings DefaultExportSettings();

}  // namespace wavo
