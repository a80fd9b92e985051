#include "ui/bars/frame_menus.h"

#include <QActionGroup>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <algorithm>

#include "ui/bars/commands.h"
#include "ui/bars/menu_dock.h"
#include "ui/bars/menu_table.h"
#include "ui/bars/recent_files.h"

namespace wavo {

FrameMenus::FrameMenus(QMainWindow& frame, MenuDock& dock, const CommandActions& actions,
                       const BarSetup& setup, const CommandActions::Handler& handler)
    : m_frame(frame), m_dock(dock), m_actions(actions), m_setup(setup) {
    MakeRecentFileActions(CommandId::kRecentFile, handler);
    MakeRecentFileActions(CommandId::kRecentRecording, handler);
    m_show_all = new QAction(QStringLiteral("Show all commands"), &frame);
    m_show_all->setObjectName(QStringLiteral("show_all_commands"));
    m_show_all->setStatusTip(QStringLiteral("Shows the menu again with all of its commands"));
    QObject::connect(m_show_all, &QAction::triggered, &frame, [this] {
        m_show_all_once = true;
        // Once the menu that was used is closed.
        QMetaObject::invokeMethod(
            &m_frame,
            [this] {
                if (m_shown_last != nullptr) {
                    m_dock.Open(*m_shown_last);
                }
            },
            Qt::QueuedConnection);
    });
    BuildMenuBar();
    BuildLookMenu();
    ShowRecentFiles(CommandId::kRecentFile, {}, {});
    ShowRecentFiles(CommandId::kRecentRecording, {}, {});
}

FrameMenus::~FrameMenus() {
    m_show_all->disconnect(&m_frame);
    for (const auto& content : m_contents) {
        content->menu->disconnect(&m_frame);
    }
}

void FrameMenus::MakeRecentFileActions(CommandId command, const CommandActions::Handler& handler) {
    const Command& row = *FindCommand(command);
    for (int index = 0; index < RecentFiles::kMost; ++index) {
        auto* const action = new QAction(&m_frame);
        const int number = static_cast<int>(command) + index;
        action->setObjectName(QStringLiteral("%1_%2").arg(row.object_name).arg(index + 1));
        action->setStatusTip(StatusPrompt(row));
        QObject::connect(action, &QAction::triggered, &m_frame,
                         [handler, number] { handler(static_cast<CommandId>(number)); });
        m_recent_files[command].push_back(action);
    }
}

void FrameMenus::BuildMenuBar() {
    std::vector<Content*> path;  // the menu that is built, below those that it stands in
    for (const MenuRow& row : MenuBarRows()) {
        path.resize(static_cast<std::size_t>(row.depth));
        if (row.kind == MenuRowKind::kMenu) {
            const Command* const command = FindCommand(row.id);
            auto content = std::make_unique<Content>();
            content->menu = new QMenu(
                command != nullptr ? MenuText(*command) : QString::fromLatin1(row.text), &m_frame);
            content->menu->setToolTipsVisible(true);
            if (path.empty()) {
                m_dock.AddMenu(*content->menu);
            } else {
                path.back()->all.push_back(content->menu->menuAction());
            }
            if (command != nullptr) {
                content->menu->menuAction()->setObjectName(QLatin1String(command->object_name) +
                                                           QStringLiteral("_menu"));
                content->menu->menuAction()->setStatusTip(StatusPrompt(*command));
            }
            path.push_back(content.get());
            m_contents.push_back(std::move(content));
        } else if (row.kind == MenuRowKind::kItem) {
            AddItem(*path.back(), row.id);
        } else {
            auto* const separator = new QAction(&m_frame);
            separator->setSeparator(true);
            path.back()->all.push_back(separator);
        }
    }
    for (const auto& content : m_contents) {
        Content* const shown = content.get();
        if (shown->all.empty()) {  // of the bars
            FillBarsMenu(*shown->menu);
            QObject::connect(shown->menu, &QMenu::aboutToShow, &m_frame,
                             [this, shown] { FillBarsMenu(*shown->menu); });
            continue;
        }
        Fill(*shown, true);
        QObject::connect(shown->menu, &QMenu::aboutToShow, &m_frame, [this, shown] {
            if (m_dock.Bar().actions().contains(shown->menu->menuAction())) {
                m_shown_last = shown->menu;
            }
            Fill(*shown, m_setup.full_menus || m_show_all_once);
        });
        QObject::connect(shown->menu, &QMenu::aboutToHide, &m_frame, [this, shown] {
            m_show_all_once = m_show_all_once && shown->menu != m_shown_last;
        });
    }
}

void FrameMenus::AddItem(Content& content, CommandId id) {
    content.all.push_back(m_actions.Find(id));
    if (const auto recent = m_recent_files.find(id); recent != m_recent_files.end()) {
        content.all.insert(content.all.end(), recent->second.begin(), recent->second.end());
    }
}

const FrameMenus::Content* FrameMenus::ContentOf(const QMenu& menu) const {
    for (const auto& content : m_contents) {
        if (content->menu == &menu) {
            return content.get();
        }
    }
    return nullptr;
}

bool FrameMenus::IsInShortMenu(const QAction& action) const {
    if (action.isSeparator()) {
        return true;
    }
    if (const QMenu* const menu = action.menu(); menu != nullptr) {
        const Content* const content = ContentOf(*menu);
        return content == nullptr || content->all.empty() ||
               std::any_of(content->all.begin(), content->all.end(),
                           [this](const QAction* item) { return IsInShortMenu(*item); });
    }
    const auto is_action = [this, &action](CommandId id) { return m_actions.Find(id) == &action; };
    const auto basic = BasicCommands();
    const auto commands = Commands();
    return std::any_of(basic.begin(), basic.end(), is_action) ||
           std::any_of(commands.begin(), commands.end(),
                       [&](const Command& command) {
                           return (command.owner == CommandOwner::kRecording ||
                                   command.owner == CommandOwner::kRecorded ||
                                   command.owner == CommandOwner::kParts ||
                                   command.owner == CommandOwner::kMeasure ||
                                   command.owner == CommandOwner::kCircle ||
                                   command.owner == CommandOwner::kAxis) &&
                                  is_action(command.id);
                       }) ||
           std::any_of(m_setup.used_commands.begin(), m_setup.used_commands.end(),
                       [&](int id) { return is_action(static_cast<CommandId>(id)); });
}

void FrameMenus::Fill(const Content& content, bool complete) {
    QMenu& menu = *content.menu;
    for (QAction* const action : menu.actions()) {
        menu.removeAction(action);
    }
    bool left_out = false;
    for (QAction* const action : content.all) {
        if (complete || IsInShortMenu(*action)) {
            menu.addAction(action);
        } else {
            left_out = left_out || action->isVisible();
        }
    }
    if (left_out) {
        menu.addAction(m_show_all);
    }
}

void FrameMenus::BuildLookMenu() {
    m_look_menu = new QMenu(&m_frame);
    m_look_menu->setObjectName(QStringLiteral("look_menu"));
    auto* const looks = new QActionGroup(m_look_menu);
    looks->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    for (const LookMenuRow& row : LookMenuRows()) {
        QAction* const command = m_actions.Find(row.id);
        QAction* const action = m_look_menu->addAction(QString::fromLatin1(row.text));
        action->setObjectName(command->objectName() + QStringLiteral("_popup"));
        action->setStatusTip(command->statusTip());
        action->setCheckable(true);
        looks->addAction(action);
        QObject::connect(action, &QAction::triggered, command, &QAction::trigger);
        QObject::connect(m_look_menu, &QMenu::aboutToShow, action,
                         [action, command] { action->setChecked(command->isChecked()); });
    }
}

void FrameMenus::ShowRecentFiles(CommandId command, const QStringList& texts,
                                 const QStringList& paths) {
    m_actions.Find(command)->setVisible(texts.isEmpty());
    for (int index = 0; index < RecentFiles::kMost; ++index) {
        QAction* const action = m_recent_files.at(command)[static_cast<std::size_t>(index)];
        action->setVisible(index < texts.size());
        action->setText(texts.value(index));
        action->setToolTip(paths.value(index));
    }
}

void FrameMenus::FillBarsMenu(QMenu& menu) const {
    menu.clear();
    for (auto* const bar : m_frame.findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (bar != &m_dock) {  // it is always shown
            menu.addAction(bar->toggleViewAction());
        }
    }
    for (auto* const dock :
         m_frame.findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        menu.addAction(dock->toggleViewAction());
    }
    menu.addSeparator();
    menu.addAction(m_actions.Find(CommandId::kCustomize));
}

}  // namespace wavo
