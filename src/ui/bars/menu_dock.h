// The menu bar as a bar that can be dragged to each side of the window, or out of it.
//
// Invariants:
// 1. It cannot be hidden, and a right click on it offers what one on a tool bar does.
// 2. Lying, it shows the menus beside each other; standing, as buttons below each other.
// 3. Alt and the underlined letter of a menu open it wherever the bar is.
#pragma once

#include <QList>
#include <QToolBar>

class QMainWindow;
class QMenu;
class QMenuBar;
class QShortcut;

namespace wavo {

class MenuDock : public QToolBar {
 public:
    /// Stands at the top of `frame`, which owns it.
    explicit MenuDock(QMainWindow& frame);

    /// The menus beside each other; not shown while the bar stands.
    [[nodiscard]] QMenuBar& Bar() const { return *m_bar; }

    /// Adds a menu, which is not owned, behind the others.
    void AddMenu(QMenu& menu);

    /// Opens a menu that was added, as a click on its title does.
    void Open(const QMenu& menu);

 protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

 private:
    void ShowAs(Qt::Orientation orientation);

    QMainWindow& m_frame;
    QMenuBar* const m_bar;        // child
    QAction* m_bar_item;          // the menu bar as an item of this bar
    QList<QAction*> m_buttons;    // the menus as buttons
    QList<QShortcut*> m_letters;  // out of the frame a menu bar does not hear its keys
};

}  // namespace wavo
