#include "settings/export_settings.h"

#include "platform/folders.h"

namespace wavo {

ExportSettings DefaultExportSettings() {
    constexpr const char* kDataFileName = "wavo_values.txt";
    ExportSettings settings;
    const std::string folder = platform::DataFolder();
    settings.data_file =
        folder.empty() ? kDataFileName : folder + platform::PathSeparator() + kDataFileName;
    return settings;
}

}  // namespace wavo
