// Any INI text as a settings file: the record is complete and within its bounds, and storing it is
// stable after the first time.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "settings/view_settings_file.h"
#include "support/mini_data.h"

namespace wavo {
namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void RequireSound(const ViewSettings& settings) {
    Require(settings.background <= 0xFFFFFF);
    Require(settings.font.face.size() <= kLongestFaceName);
    Require(settings.scale_lines_x >= 1 && settings.scale_lines_y >= 1);
    Require(settings.trace_level <= kHighestTraceLevel);
    Require(!settings.export_settings.end_of_line.empty());
    Require(!settings.export_settings.data_file.empty());
}

void TestOne(std::string_view text) {
    MIniData store;
    if (!store.SetContent(text)) {
        return;
    }
    ViewSettings settings;
    GetPropertiesFromIniData(store, settings);
    RequireSound(settings);

    Require(PutPropertiesIntoIniData(settings, store));
    MIniData reread;
    Require(reread.SetContent(store.Content()));
    ViewSettings stored;
    GetPropertiesFromIniData(reread, stored);
    RequireSound(stored);
    // Printable characters of an end of line are taken alone, but not in a list.
    if (stored.export_settings.end_of_line != settings.export_settings.end_of_line) {
        Require(settings.export_settings.end_of_line.size() > 1);
        settings.export_settings.end_of_line = "\r\n";
    }
    Require(stored == settings);
}

}  // namespace
}  // namespace wavo

/// The default data file lies in the data folder, which is made when missing: not the user's.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    const std::string folder = (std::filesystem::temp_directory_path() / "wavo-fuzz").string();
    return ::setenv("XDG_DATA_HOME", folder.c_str(), 1);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    wavo::TestOne({reinterpret_cast<const char*>(data), size});
    return 0;
}
