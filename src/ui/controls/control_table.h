// The controls of a dialog as a table: number, text and tool tip of each. A dialog makes its
// widgets from the table, so that no text stands in two places.
//
// Invariants:
// 1. A number is unique within its table; no number is ever reused for something else.
// 2. Every numbered control of a dialog has a row in the table of the dialog.
#pragma once

#include <QLabel>
#include <QString>
#include <QWidget>
#include <span>

namespace wavo {

struct ControlRow {
    int id;
    const char* text;      ///< on the control, else of the label beside it; UTF-8
    const char* tool_tip;  ///< what the control does, with units; UTF-8
};

/// The row of a control. REQUIRES: the table has it.
const ControlRow& FindRow(std::span<const ControlRow> table, int id);

/// Gives a control its number and its tool tip, and its text where it is a button.
void InitControl(QWidget& control, const ControlRow& row);

/// A new label with the text of the row that stands beside `control` and leads to it.
QLabel* MakeLabel(const ControlRow& row, QWidget& control);

/// The text of the edit with a number.
QString EditText(const QWidget& dialog, int id);

}  // namespace wavo
