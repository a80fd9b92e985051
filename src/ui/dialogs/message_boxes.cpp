#include "ui/dialogs/message_boxes.h"

#include <QMessageBox>
#include <utility>

namespace wavo {

namespace {

BoxHandler& Handler() {
    static BoxHandler handler;
    return handler;
}

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
    if (Handler()) {
        return Handler()(box);
    }
    QMessageBox window(parent);
    window.setWindowTitle(QString::fromStdString(box.caption));
    window.setTextFormat(Qt::PlainText);
    window.setText(QString::fromStdString(box.text));
    window.setIcon(box.icon == BoxIcon::kQuestion ? QMessageBox::Question : QMessageBox::Warning);
    window.setStandardButtons(ButtonsOf(box.buttons));
    return AnswerOf(window.exec(), box.buttons);
}

void ShowErrorBox(QWidget* parent, const std::string& text) {
    ShowBox(parent, {text, "ERROR", BoxIcon::kExclamation, BoxButtons::kOk});
}

void SetBoxHandler(BoxHandler handler) {
    Handler() = std::move(handler);
}

}  // namespace wavo
