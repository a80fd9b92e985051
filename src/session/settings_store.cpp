#include "session/settings_store.h"

#include <utility>

#include "platform/file.h"
#include "platform/folders.h"
#include "platform/last_error.h"
#include "session/report_texts.h"
#include "settings/view_settings_file.h"
#include "support/diagnostics.h"
#include "support/mini_data.h"
#include "support/number_text.h"

namespace wavo {

namespace {

constexpr char kSettingsFile[] = "wavo.ini";

/// The settings file of a viewer without a graph file; empty, with an error-log entry, when there
/// is no data folder.
std::string DefaultSettingsFile() {
    const std::string folder = platform::DataFolder();
    if (folder.empty()) {
        MERRLOG(session_texts::kNoDataFolder, platform::ErrorText(platform::LastError()).c_str());
        return {};
    }
    return folder + platform::PathSeparator() + kSettingsFile;
}

/// 0 says no; whatever else stands there, or nothing, yes.
bool ReadAutoConnect(const std::string& file) {
    MIniData store;
    std::string value;
    return !store.Open(file) || !store.GetStringEntry("GENERAL", "AutoConnect", value) ||
           ReadWholeNumber(value) != 0;
}

}  // namespace

bool SettingsStore::Read() {
    m_file = DefaultSettingsFile();
    if (m_file.empty()) {
        m_current = DefaultViewSettings();
        return false;
    }
    const bool is_written = ReadProperties(m_file, m_current);
    m_auto_connect = ReadAutoConnect(m_file);
    return is_written;
}

bool SettingsStore::Save() {
    if (m_kept) {
        m_kept = m_current;
    }
    if (m_file.empty()) {
        m_file = DefaultSettingsFile();
    }
    return !m_file.empty() && WriteProperties(m_file, m_current);
}

void SettingsStore::BringBack() {
    if (m_kept) {
        m_current = *std::exchange(m_kept, std::nullopt);
    }
}

std::string SettingsStore::ShownPath() const {
    return m_file.empty() ? kSettingsFile : m_file;
}

void SettingsStore::ReadFrom(const std::string& graph_file) {
    if (platform::Files().Exists(graph_file)) {
        ReadProperties(graph_file, m_current);
    } else {
        m_current = DefaultViewSettings();
    }
}

}  // namespace wavo
