// The dialog that asks when the lines of a table are, before it is opened as a recording.
//
// Answers are remembered by the columns of the table, in the application's settings.
#pragma once

#include <optional>
#include <span>

#include "tables/table_preview.h"
#include "ui/dialogs/table_dialog.h"

class QSettings;

namespace wavo {

enum class ImportTableId {
    kOk = 1,
    kCancel = 2,
    kFile = 1201,
    kLines = 1202,      ///< the first lines of the table
    kByCycle = 1203,    ///< the lines are one cycle time apart
    kCycleTime = 1204,  ///< s
    kByColumn = 1205,   ///< a column has the time
    kColumn = 1206,
    kUnit = 1207,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> ImportTableControls();

class ImportTable : public TableDialog {
 public:
    /// Shows `preview`, with `initial` chosen as far as the table has it.
    ImportTable(const tables::TablePreview& preview, const tables::TimeChoice& initial,
                QWidget* parent);

    /// What is chosen. REQUIRES: the dialog was accepted.
    [[nodiscard]] tables::TimeChoice Choice() const;

 private:
    void ShowLines(const tables::TablePreview& preview);
    void FillColumns(const tables::TablePreview& preview);
    void ShowChoice(const tables::TimeChoice& choice);
    void LayOut();
    /// What can be used depends on what is chosen; OK on whether that can be.
    void Enable();
    [[nodiscard]] std::optional<double> CycleTime() const;
};

enum class AskTime {
    kAlways,
    kUnlessRemembered,  ///< only for tables whose columns were not asked for before
    kNever,             ///< takes what the table lets expect
};

/// When the lines of a table are: remembered, or as the user says; nothing when the user cancels,
/// or may not be asked and has to be.
/// `settings` may be null: then nothing is remembered.
std::optional<tables::TimeChoice> TimeOfTable(QWidget* parent, QSettings* settings,
                                              const tables::TablePreview& preview, AskTime ask);

}  // namespace wavo
