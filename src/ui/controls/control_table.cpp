#include "ui/controls/control_table.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <algorithm>
#include <cassert>

#include "ui/controls/color_field.h"
#include "ui/controls/controls.h"
#include "ui/controls/elided_label.h"

namespace wavo {

namespace {

QWidget* MakeEdit(bool is_read_only, QWidget* parent) {
    auto* const edit = new QLineEdit(parent);
    edit->setReadOnly(is_read_only);
    return edit;
}

QLabel* MakeElidedLabel(QWidget* parent) {
    auto* const label = new ElidedLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

}  // namespace

const ControlRow& FindRow(std::span<const ControlRow> table, int id) {
    const auto row =
        std::find_if(table.begin(), table.end(), [id](const ControlRow& r) { return r.id == id; });
    assert(row != table.end());
    return *row;
}

QWidget* MakeControl(const ControlRow& row, QWidget* parent) {
    switch (row.kind) {
        case ControlKind::kRadio:
            return new QRadioButton(parent);
        case ControlKind::kCheck:
            return new QCheckBox(parent);
        case ControlKind::kButton:
            return new QPushButton(parent);
        case ControlKind::kCombo:
            return new QComboBox(parent);
        case ControlKind::kEdit:
        case ControlKind::kReadOnlyEdit:
            return MakeEdit(row.kind == ControlKind::kReadOnlyEdit, parent);
        case ControlKind::kStatic:
            return new QLabel(parent);
        case ControlKind::kElidedStatic:
            return MakeElidedLabel(parent);
        case ControlKind::kColorField:
            return new ColorField(parent);
        case ControlKind::kList:
            return new QListWidget(parent);
        case ControlKind::kProgress:
            return new QProgressBar(parent);
        case ControlKind::kTable:
            return new QTableWidget(parent);
        case ControlKind::kOk:
        case ControlKind::kCancel:
            break;
    }
    return nullptr;
}

void InitControl(QWidget& control, const ControlRow& row) {
    const QString text = QString::fromUtf8(row.text);
    const QString tip = QString::fromUtf8(row.tool_tip);
    SetControlId(control, row.id);
    control.setToolTip(tip);
    SetAccessibleTexts(control, text.isEmpty() ? tip : text, tip);
    if (auto* const button = qobject_cast<QAbstractButton*>(&control)) {
        button->setText(text);
    }
}

void SetAccessibleTexts(QWidget& widget, const QString& name, const QString& description) {
    widget.setAccessibleName(QString(name).remove(u'&'));
    widget.setAccessibleDescription(description);
    auto* const combo = qobject_cast<QComboBox*>(&widget);
    if (combo != nullptr && combo->lineEdit() != nullptr) {  // found beside it
        SetAccessibleTexts(*combo->lineEdit(), name, description);
    }
}

QLabel* MakeLabel(const ControlRow& row, QWidget& control) {
    auto* const label = new QLabel(QString::fromUtf8(row.text));
    label->setBuddy(&control);
    label->setToolTip(control.toolTip());
    return label;
}

}  // namespace wavo
