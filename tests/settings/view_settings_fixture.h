// A settings file of one test, and settings to put into it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/folders.h"
#include "settings/view_settings_file.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace wavo::testing {

namespace fs = std::filesystem;

/// Error-log entries.
inline constexpr char kBadColor[] =
    "CWavoView::ReadProperties: back ground defination not complete, "
    "create default back ground color";
inline constexpr char kBadFont[] =
    "CWavoView::ReadProperties: graphs font defination not complete, create default font";
inline constexpr char kBadFontName[] =
    "CWavoView::ReadProperties: graphs font name is invalid, create default font";

inline std::string FailedToOpen(const std::string& path) {
    return "CWavoView::WriteProperties: failed to open '" + path + "'";
}
inline std::string FailedToSave(const std::string& path) {
    return "CWavoView::WriteProperties: failed to svae '" + path + "'";
}

/// A data folder and a settings file of one test.
class ViewSettingsFile : public ::testing::Test {
 protected:
    ViewSettingsFile() { SetVariable(kDataHome, m_folder.path()); }
    ~ViewSettingsFile() override { UnsetVariable(kDataHome); }

    [[nodiscard]] std::string Path() const { return m_folder.File("wavo.ini"); }
    [[nodiscard]] std::string Text() const { return m_folder.Read("wavo.ini"); }
    void Write(std::string_view text) const { std::ofstream(Path(), std::ios::binary) << text; }
    [[nodiscard]] std::string DefaultDataFile() const {
        return platform::DataFolder() + platform::PathSeparator() + "wavo_values.txt";
    }
    [[nodiscard]] ViewSettings Read() const {
        ViewSettings settings;
        ReadProperties(Path(), settings);
        return settings;
    }
    [[nodiscard]] std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            if (entry.is_regular_file()) {
                names.push_back(entry.path().filename().string());
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    const TemporaryFolder m_folder;
};

/// Settings of which every field that is written differs from its default.
inline ViewSettings OtherSettings() {
    ViewSettings settings;
    settings.background = 0x00302010;
    settings.font.height = -13;
    settings.font.face = "DejaVu Sans";
    settings.scale_lines_x = 9;
    settings.scale_lines_y = 1;
    settings.show_graph_editor = false;
    settings.export_settings = {"\n", '\t', ',', "/data/values of today.txt"};
    return settings;
}

/// The file that holds them.
inline constexpr char kOtherText[] =
    "[BKCOLOR]\r\n"
    "red=16\r\n"
    "green=32\r\n"
    "blue=48\r\n"
    "[GRAPH_FONT]\r\n"
    "height=-13\r\n"
    "name=DejaVu Sans\r\n"
    "[SCALE_LINES]\r\n"
    "x=9\r\n"
    "y=1\r\n"
    "[AX_EDIT]\r\n"
    "ShowDialog=0\r\n"
    "[DATA_EXPORT]\r\n"
    "Separator=0x09\r\n"
    "DecimalPoint=,\r\n"
    "EndOfLine=0x0a\r\n"
    "File=/data/values of today.txt\r\n";

}  // namespace wavo::testing
