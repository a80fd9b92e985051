#include "ui/dialogs/message_boxes.h"

#include <QApplication>
#include <QGridLayout>
#include <QMessageBox>

namespace wavo {

namespace {

QMessageBox::StandardButtons ButtonsOf(BoxButtons buttons) {
    switch (buttons) {
        case BoxButtons::kOk:
            return QMessageBox::Ok;
        case BoxButtons::kOkCancel:
            return QMessageBox::Ok | QMessageBox::Cancel;
        case BoxButtons::kYesNo:
            return QMessageBox::Yes | QMessageBox::No;
    }
    return QMessageBox::Ok;
}

QMessageBox::Icon IconOf(BoxIcon icon) {
    switch (icon) {
        case BoxIcon::kExclamation:
            return QMessageBox::Warning;
        case BoxIcon::kQuestion:
            return QMessageBox::Question;
        case BoxIcon::kInformation:
            return QMessageBox::Information;
    }
    return QMessageBox::Warning;
}

/// A title bar that shows the whole caption, in bold letters beside icon and buttons. The toolkit
/// leaves less room.
void MakeRoomForCaption(QMessageBox& window) {
    QFont font = QApplication::font("QMdiSubWindowTitleBar");
    font.setBold(true);
    const QFontMetrics metrics(font);
    const int width = metrics.horizontalAdvance(window.windowTitle()) + 8 * metrics.height();
    auto* const grid = qobject_cast<QGridLayout*>(window.layout());
    if (grid != nullptr) {
        grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
    }
}

BoxAnswer AnswerOf(int button, BoxButtons buttons) {
    switch (button) {
        case QMessageBox::Ok:
            return BoxAnswer::kOk;
        case QMessageBox::Yes:
            return BoxAnswer::kYes;
        default:
            break;
    }
    return buttons == BoxButtons::kYesNo      ? BoxAnswer::kNo
           : buttons == BoxButtons::kOkCancel ? BoxAnswer::kCancel
                                              : BoxAnswer::kOk;
}

}  // namespace

BoxAnswer ShowBox(QWidget* parent, const Box& box) {
    QMessageBox window(parent);
    window.setWindowTitle(QString::fromStdString(box.caption));
    window.setTextFormat(Qt::PlainText);
    window.setText(QString::fromStdString(box.text));
    window.setIcon(IconOf(box.icon));
    window.setStandardButtons(ButtonsOf(box.buttons));
    MakeRoomForCaption(window);
    return AnswerOf(window.exec(), box.buttons);
}

}  // namespace wavo
