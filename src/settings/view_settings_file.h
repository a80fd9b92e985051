// The view's settings in an INI file: wavo.ini in the data folder, or the graph file that is open.
// The file may hold graphs, comments and entries of others besides; they stay as they are.
//
// Invariants:
// 1. Reading always gives a complete record: what is missing or bad is its default, with an
//    error-log entry for the colour and the font.
// 2. Writing changes the entries of the settings alone. A file that cannot be parsed is kept under
//    its name with ".bak" added, and a number where that name is taken, before another takes its
//    place; when it cannot be kept, it is not replaced. The kept file has the permissions of the
//    file, and no other file is ever overwritten by it.
// 3. The trace level is read, never written: who sets it does so by hand.
#pragma once

#include <string>

#include "settings/view_settings.h"
#include "support/mini_data.h"

namespace wavo {

/// Reads the settings from the file `path`. Where there is no file, one with all defaults is
/// written; false, with an error-log entry, when that failed.
bool ReadProperties(const std::string& path, ViewSettings& settings);

/// Writes the settings to the file `path`. False, with an error-log entry, when it cannot be saved,
/// and when a setting could not be put into it; the others are then saved. `has_kept` (may be null)
/// becomes true when the file could not be parsed and was kept.
bool WriteProperties(const std::string& path, const ViewSettings& settings,
                     bool* has_kept = nullptr);

/// The settings that a store holds.
void GetPropertiesFromIniData(const MIniData& store, ViewSettings& settings);

/// Puts the settings, without the trace level, into a store. False when an entry refused its value;
/// the others are set.
bool PutPropertiesIntoIniData(const ViewSettings& settings, MIniData& store);

}  // namespace wavo
