// The one record of the view's settings, and the file that it lives in: wavo.ini in the data
// folder. Graph files hold settings too and are read and written here on request.
#pragma once

#include <optional>
#include <string>

#include "settings/view_settings.h"

namespace wavo {

class SettingsStore {
 public:
    [[nodiscard]] ViewSettings& Current() { return m_current; }
    [[nodiscard]] const ViewSettings& Current() const { return m_current; }

    /// Reads the settings from their file; those of a first start where there is none. False when a
    /// first start could not leave its settings behind.
    bool Read();
    /// Writes them there. False, with an error-log entry, when that failed.
    bool Save();
    /// Path of the file, or its bare name when there is no data folder: for the user.
    [[nodiscard]] std::string ShownPath() const;
    /// The file that was read; empty without a data folder.
    [[nodiscard]] const std::string& File() const { return m_file; }

    /// The viewer connects by itself to a master that tells of itself (entry AutoConnect of the
    /// settings file, 1 by default; graph files have none).
    [[nodiscard]] bool AutoConnect() const { return m_auto_connect; }

    /// Takes the settings of a graph file; those of a first start from one that is not there.
    void ReadFrom(const std::string& graph_file);

    /// Remembers the settings: what is read from graph files from now on is taken back by
    /// BringBack; what is saved meanwhile stays.
    void Keep() { m_kept = m_current; }
    void BringBack();

 private:
    ViewSettings m_current;
    std::optional<ViewSettings> m_kept;
    std::string m_file;
    bool m_auto_connect = true;
};

}  // namespace wavo
