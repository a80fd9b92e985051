#include "ui/shell/pane_cycle.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QMainWindow>
#include <QToolBar>
#include <QToolButton>
#include <QWidget>
#include <vector>

#include "ui/shell/menu_dock.h"

namespace wavo {

namespace {

/// The first control in `pane` that takes the keyboard; null when none does.
QWidget* FirstControl(QWidget& pane) {
    if (auto* const bar = qobject_cast<QToolBar*>(&pane)) {
        for (QAction* const action : bar->actions()) {
            QWidget* const button = bar->widgetForAction(action);
            if (button != nullptr && button->isVisible() && action->isEnabled() &&
                !action->isSeparator()) {
                return button;
            }
        }
        return nullptr;
    }
    for (QWidget* const child : pane.findChildren<QWidget*>()) {
        if (child->isVisible() && child->isEnabled() && (child->focusPolicy() & Qt::TabFocus)) {
            return child;
        }
    }
    return (pane.focusPolicy() & Qt::TabFocus) != 0 ? &pane : nullptr;
}

struct Pane {
    QWidget* area;
    QWidget* first;  ///< gets the keyboard
};

/// Parts of the view come before the view: the place of the keyboard is the innermost one.
std::vector<Pane> Panes(QMainWindow& frame) {
    std::vector<Pane> panes;
    const auto add = [&panes](QWidget* area) {
        if (area->isVisible()) {
            if (QWidget* const first = FirstControl(*area); first != nullptr) {
                panes.push_back({area, first});
            }
        }
    };
    QWidget* const view = frame.centralWidget();
    for (QWidget* const part :
         view->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!part->isWindow()) {
            add(part);
        }
    }
    if (view->isVisible()) {
        panes.push_back({view, view});
    }
    for (auto* const dock : frame.findChildren<QDockWidget*>()) {
        add(dock);
    }
    for (auto* const bar : frame.findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (dynamic_cast<MenuDock*>(bar) == nullptr) {  // menus have keys of their own
            add(bar);
        }
    }
    return panes;
}

}  // namespace

void GoToPane(QMainWindow& frame, bool forward) {
    const std::vector<Pane> panes = Panes(frame);
    const std::size_t count = panes.size();
    if (count == 0) {
        return;
    }
    const QWidget* const focus = frame.focusWidget();
    std::size_t current = forward ? count - 1 : 0;
    for (std::size_t index = 0; index < count; ++index) {
        if (focus != nullptr &&
            (panes[index].area == focus || panes[index].area->isAncestorOf(focus))) {
            current = index;
            break;
        }
    }
    const std::size_t next = (current + (forward ? 1 : count - 1)) % count;
    panes[next].first->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

}  // namespace wavo
