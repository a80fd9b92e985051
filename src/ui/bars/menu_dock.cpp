#include "ui/bars/menu_dock.h"

#include <QContextMenuEvent>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>
#include <QToolButton>

#include "ui/bars/menu_button.h"
#include "ui/controls/control_table.h"

namespace wavo {

namespace {

constexpr int kLeastWidth = 40;  // the menus that do not fit stand behind the arrow of the bar

}  // namespace

MenuDock::MenuDock(QMainWindow& frame)
    : QToolBar(QStringLiteral("Menu Bar"), &frame), m_frame(frame), m_bar(new QMenuBar) {
    setObjectName(QStringLiteral("menu_bar"));
    setAllowedAreas(Qt::AllToolBarAreas);
    toggleViewAction()->setEnabled(false);
    SetAccessibleTexts(*this, windowTitle(), QStringLiteral("The menus of all commands"));
    SetAccessibleTexts(*m_bar, windowTitle(), accessibleDescription());
    m_bar->setNativeMenuBar(false);
    m_bar->setMinimumWidth(kLeastWidth);
    m_bar_item = addWidget(m_bar);
    frame.addToolBar(Qt::TopToolBarArea, this);
    frame.addToolBarBreak(Qt::TopToolBarArea);
    connect(this, &QToolBar::orientationChanged, this, &MenuDock::ShowAs);
    connect(this, &QToolBar::topLevelChanged, this, [this](bool floats) {
        for (QShortcut* const letter : m_letters) {
            letter->setEnabled(floats);
        }
    });
}

void MenuDock::AddMenu(QMenu& menu) {
    m_bar->addMenu(&menu);
    QToolButton* const button = MakeMenuButton(menu);
    button->setText(menu.title());
    SetAccessibleTexts(*button, menu.title(), QStringLiteral("Opens this menu"));
    QAction* const item = addWidget(button);
    item->setVisible(orientation() == Qt::Vertical);
    m_buttons.append(item);

    auto* const letter = new QShortcut(QKeySequence::mnemonic(menu.title()), &m_frame);
    letter->setEnabled(isFloating());
    for (const auto signal : {&QShortcut::activated, &QShortcut::activatedAmbiguously}) {
        connect(letter, signal, this, [this, &menu] { Open(menu); });
    }
    m_letters.append(letter);
}

void MenuDock::Open(const QMenu& menu) {
    if (orientation() == Qt::Horizontal) {
        m_bar->setActiveAction(menu.menuAction());
        return;
    }
    for (QAction* const item : m_buttons) {
        auto* const button = static_cast<QToolButton*>(widgetForAction(item));
        if (button->menu() == &menu) {
            button->showMenu();
        }
    }
}

void MenuDock::contextMenuEvent(QContextMenuEvent* event) {
    QMenu* const menu = m_frame.createPopupMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
    event->accept();
}

void MenuDock::ShowAs(Qt::Orientation orientation) {
    m_bar_item->setVisible(orientation == Qt::Horizontal);
    for (QAction* const item : m_buttons) {
        item->setVisible(orientation == Qt::Vertical);
    }
}

}  // namespace wavo
