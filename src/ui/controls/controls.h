// Controls of dialogs by their numbers. A number is unique within its dialog.
#pragma once

#include <QString>
#include <QWidget>

namespace wavo {

/// The object name of the control with a number.
inline QString ControlName(int id) {
    return QStringLiteral("control_%1").arg(id);
}

/// Gives a control its number.
inline void SetControlId(QWidget& control, int id) {
    control.setObjectName(ControlName(id));
}

/// The control of a dialog with a number, by its widget class; null when there is none such.
template <typename Widget = QWidget>
Widget* FindControl(const QWidget& dialog, int id) {
    return dialog.findChild<Widget*>(ControlName(id));
}

}  // namespace wavo
