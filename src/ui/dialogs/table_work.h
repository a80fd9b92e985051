// Opening a table and writing a part of a recording, as the user goes through it: what is asked,
// the progress, and what went wrong.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tables/part_export.h"
#include "tables/temporary_recording.h"
#include "ui/dialogs/import_table.h"
#include "ui/dialogs/work_in_steps.h"
#include "ui/prompts.h"

class QSettings;
class QWidget;

namespace wavo {

/// What this work reaches besides its files. Nothing is owned.
struct TableSurroundings {
    QWidget* window = nullptr;  ///< that the dialogs belong to; may be null
    const Prompts& prompts;
    WorkInSteps& steps;
};

/// How tables are opened.
struct TableOpening {
    QSettings* settings = nullptr;  ///< that remember the answers; not owned; may be null
    AskTime ask = AskTime::kUnlessRemembered;
    std::optional<double> cycle_time;  ///< seconds from line to line; then it is not asked for
    std::string folder;                ///< for the recording; it is there
    std::string program;               ///< name and version of who opens it
};

/// A table as a recording, which goes with this object.
struct OpenedTable {
    tables::TemporaryRecording recording;
    std::vector<std::string> notices;  ///< what the user should know of it, in words
};

/// Asks what has to be asked of a table and makes a recording of it. Nothing when the user does not
/// want it, or when it cannot be: then the user was told.
std::optional<OpenedTable> OpenTable(const TableSurroundings& surroundings, const std::string& path,
                                     const TableOpening& opening);

/// Writes a part of a recording. False when the user does not want it any more, or when it cannot
/// be: then the user was told.
bool WritePart(const TableSurroundings& surroundings, recording::RecordingReader& reader,
               recording::LineSpan part, const tables::PartFile& file);

}  // namespace wavo
