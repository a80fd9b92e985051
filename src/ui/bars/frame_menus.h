// The menus of the frame, made from the menu table.
//
// Menus can be short: they then show the basic commands, those that were used, and at their end an
// item that shows the menu again with all commands.
#pragma once

#include <QMainWindow>
#include <QStringList>
#include <map>
#include <memory>
#include <vector>

#include "ui/bars/bar_setup.h"
#include "ui/bars/command_actions.h"

class QAction;
class QMenu;

namespace wavo {

class MenuDock;

class FrameMenus {
 public:
    /// Fills the menu bar of `frame`. The references outlive the object; `setup` says what short
    /// menus show.
    FrameMenus(QMainWindow& frame, MenuDock& dock, const CommandActions& actions,
               const BarSetup& setup, const CommandActions::Handler& handler);
    /// The menus stay with the frame, but nothing of them comes here any more.
    ~FrameMenus();
    FrameMenus(const FrameMenus&) = delete;
    FrameMenus& operator=(const FrameMenus&) = delete;

    /// Shows the texts (see RecentFiles::ItemText) in the place of a command of recent files:
    /// kRecentFile or kRecentRecording.
    void ShowRecentFiles(CommandId command, const QStringList& texts, const QStringList& paths);

    /// The menu of looks that pops up by itself.
    [[nodiscard]] QMenu& LookMenu() { return *m_look_menu; }

    /// Fills a menu with what shows and hides the bars of the frame.
    void FillBarsMenu(QMenu& menu) const;

 private:
    struct Content {
        QMenu* menu;
        std::vector<QAction*> all;
    };

    void BuildMenuBar();
    void BuildLookMenu();
    void MakeRecentFileActions(CommandId command, const CommandActions::Handler& handler);
    void AddItem(Content& content, CommandId id);
    void Fill(const Content& content, bool complete);
    [[nodiscard]] bool IsInShortMenu(const QAction& action) const;
    [[nodiscard]] const Content* ContentOf(const QMenu& menu) const;

    QMainWindow& m_frame;
    MenuDock& m_dock;
    const CommandActions& m_actions;
    const BarSetup& m_setup;
    std::vector<std::unique_ptr<Content>> m_contents;
    std::map<CommandId, std::vector<QAction*>> m_recent_files;  // by the first command of each list
    QMenu* m_look_menu = nullptr;                               // child of the frame
    QAction* m_show_all = nullptr;
    const QMenu* m_shown_last = nullptr;
    bool m_show_all_once = false;
};

}  // namespace wavo
