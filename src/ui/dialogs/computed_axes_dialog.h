// The dialog in which computed axes are written: their table, and the one that is selected to edit.
//
// Invariants:
// 1. What is typed stands in the table at once, and so does what is wrong with it.
// 2. OK can be used while nothing is refused. An axis that is not there is not: it may come yet.
//    Nor is a name that the machine has taken since the axis was made.
#pragma once

#include <QString>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "computed/computed_axis.h"
#include "computed/computed_program.h"
#include "ui/dialogs/table_dialog.h"

namespace wavo {

enum class ComputedAxesId {
    kOk = 1,
    kCancel = 2,
    kTable = 1501,
    kAdd = 1502,
    kRemove = 1503,
    kUp = 1504,
    kDown = 1505,
    kName = 1506,
    kExpression = 1507,
    kInsert = 1508,
    kUnit = 1509,
    kWrong = 1510,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> ComputedAxesControls();

class ComputedAxesDialog : public TableDialog {
 public:
    /// `axes` are those to begin with, `machine_names` the axes that they are computed of.
    ComputedAxesDialog(std::vector<computed::ComputedAxis> axes,
                       std::vector<std::string> machine_names, QWidget* parent);

    /// As they stand in the table.
    [[nodiscard]] const std::vector<computed::ComputedAxis>& Axes() const { return m_axes; }

 private:
    void PrepareTable();
    void LayOut();
    void Connect();

    void Add();
    void Remove();
    void MoveUp() { Move(-1); }
    void MoveDown() { Move(1); }
    void Move(int rows);
    /// Lets the button offer what can stand in an expression.
    void FillInsertMenu();
    void Insert(const QString& text, int back);

    /// Another row is selected, or none: the edits are for that.
    void ShowSelected();
    /// Says below the edits what is wrong with a row; nothing of none (-1).
    void ShowWrong(int row);
    /// The edits have changed.
    void TakeEdits();
    /// Shows what has become of all axes.
    void Check();
    [[nodiscard]] bool IsRefused(std::size_t axis, const computed::Finding& finding) const;
    [[nodiscard]] QString WrongText(std::size_t axis) const;
    [[nodiscard]] int SelectedRow() const;
    void Select(int row);

    const std::vector<computed::ComputedAxis> m_initial;
    const std::vector<std::string> m_machine_names;
    std::vector<computed::ComputedAxis> m_axes;
    computed::ComputedProgram m_program;
    bool m_is_showing = false;  ///< edits change, and not by the user
};

}  // namespace wavo
