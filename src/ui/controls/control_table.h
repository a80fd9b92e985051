// The controls of a window as a table: number, kind, text and tool tip of each. Windows make their
// controls from the table, so that no text stands in two places.
//
// Invariants:
// 1. A number is unique within its table; no number is ever reused for something else.
// 2. Every numbered control of a window has a row in the table of the window.
// 3. What reads the screen aloud gets the text and, as description, the tool tip.
#pragma once

#include <QLabel>
#include <QString>
#include <QWidget>
#include <span>

namespace wavo {

enum class ControlKind {
    kRadio,
    kCheck,
    kButton,
    kCombo,
    kEdit,
    kReadOnlyEdit,
    kStatic,
    kElidedStatic,  ///< one line that ends in "..." where it does not fit
    kColorField,
    kList,
    kProgress,
    kTable,
    kOk,      ///< of a dialog, at its end
    kCancel,  ///< the same
};

struct ControlRow {
    int id;
    ControlKind kind;
    const char* text;      ///< on the control, else of the label beside it; UTF-8
    const char* tool_tip;  ///< what the control does, with units; UTF-8
};

/// The row of a control. REQUIRES: the table has it.
const ControlRow& FindRow(std::span<const ControlRow> table, int id);

/// A new control of the row's kind, for InitControl. REQUIRES: it is neither kOk nor kCancel, which
/// a box of buttons makes.
QWidget* MakeControl(const ControlRow& row, QWidget* parent);

/// Gives a control its number and its tool tip, and its text where it is a button.
void InitControl(QWidget& control, const ControlRow& row);

/// What reads the screen aloud: what a widget is, and what it is for. "&" marks no mnemonic there.
void SetAccessibleTexts(QWidget& widget, const QString& name, const QString& description);

/// A new label with the text of the row that stands beside `control` and leads to it.
QLabel* MakeLabel(const ControlRow& row, QWidget& control);

}  // namespace wavo
