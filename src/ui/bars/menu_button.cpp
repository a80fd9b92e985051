#include "ui/bars/menu_button.h"

#include <QCursor>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

namespace wavo {

namespace {

constexpr int kArrowWidth = 16;

/// Without a text it is as narrow as the arrow that it shows, whichever way its bar lies.
class MenuButton : public QToolButton {
 public:
    [[nodiscard]] QSize sizeHint() const override {
        const QSize size = QToolButton::sizeHint();
        const auto* const bar = qobject_cast<const QToolBar*>(parentWidget());
        if (!text().isEmpty()) {
            return size;
        }
        return bar != nullptr && bar->orientation() == Qt::Vertical
                   ? QSize(size.width(), kArrowWidth)
                   : QSize(kArrowWidth, size.height());
    }
};

}  // namespace

QToolButton* MakeMenuButton(QMenu& menu) {
    auto* const button = new MenuButton;
    button->setMenu(&menu);
    button->setFocusPolicy(Qt::NoFocus);  // as the other buttons of bars
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
