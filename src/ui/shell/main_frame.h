// The main window: menus and status bar around the view.
#pragma once

#include <QMainWindow>
#include <functional>
#include <string>

#include "view/acquisition_cycle.h"
#include "view/command_ids.h"

class QLabel;

namespace wavo {

class CWavoView;

class CMainFrame : public QMainWindow {
    Q_OBJECT

 public:
    CMainFrame();

    [[nodiscard]] CWavoView& View() { return *m_view; }

    /// The action of a command.
    [[nodiscard]] QAction* Action(CommandId id) const;

    /// Text of a status bar pane.
    [[nodiscard]] QString PaneText(StatusPane pane) const;

 protected:
    void closeEvent(QCloseEvent* event) override;

 private:
    QAction* AddCommand(QMenu& menu, CommandId id, const std::function<void()>& handler);
    void CreateMenus();
    void CreateStatusBar();
    void UpdateCommands();

    CWavoView* m_view;  // child
    QLabel* m_panes[3] = {};
};

}  // namespace wavo
