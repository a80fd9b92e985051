#include "ui/controls/control_table.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <algorithm>
#include <cassert>

#include "ui/controls/controls.h"

namespace wavo {

const ControlRow& FindRow(std::span<const ControlRow> table, int id) {
    const auto row =
        std::find_if(table.begin(), table.end(), [id](const ControlRow& r) { return r.id == id; });
    assert(row != table.end());
    return *row;
}

void InitControl(QWidget& control, const ControlRow& row) {
    const QString text = QString::fromUtf8(row.text);
    SetControlId(control, row.id);
    control.setToolTip(QString::fromUtf8(row.tool_tip));
    control.setAccessibleName(text);
    if (auto* const button = qobject_cast<QAbstractButton*>(&control)) {
        button->setText(text);
    }
}

QLabel* MakeLabel(const ControlRow& row, QWidget& control) {
    auto* const label = new QLabel(QString::fromUtf8(row.text));
    label->setBuddy(&control);
    label->setToolTip(control.toolTip());
    return label;
}

QString EditText(const QWidget& dialog, int id) {
    return FindControl<QLineEdit>(dialog, id)->text();
}

}  // namespace wavo
