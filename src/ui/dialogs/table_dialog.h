// What the dialogs have in common: a dialog makes its controls from its table, finds them by their
// numbers and lays them out; OK and Cancel stand at its end.
//
// Invariants:
// 1. Every row of the table is one control, from the beginning; the tab key goes in their order.
// 2. Edits hold one line. The Return key is OK, whatever other button there is.
#pragma once

#include <QAbstractButton>
#include <QDialog>
#include <QString>
#include <initializer_list>
#include <span>

#include "ui/controls/control_table.h"
#include "ui/controls/controls.h"

class QDialogButtonBox;
class QLabel;
class QLineEdit;

namespace wavo {

class TableDialog : public QDialog {
 protected:
    /// Makes the controls of `table`, which outlives the dialog. They stand nowhere yet.
    TableDialog(const QString& title, std::span<const ControlRow> table, QWidget* parent);

    /// The control with a number. REQUIRES: the table has it, and it is such a widget.
    template <typename Widget = QWidget>
    [[nodiscard]] Widget& Control(int id) const {
        return *FindControl<Widget>(*this, id);
    }

    /// A new label with the text of a control, to stand beside it.
    [[nodiscard]] QLabel* LabelOf(int id) const;
    /// An edit that a user sees about `characters` of at least.
    QLineEdit& WideEdit(int id, int characters);
    /// An edit that is not wider than for `characters`.
    QLineEdit& ShortEdit(int id, int characters);

    [[nodiscard]] QString EditText(int id) const;
    void SetEditText(int id, const QString& text);

    /// Calls `handler`, a member of the dialog, with every click on a button.
    template <typename Dialog>
    void OnClick(int id, void (Dialog::*handler)()) {
        connect(&Control<QAbstractButton>(id), &QAbstractButton::clicked,
                static_cast<Dialog*>(this), handler);
    }

    /// The box with OK and Cancel, where the table has them; accept() and reject() follow a click.
    [[nodiscard]] QDialogButtonBox* Buttons() const { return m_buttons; }

 private:
    void MakeButtons();

    const std::span<const ControlRow> m_table;
    QDialogButtonBox* m_buttons = nullptr;  // child
};

}  // namespace wavo
