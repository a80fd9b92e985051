#include "ui/dialogs/table_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "ui/controls/line_edits.h"

namespace wavo {

namespace {

QDialogButtonBox::StandardButton ButtonOf(ControlKind kind) {
    switch (kind) {
        case ControlKind::kOk:
            return QDialogButtonBox::Ok;
        case ControlKind::kCancel:
            return QDialogButtonBox::Cancel;
        default:
            return QDialogButtonBox::NoButton;
    }
}

}  // namespace

TableDialog::TableDialog(const QString& title, std::span<const ControlRow> table, QWidget* parent)
    : QDialog(parent), m_table(table) {
    setWindowTitle(title);
    for (const ControlRow& row : m_table) {
        if (ButtonOf(row.kind) != QDialogButtonBox::NoButton) {
            continue;
        }
        QWidget* const control = MakeControl(row, this);
        InitControl(*control, row);
        if (auto* const button = qobject_cast<QPushButton*>(control)) {
            button->setAutoDefault(false);
        }
    }
    MakeButtons();
    KeepOneLineInEdits(*this);
}

void TableDialog::MakeButtons() {
    m_buttons = new QDialogButtonBox(this);
    for (const ControlRow& row : m_table) {
        if (const auto kind = ButtonOf(row.kind); kind != QDialogButtonBox::NoButton) {
            InitControl(*m_buttons->addButton(kind), row);
        }
    }
    connect(m_buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(m_buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });
}

QLabel* TableDialog::LabelOf(int id) const {
    return MakeLabel(FindRow(m_table, id), Control(id));
}

QLineEdit& TableDialog::WideEdit(int id, int characters) {
    auto& edit = Control<QLineEdit>(id);
    edit.setMinimumWidth(edit.fontMetrics().averageCharWidth() * characters);
    return edit;
}

QLineEdit& TableDialog::ShortEdit(int id, int characters) {
    auto& edit = Control<QLineEdit>(id);
    edit.setMaximumWidth(edit.fontMetrics().averageCharWidth() * characters);
    return edit;
}

QString TableDialog::EditText(int id) const {
    return Control<QLineEdit>(id).text();
}

void TableDialog::SetEditText(int id, const QString& text) {
    Control<QLineEdit>(id).setText(text);
}

}  // namespace wavo
