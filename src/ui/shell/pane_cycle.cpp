#include "ui/shell/pane_cycle.h"

#include <QAction>
#include <QDockWidget>
#include <QMainWindow>
#include <QToolBar>
#include <QToolButton>
#include <QWidget>
#include <algorithm>
#include <iterator>
#include <tuple>
#include <vector>

#include "ui/bars/menu_dock.h"

namespace wavo {

namespace {

using HarmlessTest = std::function<bool(const QAction&)>;

/// The buttons of a bar that can be used, in their order.
std::vector<QWidget*> Buttons(const QToolBar& bar) {
    std::vector<QWidget*> buttons;
    for (QAction* const action : bar.actions()) {
        QWidget* const button = bar.widgetForAction(action);
        if (qobject_cast<QToolButton*>(button) != nullptr && button->isVisible() &&
            button->isEnabled()) {
            buttons.push_back(button);
        }
    }
    return buttons;
}

QWidget* FirstButton(const QToolBar& bar, const HarmlessTest& is_harmless) {
    const std::vector<QWidget*> buttons = Buttons(bar);
    const auto harmless = std::find_if(buttons.begin(), buttons.end(), [&](QWidget* button) {
        const auto* const tool_button = static_cast<QToolButton*>(button);
        return tool_button->menu() != nullptr || (tool_button->defaultAction() != nullptr &&
                                                  is_harmless(*tool_button->defaultAction()));
    });
    return harmless != buttons.end() ? *harmless : buttons.empty() ? nullptr : buttons.front();
}

/// The first control in `pane` that takes the keyboard; null when none does.
QWidget* FirstControl(QWidget& pane) {
    for (QWidget* const child : pane.findChildren<QWidget*>()) {
        if (child->isVisible() && child->isEnabled() && (child->focusPolicy() & Qt::TabFocus)) {
            return child;
        }
    }
    return (pane.focusPolicy() & Qt::TabFocus) != 0 ? &pane : nullptr;
}

/// In the order in which bars are read: those that float at last.
bool StandsBefore(const QToolBar* a, const QToolBar* b) {
    const auto place = [](const QToolBar* bar) {
        return std::tuple(bar->isFloating(), bar->y(), bar->x());
    };
    return place(a) < place(b);
}

struct Pane {
    QWidget* area;
    QWidget* first;  ///< gets the keyboard
};

bool IsMenuDock(const QToolBar& bar) {
    return dynamic_cast<const MenuDock*>(&bar) != nullptr;
}

/// The view comes before its parts: it is where the round begins.
std::vector<Pane> Panes(QMainWindow& frame, const HarmlessTest& is_harmless) {
    std::vector<Pane> panes;
    const auto add = [&panes](QWidget* area, QWidget* first) {
        if (area->isVisible() && first != nullptr) {
            panes.push_back({area, first});
        }
    };
    QWidget* const view = frame.centralWidget();
    add(view, view);
    for (QWidget* const part :
         view->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!part->isWindow()) {
            add(part, FirstControl(*part));
        }
    }
    for (auto* const dock : frame.findChildren<QDockWidget*>()) {
        QWidget* const content = dock->widget();
        QWidget* const inside = content != nullptr ? FirstControl(*content) : nullptr;
        add(dock, inside != nullptr ? inside : FirstControl(*dock));  // not its title first
    }
    QList<QToolBar*> bars = frame.findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly);
    std::sort(bars.begin(), bars.end(), StandsBefore);
    for (QToolBar* const bar : bars) {
        if (!IsMenuDock(*bar)) {  // menus have keys of their own
            add(bar, FirstButton(*bar, is_harmless));
        }
    }
    return panes;
}

/// The index of the innermost pane that has the keyboard; `none` when there is none.
std::size_t IndexOf(const std::vector<Pane>& panes, const QWidget* focus, std::size_t none) {
    const auto holds = [focus](const Pane& pane) {
        return focus != nullptr && (pane.area == focus || pane.area->isAncestorOf(focus));
    };
    const auto found = std::find_if(panes.rbegin(), panes.rend(), holds);
    return found == panes.rend() ? none
                                 : static_cast<std::size_t>(std::distance(found, panes.rend()) - 1);
}

void GiveKeyboard(QMainWindow& frame, QWidget& widget, bool forward) {
    frame.setAttribute(Qt::WA_KeyboardFocusChange);
    widget.setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

}  // namespace

void GoToPane(QMainWindow& frame, bool forward, const HarmlessTest& is_harmless) {
    const std::vector<Pane> panes = Panes(frame, is_harmless);
    const std::size_t count = panes.size();
    if (count == 0) {
        return;
    }
    const std::size_t current = IndexOf(panes, frame.focusWidget(), forward ? count - 1 : 0);
    const std::size_t next = (current + (forward ? 1 : count - 1)) % count;
    GiveKeyboard(frame, *panes[next].first, forward);
}

bool GoInBar(QMainWindow& frame, QWidget& button, int key) {
    const auto* const bar = qobject_cast<QToolBar*>(button.parentWidget());
    if (bar == nullptr || bar->parentWidget() != &frame) {
        return false;
    }
    const std::vector<QWidget*> buttons = Buttons(*bar);
    const auto current = std::find(buttons.begin(), buttons.end(), &button);
    if (current == buttons.end()) {
        return false;
    }
    const bool mirrored = bar->layoutDirection() == Qt::RightToLeft;
    switch (key) {
        case Qt::Key_Escape:
            GiveKeyboard(frame, *frame.centralWidget(), true);
            return true;
        case Qt::Key_Home:
            GiveKeyboard(frame, *buttons.front(), false);
            return true;
        case Qt::Key_End:
            GiveKeyboard(frame, *buttons.back(), true);
            return true;
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Left:
        case Qt::Key_Right:
            break;
        default:
            return false;
    }
    const bool forward = key == Qt::Key_Down || key == (mirrored ? Qt::Key_Left : Qt::Key_Right);
    const auto at = static_cast<std::size_t>(std::distance(buttons.begin(), current));
    GiveKeyboard(frame, *buttons[(at + (forward ? 1 : buttons.size() - 1)) % buttons.size()],
                 forward);
    return true;
}

}  // namespace wavo
