#include "ui/shell/menu_button.h"

#include <QCursor>
#include <QMenu>
#include <QToolButton>

namespace wavo {

QToolButton* MakeMenuButton(QMenu& menu) {
    auto* const button = new QToolButton;
    button->setMenu(&menu);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setAutoRaise(true);
    QObject::connect(&menu, &QMenu::aboutToHide, button, [button] {
        button->setAttribute(Qt::WA_UnderMouse,
                             button->rect().contains(button->mapFromGlobal(QCursor::pos())));
        button->update();
    });
    return button;
}

}  // namespace wavo
